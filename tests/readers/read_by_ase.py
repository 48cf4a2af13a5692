"""Reads every geometry file of the examples with ASE and compares it with files.out and the example's own input.

    read_by_ase.py PROGRAM EXAMPLES

Symbols must be those of the correspondence table. The reference must be the input, turned by quarter turns at the most.
Each displaced geometry must be the reference with the one coordinate moved that its row of the point table stands for.
"""
import itertools
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

import numpy as np
from ase.io import read

ROUNDING = 1.000001e-8      # two coordinates of eight decimals, each rounded by half a unit of the last one


def read_list(path):
    """Names, dx, symbols, and the rows of the point table as (tag, is computed), row 0 the reference."""
    lines = path.read_text().splitlines()
    begin, end = lines.index("Begin_vesk_info"), lines.index("End_vesk_info")
    natom = int(lines[0].split()[-1])
    table = lines.index("Atom correspondance:") + 2
    symbols = [row[8:16].strip() for row in lines[table:table + natom]]
    rows = [(row[10:18].strip(), row[18:26].strip() == "T") for row in lines[end - 6 * natom - 1:end]]
    names = [line.strip() for line in lines[3:begin]]
    assert len(names) == int(lines[1].split()[-1]), "the number of names is not the one in the second line"
    return names, float(lines[2][3:]), symbols, rows


def quarter_turns():
    """The 24 rotations that carry axes onto axes."""
    for order in itertools.permutations(range(3)):
        for signs in itertools.product((1, -1), repeat=3):
            turn = np.eye(3)[list(order)] * np.array(signs)[:, None]
            if np.linalg.det(turn) > 0:
                yield turn


def check(program, example, scratch):
    folder = scratch / example.name
    shutil.copytree(example, folder, ignore=shutil.ignore_patterns("PES-0"))
    subprocess.run([program, "control"], cwd=folder, check=True)
    names, dx, symbols, rows = read_list(folder / "PES-0" / "files.out")

    computed = [n for n, (_, is_computed) in enumerate(rows) if is_computed]
    assert names == [f"coord-{rows[n][0]}" for n in computed], "the names are not those of the computed points"
    assert sorted(p.name for p in folder.glob("PES-0/*.com")) == sorted(f"{name}.com" for name in names)

    molecule = read(folder / "mol.gjf", format="gaussian-in")
    geometries = [read(folder / "PES-0" / f"{name}.com", format="gaussian-in") for name in names]
    reference = geometries[0].get_positions()
    turned = (molecule.get_positions() @ turn.T for turn in quarter_turns())
    assert any(np.abs(reference - t).max() <= ROUNDING for t in turned), "the reference is not the input"

    for n, name, geometry in zip(computed, names, geometries):
        assert geometry.get_chemical_symbols() == molecule.get_chemical_symbols() == symbols, f"{name}: symbols"
        expected = reference.copy()
        if n > 0:
            expected[(n - 1) // 6, (n - 1) // 2 % 3] += dx if n % 2 == 0 else -dx
        worst = np.abs(geometry.get_positions() - expected).max()
        assert worst <= ROUNDING, f"{name}: a coordinate is off by {worst}"
    return len(names)


def main():
    program, examples = Path(sys.argv[1]).resolve(), Path(sys.argv[2])
    with tempfile.TemporaryDirectory() as scratch:
        for control in sorted(examples.glob("*/control")):
            print(f"{control.parent.name}: {check(program, control.parent, Path(scratch))} geometry files as meant")


main()
