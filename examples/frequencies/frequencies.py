#!/usr/bin/env python3
"""Harmonic frequencies from the geometries that displacement_generator wrote.

Every geometry file in PES-0 is given to a calculator (xtb); the forces of the
points that have no file are rebuilt from the info block of files.out; force
differences make the Hessian, the Hessian makes the frequencies in cm-1.
"""
import argparse
import os
import re
import subprocess
import sys
import tempfile
from collections import namedtuple
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import numpy as np

BOHR = 0.529177210903        # angstrom
AMU = 1822.888486192         # electron masses
WAVENUMBER = 219474.63136    # cm-1 in one hartree
SAME = 0.001                 # cm-1, largest difference allowed with --all
CLOSE = 2.0                  # cm-1, largest difference allowed with --hess
ROUNDING = 6e-7              # angstrom, what the six decimals of dx in files.out leave open

# The masses (amu) that xtb itself uses: the mean over the natural isotopes of each element that it knows.
MASS_TABLE = """
H 1.007941 He 4.002602 Li 6.940037 Be 9.012183 B 10.811028 C 12.010736 N 14.006703 O 15.999405
F 18.998403 Ne 20.180046 Na 22.989769 Mg 24.305052 Al 26.981539 Si 28.085499 P 30.973762 S 32.064787
Cl 35.452938 Ar 39.947799 K 39.098301 Ca 40.078022 Sc 44.955908 Ti 47.866745 V 50.941465 Cr 51.996132
Mn 54.938044 Fe 55.845144 Co 58.933194 Ni 58.693347 Cu 63.546040 Zn 65.377782 Ga 69.723066 Ge 72.627550
As 74.921595 Se 78.959389 Br 79.903528 Kr 83.798000 Rb 85.467664 Sr 87.616644 Y 88.905840 Zr 91.223642
Nb 92.906373 Mo 95.959788 Tc 97.907212 Ru 101.064940 Rh 102.905498 Pd 106.415327 Ag 107.868150
Cd 112.411558 In 114.818087 Sn 118.710113 Sb 121.759784 Te 127.603126 I 126.904472 Xe 131.292761
Cs 132.905452 Ba 137.326892 La 138.905469 Ce 140.115731 Pr 140.907658 Nd 144.241596 Pm 144.912756
Sm 150.366356 Eu 151.964378 Gd 157.252131 Tb 158.925355 Dy 162.499473 Ho 164.930329 Er 167.259083
Tm 168.934218 Yb 173.054150 Lu 174.966815 Hf 178.484979 Ta 180.947876 W 183.841777 Re 186.206704
Os 190.224860 Ir 192.216052 Pt 195.084457 Au 196.966569 Hg 200.599167 Tl 204.383413 Pb 207.216908
Bi 208.980399 Po 208.982431 At 209.987148 Rn 222.017578
""".split()
MASS = dict(zip(MASS_TABLE[::2], map(float, MASS_TABLE[1::2])))

# xtb 6.5 gives wrong gradients where two atoms share a coordinate exactly, which a molecule on its symmetry axes
# often has. So it is shown every geometry through one fixed rotation that has no such accident.
SKEW = np.array([[0.0, -0.31, 0.17], [0.31, 0.0, -0.23], [-0.17, 0.23, 0.0]])
TURN = np.linalg.solve(np.eye(3) - SKEW, np.eye(3) + SKEW)

Geometry = namedtuple("Geometry", "charge multiplicity symbols xyz")    # xyz: natom x 3, angstrom
Info = namedtuple("Info", "dx group matrices images points")
Point = namedtuple("Point", "tag computed source operation")


def energy_and_forces(path):
    """Energy (hartree) and forces (natom x 3, hartree/bohr) at a geometry file. To use another program, replace this."""
    natom = len(read_geometry(path).symbols)
    with tempfile.TemporaryDirectory() as folder:
        run_xtb(path, folder, "--grad")
        lines = Path(folder, "gradient").read_text().splitlines()
    energy = float(lines[1].split("energy =")[1].split()[0])
    gradient = np.array([line.split() for line in lines[2 + natom:2 + 2 * natom]], dtype=float)
    return energy, -gradient @ TURN


def own_frequencies(path):
    """What the calculator itself makes of the geometry: all 3N frequencies (cm-1), in no particular order."""
    with tempfile.TemporaryDirectory() as folder:
        run_xtb(path, folder, "--hess")
        lines = Path(folder, "vibspectrum").read_text().splitlines()
    rows = [line for line in lines if line[:1] not in ("#", "$")]
    return np.array([row[20:].split()[0] for row in rows], dtype=float)    # columns 1-20: mode and symmetry


def run_xtb(path, folder, task):
    geometry = read_geometry(path)
    atoms = [f"{symbol} {x:.12f} {y:.12f} {z:.12f}"
             for symbol, (x, y, z) in zip(geometry.symbols, geometry.xyz @ TURN.T)]
    Path(folder, "turned.xyz").write_text("\n".join([str(len(atoms)), path.name, *atoms, ""]))
    command = ["xtb", "turned.xyz", task, "--gfn", "2", "--norestart", "--acc", "0.0001",
               "--chrg", str(geometry.charge), "--uhf", str(geometry.multiplicity - 1)]
    try:
        run = subprocess.run(command, cwd=folder, env={**os.environ, "OMP_NUM_THREADS": "1"}, text=True,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    except FileNotFoundError as error:
        raise SystemExit("xtb is not installed") from error
    if run.returncode != 0:
        raise SystemExit(f"{path}: xtb failed with status {run.returncode}\n{run.stdout[-1000:]}")


def atom_lines(lines):
    """First and last + 1 index of the atom lines: they follow the route, the title and the charge line."""
    route = max(i for i, line in enumerate(lines) if line.lstrip(" ").startswith("#"))
    blanks = [i for i, line in enumerate(lines) if i > route and not line.strip(" ")]
    title_end = next(i for i in blanks if i > blanks[0] + 1)
    return title_end + 2, next(i for i in blanks if i >= title_end + 2)


def read_geometry(path):
    lines = path.read_text().splitlines()
    first, end = atom_lines(lines)
    charge, multiplicity = lines[first - 1].replace(",", " ").split()[:2]
    atoms = [line.split() for line in lines[first:end]]
    return Geometry(int(charge), int(multiplicity), [atom[0].capitalize() for atom in atoms],
                    np.array([atom[1:4] for atom in atoms], dtype=float))


def write_geometry(path, like, xyz):
    """The geometry file `like` with other coordinates."""
    lines = like.read_text().splitlines()
    first, end = atom_lines(lines)
    lines[first:end] = [f"{line.split()[0]} {x:.8f} {y:.8f} {z:.8f}" for line, (x, y, z) in zip(lines[first:end], xyz)]
    path.write_text("\n".join([*lines, ""]))


def read_info(path):
    """The info block of files.out. Operations, atoms and points count from 1 there; operations and atoms from 0 here."""
    lines = path.read_text().splitlines()
    if "End_vesk_info" not in lines:
        raise SystemExit(f"{path}: no complete info block; displacement_generator did not finish")
    block = lines[lines.index("Begin_vesk_info") + 1:lines.index("End_vesk_info")]
    atoms = block.index("Atom correspondance:") + 2             # first line of the correspondence table
    total = next(i for i, line in enumerate(block) if line.startswith("Total"))
    starts = range(3, atoms - 2, 4)                             # the name line of each operation
    matrices = np.array([[row.split() for row in block[i + 1:i + 4]] for i in starts], dtype=float)
    images = np.array([line.split()[3:] for line in block[atoms:total]], dtype=int).T - 1
    rows = [line.split() for line in block[total + 3:]]
    points = [Point(tag, computed == "T", int(m), int(num) - 1) for _, tag, computed, m, num, _ in rows]
    return Info(float(lines[2][3:]), block[0].split()[-1], matrices, images, points)


def carry(field, info, operation):
    """One vector for each atom, carried by an operation: turned, and moved to the atom that the old one lands on."""
    carried = np.full_like(field, np.nan)       # an atom that nothing lands on is then noticed in check_step
    carried[info.images[operation]] = field @ info.matrices[operation].T
    return carried


def check_step(n, step, dx):
    """Point n moves coordinate (n + 1) // 2, counted through all atoms: by -dx if n is odd, by +dx if it is even."""
    expected = np.zeros(step.size)
    expected[(n - 1) // 2] = dx if n % 2 == 0 else -dx
    if not abs(step.ravel() - expected).max() <= ROUNDING:
        raise SystemExit(f"point {n}: expected coordinate {(n + 1) // 2} alone to move, by {max(expected, key=abs):.6f}")


def rebuild(info, reference, geometries, computed_forces):
    """Steps and forces (6N x N x 3) of all points from those of the computed ones."""
    steps, forces = {}, {}
    for n, point in enumerate(info.points[1:], start=1):
        if point.computed:
            steps[n], forces[n] = geometries[n] - reference, computed_forces[n]
        else:
            steps[n] = carry(steps[point.source], info, point.operation)
            forces[n] = carry(forces[point.source], info, point.operation)
        check_step(n, steps[n], info.dx)
    return np.array(list(steps.values())), np.array(list(forces.values()))


def frequencies(symbols, xyz, steps, forces):
    """The 3N - 6 (linear: 3N - 5) frequencies in cm-1; imaginary ones are negative."""
    size = xyz.size
    root_mass = np.sqrt(np.repeat([MASS[symbol] for symbol in symbols], 3) * AMU)
    steps, forces = steps.reshape(size, 2, size) / BOHR, forces.reshape(size, 2, size)
    lengths = np.diagonal(steps[:, 1] - steps[:, 0])     # 2 dx, from the geometries themselves
    hessian = (forces[:, 0] - forces[:, 1]) / lengths[:, None] / np.outer(root_mass, root_mass)
    # Vibrations are what is left beside the mass-weighted translations and rotations.
    centred = xyz - np.average(xyz, axis=0, weights=root_mass[::3] ** 2)
    rigid = [np.tile(axis, len(xyz)) for axis in np.eye(3)] + [np.cross(axis, centred).ravel() for axis in np.eye(3)]
    basis, sizes, _ = np.linalg.svd((np.array(rigid) * root_mass).T)
    vibrations = basis[:, np.count_nonzero(sizes > 1e-4 * sizes[0]):]
    values = np.linalg.eigvalsh(vibrations.T @ (hessian + hessian.T) @ vibrations / 2)
    return np.sign(values) * np.sqrt(abs(values)) * WAVENUMBER


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder", type=Path, help="where displacement_generator ran, or the PES-0 that it wrote")
    parser.add_argument("--all", action="store_true", help="compute the derived points too, and compare")
    parser.add_argument("--hess", action="store_true", help="compare with the Hessian that the calculator makes itself")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="calculations at a time (all processors)")
    options = parser.parse_args()
    if options.jobs < 1:
        parser.error(f"--jobs {options.jobs}: at least 1")
    folder = options.folder / "PES-0" if (options.folder / "PES-0").is_dir() else options.folder
    if not (folder / "files.out").is_file():
        parser.error(f"{folder}/files.out: not found; run displacement_generator first")

    info = read_info(folder / "files.out")
    paths = {n: folder / f"coord-{point.tag}.com" for n, point in enumerate(info.points) if point.computed}
    if info.dx == 0:
        raise SystemExit(f"{folder}/files.out: the step is 0, or too small to show")
    if re.search(r"^\s*#.*units\s*=\s*\(?[^ ]*(au|bohr)", paths[0].read_text(), re.IGNORECASE | re.MULTILINE):
        raise SystemExit(f"{paths[0]}: coordinates in bohr; this script takes them to be in angstrom")
    geometries = {n: read_geometry(path).xyz for n, path in paths.items()}
    _, _, symbols, reference = read_geometry(paths[0])
    with ThreadPoolExecutor(options.jobs) as pool, tempfile.TemporaryDirectory() as spare:
        results = dict(zip(paths, pool.map(energy_and_forces, paths.values())))
        steps, forces = rebuild(info, reference, geometries, {n: forces for n, (_, forces) in results.items()})
        print(f"{folder.resolve().parent.name}: {info.group}, {len(paths) - 1} of {len(steps)} displacements computed")
        print(f"at the reference: energy {results[0][0]:.8f} hartree, "
              f"largest force {abs(results[0][1]).max():.1e} hartree/bohr")
        columns = {"cm-1": frequencies(symbols, reference, steps, forces)}
        if options.all:
            missing = [n for n in range(1, len(steps) + 1) if n not in paths]
            extra = [Path(spare, f"point-{n}.com") for n in missing]
            for n, path in zip(missing, extra):
                write_geometry(path, paths[0], reference + steps[n - 1])
            direct = forces.copy()
            for n, (_, computed) in zip(missing, pool.map(energy_and_forces, extra)):
                direct[n - 1] = computed
            columns[f"all {len(steps)}"] = frequencies(symbols, reference, steps, direct)
        if options.hess:
            own = own_frequencies(paths[0])
            kept = np.argsort(abs(own))[len(own) - len(columns["cm-1"]):]    # without the rigid motions, which are zero
            columns["own"] = np.sort(own[kept])

    print("mode" + "".join(f"{name:>12}" for name in columns))
    for mode, row in enumerate(zip(*columns.values()), start=1):
        print(f"{mode:4}" + "".join(f"{value:12.4f}" for value in row))
    agree = True
    ours, *others = columns
    for name in others:
        limit = CLOSE if name == "own" else SAME
        difference = abs(columns[ours] - columns[name]).max(initial=0.0)
        verdict = "agrees" if difference <= limit else "DISAGREES"
        print(f"largest difference from '{name}': {difference:.6f} cm-1 ({verdict}: {limit} allowed)")
        agree = agree and verdict == "agrees"
    return 0 if agree else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except OSError as error:
        sys.exit(str(error))
