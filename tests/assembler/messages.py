#!/usr/bin/env python3
"""Holds docs/assembling.md against the messages of the assembler: messages.py TOP ASSEMBLER_TESTS ASSEMBLER

Every fixed piece of a documented message must be made of string literals of tools/displacement_assembler, of
tools/companion or of the reader of logs. Every literal of both tools that reads like words must stand among the messages, be told in the
words that are named here, be shown by --help, or be named here as no message. Every documented message must be one that a run in the tests ends with, and messages about
lines of the list and of geometry files, which are not documented one by one, must be as the document says.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

PREFIX = "displacement_assembler: error: "
# The document says of these what each message names.
TOLD_TOGETHER = {"read_list.cpp", "read_geometry.cpp"}
NO_MESSAGE = {
    "molden_text.cpp": {r"[Atoms] AU\n", r"[FR-COORD]\n", r"[FR-NORM-COORD]\n", r"[Molden Format]\n"},
    "read_results.cpp": {"files.out: ", "b2plyp", "cas", "dsdpbep86", "eomccsd", "external", "gvb", "mpw2plyp", "pbe0dh", "pbeqidh", "ro",
                         "sac-ci", "tda", "zindo"},
    "run.cpp": {"Hessian from forces, by displacement_assembler", "computing the vibrations of "},
    "table.cpp": {
        r" without %d imaginary mode%s\n", r"# %s molecule, masses: %s\n", r"# %zu of %zu displacements computed, dx = %.6f\n",
        r"# atom symbol        mass (amu)\n", r"# energy %.9f hartree\n", r"# largest asymmetry of the Hessian %.3e hartree/bohr^2\n",
        r"# largest force at the reference %.9f hartree/bohr%s\n", "# method of ",
        r"# no species frequency   red.mass   frc.const   intensity\n#               (cm-1)      (amu)   (mdyne/A)    (km/mol)\n", "# point group ",
        "# route of ", "# zero-point energy %.9f hartree", ", species of ", ": too large, not a stationary point", "average over the isotopes",
        "most abundant isotopes", "one-atom", "the results"},
}
# What tells of literals that begin so.
OTHER_WORDS = {
    "a result without a dipole moment": {" has no dipole moment", "no intensities: "},
    "a route other than that of the geometry files": {"the route of the results is '", "', that of the .com files '"},
    "an asymmetry of the Hessian: look at": {
        "the Hessian has an asymmetry of ",
        ": forces of these points, or of those from which they follow, do not belong to one potential, or the step is too large, or too small "
        "for the noise of the forces"},
    "a largest force above 0.00045 hartree/bohr": {
        "the largest force at the reference is more than 0.00045 hartree/bohr: this is not a stationary point, and harmonic frequencies mean little there"},
    "operations that do not count for the species": {"species are assigned without "},
    "energies that do not follow from the forces": {
        "some energies do not follow from the forces, that of ", "the energies do not follow from the forces, that of ", " is off by ",
        ": they are of another level, or the forces are not of these geometries"},
    "are all the same": {"all energies are the same: "},
    "or none": {"the .forces files hold no energies: nothing shows whether they are of these geometries"},
    "or memory is exhausted": {"an allocation would exceed the memory limit"},
}
# Standard error cannot tell that it does not work.
NOT_MET = {"standard error: cannot write: "}
VARIES = {"line": r"\d+", "number": r"-?[\d.]+(?:e[-+]\d+)?", "reason": r"[A-Z][\w /-]+", "name": r"\w+", "text": r".*", "file": r"(?!command line)[^:]+",
          "folder": r".+", "list": r"[^:]*files\.out"}


def literals_of(path):
    text = re.sub(r"//[^\n]*|#include[^\n]*", "", path.read_text())
    text = re.sub(r'"\s*\n\s*"', "", text)
    return {match.replace('\\"', '"') for match in re.findall(r'"((?:\\.|[^"\\\n])*)"', text)}


def pattern_of(row):
    """What is documented to go on with another piece may do so."""
    parts = re.split(r"<(\w+)>", row)
    return re.compile("".join(VARIES[part] if i % 2 else re.escape(part) for i, part in enumerate(parts)) + r"(?:; .*)?")


def messages_met(program):
    """What the runs in the tests wrote on standard error, and what the fault tests expect, whole lines without the program's name."""
    with tempfile.TemporaryDirectory() as folder:
        log = pathlib.Path(folder) / "messages"
        subprocess.run([program, "--gtest_brief=1"], env=dict(os.environ, STOPPED_WITH_LOG=str(log)), check=True, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        met = set(log.read_bytes().decode("latin-1").replace("\0", "\n").splitlines())
    faults = (pathlib.Path(__file__).parent / "faults.py").read_text()
    for name, value in (("{ERROR}", ""), ("{FULL}", "No space"), ("{CLOSED}", "Bad descriptor"), ("{name}", "m"), ("{what}", "write")):
        faults = faults.replace(name, value)
    met |= set(re.findall(r'f"([^"{}]*?)(?:\\n)?"', faults))
    return {line.removeprefix(PREFIX) for line in met}


def main():
    top = pathlib.Path(sys.argv[1])
    whole = (top / "docs" / "assembling.md").read_text()
    document = whole.split("\n## Messages\n")[1]
    plain = " ".join(whole.split())
    rows = re.findall(r"^\| `([^`]+)`", document, re.MULTILINE)
    rows = [row for row in rows if not row.isdigit()]
    others = [piece for row in re.findall(r"^\| `[^`]+`(, [^|]*)\|", document, re.MULTILINE) for piece in re.findall(r"`([^`]+)`", row)]
    messages = [message for message in rows + re.findall(r"`(; [^`]+)`", document) if len(message) > 3]
    told = re.sub(r"<[^>]*>", "\0", document)
    literals, checked = set(), {}
    folders = (top / "tools" / "displacement_assembler", top / "tools" / "companion")
    for path in sorted(path for folder in folders for path in folder.glob("*.[ch]pp")):
        literals |= literals_of(path)
        if path.name not in TOLD_TOGETHER:
            checked.setdefault(path.name, set()).update(literals_of(path))
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

    shown = subprocess.run([sys.argv[3], "--help"], capture_output=True, text=True, check=True, timeout=60).stdout
    shown = " ".join(shown.split())
    other_words = {beginning: words for words, of_words in OTHER_WORDS.items() for beginning in of_words}
    for name, of_file in checked.items():
        for literal in sorted(of_file - NO_MESSAGE.get(name, set())):
            if len(re.findall(r"[A-Za-z]{2,}", literal)) < 2 or literal.strip() in told or \
                    " ".join(literal.replace("\\n", " ").split()) in shown:
                continue
            words = [words for beginning, words in other_words.items() if literal.startswith(beginning)]
            if not words:
                wrong.append(f"docs/assembling.md does not tell of {literal!r} in {name}")
            elif words[0] not in plain:
                wrong.append(f"docs/assembling.md does not say {words[0]!r}, which tells of {literal!r} in {name}")
    # A name here without its literal would leave out a later one.
    for name, of_file in NO_MESSAGE.items():
        wrong += [f"{name} has no literal {literal!r}" for literal in sorted(of_file - checked.get(name, set()))]
    wrong += [f"no literal of the code begins with {beginning!r}" for beginning in sorted(other_words)
              if not any(literal.startswith(beginning) for literal in literals)]

    met = messages_met(sys.argv[2])
    for row in rows:
        if not any(pattern_of(row).fullmatch(line) for line in met):
            wrong.append(f"no test meets the documented message {row!r}")
    for piece in others + re.findall(r"`(; [^`]+)`", document):
        if piece not in NOT_MET and not any(piece in line for line in met):
            wrong.append(f"no test meets the documented piece {piece!r}")
    of_lines = {line for line in met if re.match(r"PES-0/(files\.out|coord-[^:]*\.com):\d+: ", line)}
    wrong += [f"expected a line, what was expected and what was found, in {line!r}" for line in sorted(of_lines)
              if not re.fullmatch(r"PES-0/[^:]+:\d+: expected .+, found .+", line)]
    for line in wrong:
        print(line)
    print(f"{len(messages)} messages, {sum(map(len, checked.values()))} literals, {len(met)} lines met, {len(of_lines)} of them about lines of inputs, "
          f"{len(wrong)} differences")
    sys.exit(1 if wrong or len(messages) < 25 or len(of_lines) < 25 else 0)


main()
