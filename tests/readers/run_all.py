#!/usr/bin/env python3
"""Runs script/run-all with the programs of this build, and holds what it prints against README.md: run_all.py BIN

The script runs as it is, in a tree whose script/bootstrap and script/build only note that they were called. Exit status: 0 all is well, 77 xtb is
not installed, 1 otherwise.
"""
import math
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

TOP = pathlib.Path(__file__).resolve().parents[2]
NUMBER = re.compile(r"-?\d+\.\d+(?:e[-+]\d+)?")
# Numbers that tell of noise: only their size is the same with another version of xtb or another machine.
NOISE = re.compile(r"largest (force at the reference|asymmetry of the Hessian|difference)|no atom moved by")
wrong = []


def check(what, found, expected):
    if found != expected:
        wrong.append(f"{what}: expected\n{expected}\nfound\n{found}")


def is_near(found, shown, line):
    if NOISE.search(line):
        return 0.0 <= float(found) <= 100.0 * float(shown)
    decimals = len(shown.partition(".")[2])
    if decimals > 4:
        return math.isclose(float(found), float(shown), rel_tol=0.0, abs_tol=1e-6)  # hartree
    return math.isclose(float(found), float(shown), rel_tol=1e-5, abs_tol=5e-3)  # cm-1, amu, mdyne/angstrom, km/mol


def compare(found, shown):
    """The same words in the same columns; numbers that differ by no more than xtb's do from machine to machine."""
    check("lines without their numbers", NUMBER.sub("?", found), NUMBER.sub("?", shown))
    for found_line, shown_line in zip(found.splitlines(), shown.splitlines()):
        check("length of the line", (len(found_line), found_line), (len(shown_line), found_line))
        for found_number, shown_number in zip(NUMBER.findall(found_line), NUMBER.findall(shown_line)):
            if not is_near(found_number, shown_number, shown_line):
                wrong.append(f"expected {shown_number} as README.md shows, found {found_number} in {found_line!r}")


def tree(folder, binaries):
    (folder / "script").mkdir()
    shutil.copy(TOP / "script" / "run-all", folder / "script" / "run-all")
    for name in ("bootstrap", "build"):
        (folder / "script" / name).write_text(f'#!/bin/sh\necho "{name} $*" >>"{folder}/called"\n')
        (folder / "script" / name).chmod(0o755)
    (folder / "build" / "release").mkdir(parents=True)
    (folder / "build" / "release" / "bin").symlink_to(binaries)
    (folder / "examples").symlink_to(TOP / "examples")


def run(folder, *arguments):
    return subprocess.run([str(folder / "script" / "run-all"), *arguments], cwd=folder, capture_output=True, text=True, timeout=250, stdin=subprocess.DEVNULL)


def main():
    if shutil.which("xtb") is None:
        print("skipped: xtb is not installed")
        sys.exit(77)
    shown = re.findall(r"^\$ script/run-all\n(.*?)^```", (TOP / "README.md").read_text(), re.DOTALL | re.MULTILINE)
    check("blocks of script/run-all in README.md", len(shown), 1)
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        tree(folder, pathlib.Path(sys.argv[1]).resolve())
        done = run(folder, "no-such-molecule")
        check("an unknown example", (done.returncode, done.stdout, done.stderr), (2, "", "script/run-all: no example 'no-such-molecule'\n"))
        check("an unknown example: nothing is built", (folder / "called").exists(), False)
        done = run(folder)
        check("status", (done.returncode, done.stderr), (0, ""))
        check("what is built", (folder / "called").read_text(), "bootstrap frequencies\nbuild release\n")
        compare(done.stdout, shown[0])
        check("another example: status", run(folder, "water").returncode, 0)
    print("\n".join(wrong) or "script/run-all prints what README.md shows")
    sys.exit(1 if wrong else 0)


main()
