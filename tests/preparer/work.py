#!/usr/bin/env python3
"""Holds the work of the preparer against limits: work.py PREPARER GENERATOR

Instructions are counted by valgrind's cachegrind. They are those of a release build; a limit lies a little above what was
counted when it was set, so that work done twice does not pass. Where a change has a reason to do more, the limit is raised.
"""
import pathlib
import random
import re
import subprocess
import sys
import tempfile

preparer = str(pathlib.Path(sys.argv[1]).resolve())
EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
# source, instructions of the whole run
RUNS = {
    "benzene": 1_640_000,
    "c60": 9_300_000,
    "random 500": 15_600_000,
    "random 2000": 64_000_000,
    "log of 2 MB": 3_150_000,
    "log of 8 MB": 9_900_000,
}
# Twice as many atoms or lines are to cost about twice as much, not four times.
RATIOS = {("random 2000", "random 500"): 5.5, ("log of 8 MB", "log of 2 MB"): 4.1}


def example(name):
    return (EXAMPLES / name / "mol.gjf").read_text()


def random_molecule(natom):
    """Carbon at the points of a grid, each a little off it: no symmetry, no two atoms close."""
    random.seed(natom)
    side = round(natom ** (1 / 3)) + 1
    points = [(i, j, k) for i in range(side) for j in range(side) for k in range(side)][:natom]
    lines = "".join("C " + " ".join(f"{1.5 * p + random.uniform(-0.3, 0.3):.8f}" for p in point) + "\n" for point in points)
    return f"#p hf/3-21g force nosymm\n\nrandom\n\n0 1\n{lines}\n"


def log(megabytes):
    rule = " " + "-" * 69 + "\n"
    table = ("                         Input orientation:                          \n" + rule +
             " Center     Atomic      Atomic             Coordinates (Angstroms)\n" +
             " Number     Number       Type             X           Y           Z\n" + rule +
             "      1          8           0        0.000000    0.000000    0.400000\n" +
             "      2          1           0        0.000000    0.750000   -0.200000\n" +
             "      3          1           0        0.000000   -0.750000   -0.200000\n" + rule)
    cycle = table + " Some line that a log has and nobody reads, for instance of integrals:\n" * 200
    begin = " Entering Gaussian System, Link 0=g16\n " + "-" * 70 + "\n #p hf/3-21g opt\n " + "-" * 70 + "\n Charge =  0 Multiplicity = 1\n"
    return begin + cycle * (megabytes * 1000000 // len(cycle)) + " Normal termination of Gaussian 16 at now.\n"


SOURCES = {
    "benzene": lambda: example("benzene"),
    "c60": lambda: example("fullerene-c60"),
    "random 500": lambda: random_molecule(500),
    "random 2000": lambda: random_molecule(2000),
    "log of 2 MB": lambda: log(2),
    "log of 8 MB": lambda: log(8),
}


def instructions(text):
    with tempfile.TemporaryDirectory() as folder:
        (pathlib.Path(folder) / "source").write_text(text)
        done = subprocess.run(["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null", preparer, "-o", "out.gjf", "source"],
                              cwd=folder, capture_output=True, text=True)
        if done.returncode != 0:
            sys.exit(f"ended with status {done.returncode}:\n{done.stderr}")
        return int(re.search(r"I *refs: *([\d,]+)", done.stderr)[1].replace(",", ""))


def main():
    counts, wrong = {}, []

    def compare(name, found, limit):
        print(f"{name:32} {found:16,.2f} of {limit:16,.2f}", flush=True)
        if not 0 < found <= limit:
            wrong.append(name)

    for name, limit in RUNS.items():
        counts[name] = instructions(SOURCES[name]())
        compare(name, counts[name], limit)
    for (more, less), limit in RATIOS.items():
        compare(f"{more} / {less}", counts[more] / counts[less], limit)
    for name in wrong:
        print(f"{name}: more work than the limit allows, or none")
    sys.exit(1 if wrong else 0)


main()
