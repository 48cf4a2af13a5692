#!/usr/bin/env python3
"""Holds the work of the program and of its routines against limits: limits.py ROUTINES PROGRAM MOLECULES [ROW]

Instructions are counted by valgrind's cachegrind, the largest memory by its massif. They are those of a release build; a limit
lies a little above what was counted when it was set, so that work done twice does not pass. Where a change has a reason to do
more, the limit is raised with it. With ROW only the rows whose name begins with it.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

# routine, size, times, instructions of one call
ROUTINES = [
    ("search_op", 504, 4, 216_000),
    ("search_op", 2000, 2, 950_000),
    ("search_symm_xyz", 504, 4, 516_000),
    ("search_symm_xyz", 2000, 2, 1_960_000),
    ("point_group", 2000, 1, 9_700_000),
    ("copy", 10000, 4, 1_130),
    ("num_file_lines", 10000, 4, 390_000),
    ("num_file_lines_word", 10000, 2, 1_230_000),
    ("read_lines", 10000, 2, 2_400_000),
    ("get_gjf_coord", 2000, 1, 3_980_000),
    ("read_block_data", 100, 2, 13_800_000),
    ("name_dir", 180, 1000, 120),
    ("name_base", 180, 1000, 138),
    ("name_ext", 180, 1000, 107),
    ("name_main", 180, 1000, 178),
    ("read_real", 0, 1000, 248),
    ("put_real", 0, 1000, 305),
]
# group, atoms, instructions of the whole run
RUNS = [
    ("d2h", 504, 6_690_000),
    ("d2h", 2000, 26_650_000),
    ("c1", 504, 8_680_000),
    ("c1", 2000, 34_200_000),
]
# group, instructions at 2000 atoms over those at 504
RATIOS = [("d2h", 4.4), ("c1", 4.4)]
# group, atoms, bytes of memory
PEAK = ("d2h", 5000, 10_320_000)


def valgrind(folder, tool, *command):
    """Result: what the tool wrote about the command, which must succeed."""
    result = subprocess.run(["valgrind", f"--tool={tool[0]}", *tool[1:], *command], cwd=folder, capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} ended with status {result.returncode}:\n{result.stderr}")
    return result.stderr


def instructions(folder, *command):
    told = valgrind(folder, ["cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null"], *command)
    return int(re.search(r"I *refs: *([\d,]+)", told)[1].replace(",", ""))


def largest_heap(folder, *command):
    valgrind(folder, ["massif", "--massif-out-file=massif"], *command)
    snapshots = re.findall(r"mem_heap_B=(\d+)\nmem_heap_extra_B=(\d+)", (folder / "massif").read_text())
    return max(int(used) + int(extra) for used, extra in snapshots)


def lay_out(molecules, folder, group, natom):
    """A molecule, with all geometry files leading to where nothing is kept: what the run writes is counted elsewhere."""
    subprocess.run([sys.executable, molecules, str(natom), group, folder], check=True)
    (folder / "PES-0").mkdir()
    digits = len(str(natom))
    for atom in range(natom + 1):
        for step in ["-00"] if atom == 0 else [sign + "d" + axis for sign in "-+" for axis in "xyz"]:
            (folder / "PES-0" / f"coord-{atom:0{digits}}{step}.com").symlink_to("/dev/null")


def main():
    routines, program, molecules = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
    chosen = sys.argv[4] if len(sys.argv) > 4 else ""
    wrong = []

    def is_wanted(*row):
        return " ".join(map(str, row)).startswith(chosen)

    def compare(name, found, limit):
        print(f"{name:32} {found:14,.2f} of {limit:14,.2f}", flush=True)
        if not 0 < found <= limit:
            wrong.append(name)

    with tempfile.TemporaryDirectory() as scratch:
        scratch = pathlib.Path(scratch)
        for name, size, times, limit in ROUTINES:
            if not is_wanted(name, size):
                continue
            once, twice = (instructions(scratch, routines, name, str(size), str(count)) for count in (times, 2 * times))
            compare(f"{name} {size}", (twice - once) / times, limit)
        counts = {}
        for group, natom, limit in RUNS:
            if not is_wanted("run", group, natom):
                continue
            folder = scratch / f"{group}-{natom}"
            lay_out(molecules, folder, group, natom)
            counts[group, natom] = instructions(folder, program, "control")
            compare(f"run {group} {natom}", counts[group, natom], limit)
        for group, limit in RATIOS:
            if {(group, 504), (group, 2000)} <= counts.keys():
                compare(f"run {group} 2000 / 504", counts[group, 2000] / counts[group, 504], limit)
        group, natom, limit = PEAK
        if is_wanted("memory", group, natom):
            lay_out(molecules, scratch / "peak", group, natom)
            compare(f"memory {group} {natom}", largest_heap(scratch / "peak", program, "control"), limit)
    for name in wrong:
        print(f"{name}: more work than the limit allows, or none")
    sys.exit(1 if wrong else 0)


main()
