#!/usr/bin/env python3
"""Holds the work of the assembler against limits: work.py ASSEMBLER GENERATOR FAILING_CALLS

Instructions are counted by valgrind's cachegrind, the largest memory by its massif, calls of the system by the library that the
fault tests preload. They are those of a release build; a limit lies a little above what was counted when it was set, so that work
done twice does not pass. Where a change has a reason to do more, the limit is raised.
"""
import collections
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
import twins

assembler, generator, preload = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:4])
LINE = " Alpha virt. eigenvalues --    0.12345   0.23456   0.34567   0.45678   0.56789\n"
MEGABYTE = 1_000_000

PER_BYTE = 0.9          # instructions of a run for each further byte of a log
READS_PER_BLOCK = 1.0   # calls of read for each 64 KiB, and two more: what stands in the last block, and the end
MEMORY = 170_000        # bytes, for water
MEMORY_GROWTH = 20_000  # bytes that ten logs of 4 MB may need more than ten of 4 kB
# atoms, instructions of a whole run without symmetry
RUNS = {20: 24_500_000, 60: 205_000_000}
RATIO = 9.5  # three times the atoms: nine times the numbers to read; 27 times the work of the eigenvectors, which is little here
wrong = []


def compare(name, found, limit):
    print(f"{name:40} {found:16,.2f} of {limit:16,.2f}", flush=True)
    if not 0 < found <= limit:
        wrong.append(name)


def random_molecule(natom):
    """Atoms at the points of a grid, each a little off it: no symmetry, no two atoms close."""
    random.seed(natom)
    side = round(natom ** (1 / 3)) + 1
    points = [(i, j, k) for i in range(side) for j in range(side) for k in range(side)][:natom]
    lines = "".join(f"{random.choice('CHO')} " + " ".join(f"{1.5 * p + random.uniform(-0.3, 0.3):.8f}" for p in point) + "\n" for point in points)
    return f"#p hf/3-21g force nosymm\n\nrandom\n\n0 1\n{lines}\n"


def lay_out(folder, molecule=twins.WATER, more=0):
    """A folder with all logs, each with `more` bytes that nobody reads."""
    folder.mkdir()
    names = twins.generate(generator, folder, molecule)
    between = LINE * (more // len(LINE))
    twins.compute_all(folder, names, lambda *of: twins.log_text(*of, more=between), ".log")
    return names


def valgrind(folder, *tool):
    done = subprocess.run(["valgrind", *tool, assembler], cwd=folder, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"ended with status {done.returncode}:\n{done.stderr}")
    return done.stderr


def instructions(folder):
    told = valgrind(folder, "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null")
    return int(re.search(r"I *refs: *([\d,]+)", told)[1].replace(",", ""))


def largest_heap(folder):
    valgrind(folder, "--tool=massif", "--massif-out-file=massif")
    snapshots = re.findall(r"mem_heap_B=(\d+)\nmem_heap_extra_B=(\d+)", (folder / "massif").read_text())
    return max(int(used) + int(extra) for used, extra in snapshots)


def calls(folder):
    """How many calls of each kind are made on each file."""
    log = folder / "calls"
    subprocess.run([assembler], cwd=folder, stdout=subprocess.DEVNULL, check=True,
                   env={**os.environ, "LD_PRELOAD": preload, "FAILING_LOG": str(log)})
    return collections.Counter(log.read_text().splitlines())


with tempfile.TemporaryDirectory() as scratch:
    scratch = pathlib.Path(scratch)
    names = lay_out(scratch / "small")
    lay_out(scratch / "large", more=MEGABYTE)
    lay_out(scratch / "larger", more=4 * MEGABYTE)
    compare("instructions per byte of a log", (instructions(scratch / "large") - instructions(scratch / "small")) / (len(names) * MEGABYTE), PER_BYTE)
    made = calls(scratch / "large")
    log = f"PES-0/{names[1]}.log"
    compare("calls of open on a log", made[f"open {log}"], 1)
    compare("calls of close on a log", made[f"close {log}"], 1)
    compare("calls of read on a log", made[f"read {log}"], READS_PER_BLOCK * (scratch / "large" / log).stat().st_size / 65536 + 2)
    compare("calls of open on an input", made[f"open PES-0/{names[1]}.com"], 1)
    compare("calls of read on an input", made[f"read PES-0/{names[1]}.com"], 2)
    compare("all calls", sum(made.values()), sum(count for call, count in made.items() if call.endswith((".log", ".com", "files.out"))) or 1)
    small, larger = largest_heap(scratch / "small"), largest_heap(scratch / "larger")
    compare("memory", small, MEMORY)
    compare("memory with logs of 4 MB", larger, small + MEMORY_GROWTH)
    counted = {}
    for natom, limit in RUNS.items():
        lay_out(scratch / str(natom), random_molecule(natom))
        counted[natom] = instructions(scratch / str(natom))
        compare(f"instructions of a run, {natom} atoms", counted[natom], limit)
    compare("60 atoms / 20 atoms", counted[60] / counted[20], RATIO)
for name in wrong:
    print(f"{name}: more work than the limit allows, or none")
sys.exit(1 if wrong else 0)
