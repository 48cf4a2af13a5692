#!/usr/bin/env python3
"""Holds docs/errors.md against the messages in the code: errors.py TOP UNIT_TESTS...

Whole messages are held against whole rows: every message that the unit tests meet, or that a case or a fault test expects,
must be one of the document, and every one of the document must be met. Every fixed piece of a documented message must also be made of
string literals of lib/ and tools/, and every literal of the code that reads like words must stand in the document.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

# Literals that are no part of a message: what is written into files and commands, and names of arrays.
NO_MESSAGE = {"num_file_recl", "sh ", "mv ", "/bin/mkdir -p ", "mkdir -p ", "ls -l | grep ", "sym->nat", "Infinity", "-Infinity",
              "standard input", "standard output", "std_orient", "disp_sign", "displacement_generator: error: ",
              "... (", " more characters)", ".true.", ".false.", "Not a regular file", "Number of atoms: ", "Number of files: "}
NOT_READ = {"tables.cpp", "info_block.cpp", "geometry_files.cpp"}
# The rooms of the generator, whose messages the document tells.
ROOMS = ("lib/base", "lib/file", "lib/element", "lib/gjf", "lib/symmetry", "tools/displacement_generator")
# Messages that no unit test of the generator and no case meets: they take more memory, atoms or lines than a test has, a machine
# that fails, or a companion.
NOT_MET = {"expected an atomic number in 1..118, found 0", "an allocation would exceed the memory limit",
           "found 357913942 atoms, expected at most 357913941",
           "mol.gjf: 2147483648 lines, expected at most 2147483647", "; the whole run needs 4096 bytes in 11 files",
           "PES-0: cannot make the folder: the command '/bin/mkdir -p PES-0' ended with status 1",
           "matrix:2: Input/output error before this line, expected row 1 of columns 1 to 2"}
# Other forms of a row, of which the cell beside it tells.
OTHER_FORMS = ["<file>:<line>: key 'fxyz': cannot open '<file>': <reason>",
               "<file>: key 'fxyz': expected the path of the Gaussian input, found none"]
# What a test of the error type itself throws.
NO_RUN = {"", "what"}


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


# What varies in a message.
VARIES = {"file": r"[^:]*", "folder": r"[^:]*", "line": r"\d+", "column": r"\d+", "number": r"-?[\d.]+", "reason": r"[A-Z][\w /-]+", "name": r"\w+",
          "key": r"\w+", "symbol": r".*", "text": r".*"}


def pattern_of(message):
    parts = re.split(r"<(\w+)>", message)
    return "".join(VARIES[part] if number % 2 else re.escape(part) for number, part in enumerate(parts))


def messages_met(top, unit_tests):
    """Whole messages: of the unit tests those that they meet, of the others those that they expect."""
    with tempfile.TemporaryDirectory() as folder:
        log = pathlib.Path(folder) / "messages"
        for program in unit_tests:
            subprocess.run([program, "--gtest_brief=1"], env=dict(os.environ, STOPPED_WITH_LOG=str(log)), check=True,
                           stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        met = set(log.read_bytes().decode("latin-1").split("\0")[:-1])
    for expected in top.glob("tests/cases/*/expected/std*"):
        met.add(expected.read_bytes().decode("latin-1").removeprefix("displacement_generator: error: ").removesuffix("\n"))
    return met - NO_RUN


def whole_differences(document, met, expected):
    """Each message met must be a row, and each row must be met: the message, and whatever may follow it.

    expected  literals of the tests: a row that is not met may be one of them
    """
    rows = re.findall(r"^\| `([^`]+)`", document, re.MULTILINE)
    rest = [text for text in re.findall(r"`([^`\n]+)`", document) if text not in rows]
    line_number = "(line <number>)"
    added = dict.fromkeys(text.removeprefix(line_number) for text in rest if text.startswith((";", ", and", line_number)))
    ends = {text: re.compile("(.*)" + pattern_of(text), re.DOTALL) for text in added}
    patterns = {row: re.compile(pattern_of(row), re.DOTALL) for row in rows + OTHER_FORMS}
    seen = set()
    for message in met:
        left = message
        for text in [*ends, *ends]:
            if (found := ends[text].fullmatch(left)) and not any(p.fullmatch(left) for p in patterns.values()):
                left = found[1]
                seen.add(text)
        of_message = [row for row, pattern in patterns.items() if pattern.fullmatch(left)]
        seen.update(of_message)
        if not of_message:
            yield f"no row of docs/errors.md is the message {message!r}"
    for text in [*rows, *ends]:
        if text not in seen and not any(re.fullmatch(pattern_of(text), literal, re.DOTALL) for literal in expected):
            yield f"no test meets the documented message {text!r}"


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
    expected = set(NOT_MET)
    for path in top.glob("tests/*/*.cpp"):
        expected |= {literal.split("|")[0].removeprefix("displacement_generator: error: ") for literal in literals_of(path)}
    met = messages_met(top, sys.argv[2:])
    wrong += whole_differences(document, met, expected)
    for line in wrong:
        print(line)
    print(f"{len(messages)} documented messages, {len(met)} met, {len(literals)} literals, {len(wrong)} differences")
    sys.exit(1 if wrong or len(messages) < 40 or len(met) < 200 else 0)


main()
