#!/usr/bin/env python3
"""Holds docs/preparing-errors.md against the preparer: messages.py UNIT_TESTS...

Whole messages are held against whole rows: every message and notice that a unit test of the readers meets, or that a case expects,
must be a row of the document; every row must be one that a unit test meets, or that a case or a fault test expects. Every literal of
the code that reads like a part of one must stand in a row, so that what no test meets is told, too.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

TOP = pathlib.Path(__file__).resolve().parents[2]
PREFIX = "displacement_preparer: error: "
# Rows that no test meets: they say that standard error does not work, or tell a fault of the program, or take a source of more bytes than a test writes.
NOT_MET = {"standard error: cannot write: <reason>",
           "the prepared input is not what was meant, which is a fault of this program: <text>",
           "<file>: expected at most <number> bytes, found more"}
# Messages of the unit tests that are not about a source of the preparer: about files of forces, arguments of routines, and more than a test of the whole meets.
NOT_OURS = re.compile(r"a\.forces: |a\.forces:\d|checkpoint_text: |symbol_of: |found \d+ positions, expected|text: expected at most|expected (one line|no line|a route)[ ,]|m: found \d+ bytes|/dev/null: cannot open: |no error$")
# Sources without messages and notices of their own: help, the report, what the assembler alone calls, and the look at the written input,
# all of whose messages are one row.
NOT_READ = {"command_line.cpp", "read_options.cpp", "report.cpp", "kind_of.cpp", "symbols.cpp", "read_forces.cpp", "checkpoint_text.cpp", "check_prepared.cpp"}
# Literals that are no part of a message: what the readers look for, what the report says of the source, and messages about forces,
# which the assembler alone uses, and about arguments of routines.
NO_MESSAGE = re.compile(r"\\xef| Entering |(Normal|Error) termination| Initial command:| Link1:| SCF Done:|Axes restored|Convergence criterion|Coordinates \(Ang|Forces \(Har|"
                        r" orientation:|(Number of atoms|Atomic numbers|Nuclear charges|Current cartesian coordinates|Real atomic weights|Cartesian Gradient|"
                        r"Cartesian Force Constants|Dipole Moment|Dipole Derivatives|Total Energy|Translation vectors|Number of atoms  )$|symm(etry)?[=(]+none|"
                        r" in job $|, the last one taken|Gaussian input of |prepared from |xyz file of |standard input|"
                        r"forces on|the force on it|table of forces|these forces| atoms of the (last )?geometry, found | or other atoms|"
                        r" bytes, expected an input of| positions, expected | kinds as positions|expected (no|one) line |^the (Link 0 lines|sections after the molecule)$")
# Sections of a checkpoint that messages name of their own.
SECTIONS = ("Number of atoms", "Total Energy")
# The notice about what was dropped, once or more often.
REPEATED = re.compile(r", here and in (1 more line|\d+ more lines)$")
VARIES = {"file": r"(?!command line)[^:']+", "line": r"\d+", "number": r"-?[\d.e-]+|nan", "count": r"\d+ [a-z ]+", "name": r"[\w-]+", "reason": r"[A-Z][\w /-]+",
          "text": r".*", "place": r"[^']+", "route": r"#[^']*", "keyword": r"[^']+", "option": r"[^']+", "method": r"[^']*", "basis": r"[^']*",
          "symbol": r"[A-Z][a-z]?", "section": r"[A-Z][A-Za-z ]*"}


def pattern_of(row):
    parts = re.split(r"<(\w+)>", row)
    return re.compile("".join(f"(?:{VARIES[part]})" if i % 2 else re.escape(part) for i, part in enumerate(parts)))


def rows_of(text):
    return [row for line in text.splitlines() if line.startswith("| `") for row in re.findall(r"`([^`]+)`", line.split(" | ")[0])]


def literals_of(path):
    text = re.sub(r"//[^\n]*|#include[^\n]*", "", path.read_text())
    text = re.sub(r'"\s*\n\s*"', "", text)
    return {match.replace('\\"', '"') for match in re.findall(r'"((?:\\.|[^"\\\n])*)"', text)}


def untold_literals(document):
    """Parts of messages and notices that stand in the code and in no row."""
    told = "\n".join(re.findall(r"`([^`]+)`", document))
    told = "\n".join(re.sub(r"<\w+>", "\0", told.replace("<section>", section)) for section in ("<section>", *SECTIONS))
    for room in ("lib/gaussian", "lib/frame", "tools/companion", "tools/displacement_preparer"):
        for path in sorted((TOP / room).glob("*.[ch]pp")):
            for literal in sorted(literals_of(path) if path.name not in NOT_READ else ()):
                if len(re.findall(r"[A-Za-z]{2,}", literal)) > 1 and literal.strip() not in told and not NO_MESSAGE.search(literal):
                    yield f"no row of the document has {literal!r} of {path.name}"


def messages_met(unit_tests):
    with tempfile.TemporaryDirectory() as folder:
        log = pathlib.Path(folder) / "messages"
        for program in unit_tests:
            subprocess.run([program, "--gtest_brief=1"], env=dict(os.environ, STOPPED_WITH_LOG=str(log)), check=True,
                           stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        met = log.read_bytes().decode("latin-1").split("\0")[:-1]
    notices = {message.removeprefix("notice: ") for message in met if message.startswith("notice: ")}
    return {message for message in met if not message.startswith("notice: ") and not NOT_OURS.match(message)}, notices


def main():
    errors, notices = (TOP / "docs" / "preparing-errors.md").read_text().split("\n## Notices\n")
    met_errors, met_notices = messages_met(sys.argv[1:])
    for stderr in (TOP / "tests" / "preparer" / "cases").glob("*/expected/stderr"):
        for line in stderr.read_text().splitlines():
            if line.startswith(PREFIX):
                met_errors.add(line.removeprefix(PREFIX))
            elif ": notice: " in line:
                met_notices.add(line.split(": notice: ", 1)[1])
    faults = re.sub(r"\{FULL\}|\{CLOSED\}", "No reason", (TOP / "tests" / "preparer" / "faults.py").read_text())
    of_faults = {text.removeprefix(PREFIX).removesuffix("\\n") for text in re.findall(r'f?"((?:[^"\\]|\\.)*)"', faults)}
    met_notices = {REPEATED.sub("", notice) for notice in met_notices}
    wrong = [*untold_literals(errors + notices)]
    for what, rows, met in (("message", rows_of(errors), met_errors), ("notice", rows_of(notices), met_notices)):
        patterns = {row: pattern_of(row) for row in rows}
        for text in sorted(met):
            if not any(p.fullmatch(text) for p in patterns.values()):
                wrong.append(f"no row of the document is the {what} {text!r}")
        for row, pattern in patterns.items():
            if row not in NOT_MET and not any(pattern.fullmatch(text) for text in met | of_faults):
                wrong.append(f"no test meets the documented {what} {row!r}")
        print(f"{len(rows)} documented {what}s, {len(met)} met")
        if len(rows) < 10 or len(met) < 10:
            wrong.append(f"too few {what}s")
    for line in wrong:
        print(line)
    sys.exit(1 if wrong else 0)


main()
