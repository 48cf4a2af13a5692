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
    "archive of 2000": 62_000_000,
}
# Twice as many atoms or lines are to cost about twice as much, not four times.
RATIOS = {("random 2000", "random 500"): 5.5, ("log of 8 MB", "log of 2 MB"): 4.1}


def example(name):
    return (EXAMPLES / name / "mol.gjf").read_text()


def random_positions(natom):
    """The points of a grid, each a little off it: no symmetry, no two atoms close."""
    random.seed(natom)
    side = round(natom ** (1 / 3)) + 1
    points = [(i, j, k) for i in range(side) for j in range(side) for k in range(side)][:natom]
    return [[1.5 * p + random.uniform(-0.3, 0.3) for p in point] for point in points]


def random_molecule(natom):
    lines = "".join("C " + " ".join(f"{p:.8f}" for p in point) + "\n" for point in random_positions(natom))
    return f"#p hf/3-21g force nosymm\n\nrandom\n\n0 1\n{lines}\n"


BEGIN = " Entering Gaussian System, Link 0=g16\n " + "-" * 70 + "\n #p hf/3-21g opt\n " + "-" * 70 + "\n Charge =  0 Multiplicity = 1\n"
END = " Normal termination of Gaussian 16 at now.\n"


def table(atoms):
    """atoms: number and position of each."""
    rule = " " + "-" * 69 + "\n"
    return ("                         Input orientation:                          \n" + rule +
            " Center     Atomic      Atomic             Coordinates (Angstroms)\n" +
            " Number     Number       Type             X           Y           Z\n" + rule +
            "".join(f"{i:7}{number:11}           0    " + "".join(f"{p:12.6f}" for p in position) + "\n"
                    for i, (number, position) in enumerate(atoms, 1)) + rule)


def log(megabytes):
    water = [(8, [0.0, 0.0, 0.4]), (1, [0.0, 0.75, -0.2]), (1, [0.0, -0.75, -0.2])]
    cycle = table(water) + " Some line that a log has and nobody reads, for instance of integrals:\n" * 200
    return BEGIN + cycle * (megabytes * 1000000 // len(cycle)) + END


def log_with_archive(natom):
    """The entry of all atoms, with force constants behind it, in lines of 70 characters."""
    positions = random_positions(natom)
    atoms = "".join("\\C," + ",".join(f"{p:.10f}" for p in position) for position in positions)
    entry = (f"1\\1\\GINC-NODE\\FOpt\\RHF\\3-21G\\C{natom}\\USER\\01-Jan-2026\\0\\\\#p hf/3-21g opt\\\\title\\\\0,1{atoms}"
             "\\\\Version=ES64L-G16RevC.01\\HF=-1.5\\PG=C01 [X(C1)]\\\\" + "0.01234567," * (100 * natom) + "\\\\\\@")
    lines = "".join(f" {entry[at:at + 70]}\n" for at in range(0, len(entry), 70))
    return BEGIN + table([(6, position) for position in positions]) + "\n" + lines + END


SOURCES = {
    "benzene": lambda: example("benzene"),
    "c60": lambda: example("fullerene-c60"),
    "random 500": lambda: random_molecule(500),
    "random 2000": lambda: random_molecule(2000),
    "log of 2 MB": lambda: log(2),
    "log of 8 MB": lambda: log(8),
    "archive of 2000": lambda: log_with_archive(2000),
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
