#!/usr/bin/env python3
"""Holds docs/assembling.md against the messages in the code of the assembler: messages.py TOP

Every fixed piece of a documented message must be made of string literals of tools/displacement_assembler, of
tools/companion or of the reader of logs, and every literal of both tools that reads like a message must stand in the document. Messages about lines of the list and of geometry files name what was
expected there, and are not documented one by one.
"""
import pathlib
import re
import sys

TOLD_TOGETHER = {"read_list.cpp", "read_geometry.cpp"}
# Literals that are no messages: the table, files, help, and what the document tells in other words.
NO_MESSAGE = re.compile(r"#|computing the vibrations|%|\[|vibration |Hessian from|displacement_assembler 1|, found '?$|Number of|Computes frequencies|the route of the results|"
                        r"the largest force|the largest asymmetry|: forces of these points|no intensities|species are told|most abundant|average over|standard atomic weights|point group|"
                        r"an allocation would|displacement_assembler: error: |isotope: |of one atom, in amu|write |print |the folder PES-0|"
                        r"read .* of |notice: |, species of |stationary point| without |has no dipole| of atom | has no |that of the .com|"
                        r"XXXXXX|^the results$|files.out: | follow from the forces, that of | is off by |they are of another level|all energies are the same|one-atom|hartree|of the reference$|^ of $")


def literals_of(path):
    text = re.sub(r"//[^\n]*|#include[^\n]*", "", path.read_text())
    text = re.sub(r'"\s*\n\s*"', "", text)
    return {match.replace('\\"', '"') for match in re.findall(r'"((?:\\.|[^"\\\n])*)"', text)}


def main():
    top = pathlib.Path(sys.argv[1])
    document = (top / "docs" / "assembling.md").read_text().split("\n## Messages\n")[1]
    messages = re.findall(r"^\| `([^`]+)`", document, re.MULTILINE) + re.findall(r"`(; [^`]+)`", document)
    messages = [message for message in messages if len(message) > 3]
    told = re.sub(r"<[^>]*>", "\0", document)
    literals, checked = set(), set()
    folders = (top / "tools" / "displacement_assembler", top / "tools" / "companion")
    for path in sorted(path for folder in folders for path in folder.glob("*.[ch]pp")):
        literals |= literals_of(path)
        checked |= literals_of(path) if path.name not in TOLD_TOGETHER else set()
    literals |= literals_of(top / "lib" / "gaussian" / "read_log.cpp")
    wrong = []

    def is_made(piece):
        return piece == "" or any(literal and piece.startswith(literal) and is_made(piece[len(literal):]) for literal in literals) \
            or any(literal.startswith(piece) or literal.endswith(piece) for literal in literals)

    for message in messages:
        for piece in filter(None, re.split(r"<[^>]*>", message)):
            if not any(any(literal.endswith(piece[:start]) for literal in literals) and is_made(piece[start:])
                       for start in range(len(piece) + 1)):
                wrong.append(f"no literal of the code makes {piece!r} of the documented message {message!r}")
    for literal in sorted(checked):
        if len(re.findall(r"[A-Za-z]{2,}", literal)) > 1 and not NO_MESSAGE.search(literal) and literal.strip() not in told:
            wrong.append(f"docs/assembling.md does not tell of {literal!r}")
    for line in wrong:
        print(line)
    print(f"{len(messages)} messages, {len(checked)} literals, {len(wrong)} differences")
    sys.exit(1 if wrong or len(messages) < 25 else 0)


main()
