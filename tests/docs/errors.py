#!/usr/bin/env python3
"""Holds docs/errors.md against the messages in the code: errors.py TOP

Every fixed piece of a message in the document must be made of string literals of lib/ and tools/, and every literal of the
code that reads like words must stand in the document.
"""
import pathlib
import re
import sys

# Literals that are no part of a message: what is written into files and commands, and names of arrays.
NO_MESSAGE = {"num_file_recl", "sh ", "mv ", "/bin/mkdir -p ", "mkdir -p ", "ls -l | grep ", "sym->nat", "Infinity", "-Infinity",
              "standard input", "standard output", "std_orient", "disp_sign", "displacement_generator: error: ",
              "... (", " more characters)", ".true.", ".false.", "Not a regular file", "Number of atoms: ", "Number of files: "}
NOT_READ = {"tables.cpp", "info_block.cpp", "geometry_files.cpp"}
# The rooms of the generator, whose messages the document tells.
ROOMS = ("lib/base", "lib/file", "lib/element", "lib/gjf", "lib/symmetry", "tools/displacement_generator")


def literals_of(path):
    text = re.sub(r"//[^\n]*", "", path.read_text())
    text = re.sub(r"#include[^\n]*|static_assert\([^;]*;", "", text)
    joined = re.sub(r'"\s*\n\s*"', "", text)
    return {match.encode().decode("unicode_escape") for match in re.findall(r'"((?:\\.|[^"\\\n])*)"', joined)}


def is_made_of(piece, literals, known):
    """Whether a piece is the end of one literal, whole literals, and the beginning of one."""
    if piece not in known:
        known[piece] = piece == "" or any(literal.startswith(piece) for literal in literals) or any(
            literal and piece.startswith(literal) and is_made_of(piece[len(literal):], literals, known) for literal in literals)
    return known[piece]


def main():
    top = pathlib.Path(sys.argv[1])
    document = (top / "docs" / "errors.md").read_text()
    messages = [m for m in re.findall(r"`([^`]+)`", document) if "<" in m or len(m) > 30]
    literals = set()
    for path in [path for room in ROOMS for path in (top / room).glob("*.?pp")]:
        if path.name not in NOT_READ:
            literals |= literals_of(path)
    wrong = []
    for message in messages:
        for piece in filter(None, re.split(r"<[^>]*>", message)):
            if not any(is_made_of(piece[start:], literals, {}) and any(literal.endswith(piece[:start]) for literal in literals)
                       for start in range(len(piece) + 1)):
                wrong.append(f"no literal of the code makes {piece!r} of the documented message {message!r}")
    told = re.sub(r"<[^>]*>", "\0", "\n".join(messages))
    for literal in sorted(literals):
        words = re.findall(r"[a-z]{2,}", literal)
        if " " in literal and words and literal not in NO_MESSAGE:
            for line in literal.strip("\n").split("\n"):
                if line.strip(" ") not in told:
                    wrong.append(f"docs/errors.md does not tell of {line!r}")
    for line in wrong:
        print(line)
    print(f"{len(messages)} messages, {len(literals)} literals, {len(wrong)} differences")
    sys.exit(1 if wrong or len(messages) < 40 else 0)


main()
