#!/usr/bin/env python3
"""Writes a synthetic molecule and its control file: molecules.py NATOM c1|d2h FOLDER

The atoms lie about 1.5 apart on a jittered grid, in random order; with d2h in one octant, with their images in the others
(NATOM a multiple of 8), so that 3/4 of NATOM points are computed. The random numbers are fixed.
"""
import math
import pathlib
import random
import sys


def grid(count, rng):
    """`count` points of positive coordinates, no two of them nearer than about 1."""
    side = math.ceil(count ** (1 / 3))
    cells = [(i, j, k) for i in range(side) for j in range(side) for k in range(side)]
    rng.shuffle(cells)
    return [[0.75 + 1.5 * c + rng.uniform(-0.25, 0.25) for c in cell] for cell in cells[:count]]


def molecule(natom, group):
    rng = random.Random(natom)
    signs = [(a, b, c) for a in (1, -1) for b in (1, -1) for c in (1, -1)] if group == "d2h" else [(1, 1, 1)]
    if natom % len(signs):
        raise SystemExit(f"molecules.py: {natom} atoms, expected a multiple of {len(signs)}")
    atoms = []
    for point in grid(natom // len(signs), rng):
        symbol = rng.choice("HCCNO")
        atoms += [(symbol, [s * x for s, x in zip(sign, point)]) for sign in signs]
    rng.shuffle(atoms)
    return atoms


def main():
    natom, group, folder = int(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
    folder.mkdir(parents=True, exist_ok=True)
    lines = ["%chk=synthetic.chk", "#p b3lyp/6-31g(d) force nosymm", "", f"{natom} atoms, {group}", "", "0 1"]
    lines += [f"{symbol:2}" + "".join(f"{c:14.8f}" for c in x) for symbol, x in molecule(natom, group)]
    (folder / "mol.gjf").write_text("\n".join(lines) + "\n\n")
    (folder / "control").write_text("&control fxyz = 'mol.gjf' /\n")


main()
