#!/usr/bin/env python3
"""Computes every geometry in PES-0 with xtb, and lets displacement_assembler make the frequencies.

Writes coord-TAG.forces beside each coord-TAG.com. ASSEMBLER and PROGRAM in the environment name displacement_assembler and
displacement_generator where they are not on the PATH.
"""
import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

SAME = 0.001       # cm-1, largest difference allowed with --all
CLOSE = 2.0        # cm-1, largest difference allowed with --hess

# xtb 6.5 gives wrong gradients where two atoms share a coordinate exactly, which a molecule on its symmetry axes
# often has. So it is shown every geometry through one fixed rotation that has no such accident: that of the quaternion
# (11, 3, 5, 7).
W, A, B, C = (component / 204 ** 0.5 for component in (11, 3, 5, 7))
TURN = ((1 - 2 * (B * B + C * C), 2 * (A * B - C * W), 2 * (A * C + B * W)),
        (2 * (A * B + C * W), 1 - 2 * (A * A + C * C), 2 * (B * C - A * W)),
        (2 * (A * C - B * W), 2 * (B * C + A * W), 1 - 2 * (A * A + B * B)))


def turned(vector):
    return [sum(row[j] * vector[j] for j in range(3)) for row in TURN]


def turned_back(vector):
    return [sum(TURN[i][j] * vector[i] for i in range(3)) for j in range(3)]


def read_geometry(path):
    """Charge, multiplicity, symbols and coordinates of a geometry file."""
    lines = path.read_text().splitlines()
    route = max(i for i, line in enumerate(lines) if line.lstrip(" ").startswith("#"))
    blanks = [i for i, line in enumerate(lines) if i > route and not line.strip(" ")]
    charge = next(i for i in blanks if i > blanks[0] + 1) + 1
    atoms = [line.split() for line in lines[charge + 1:next(i for i in blanks if i > charge)]]
    return *map(int, lines[charge].split()[:2]), [atom[0] for atom in atoms], [list(map(float, atom[1:4])) for atom in atoms]


def run_xtb(path, folder, task):
    charge, multiplicity, symbols, positions = read_geometry(path)
    atoms = ["%s %.12f %.12f %.12f" % (symbol, *turned(at)) for symbol, at in zip(symbols, positions)]
    Path(folder, "turned.xyz").write_text("\n".join([str(len(atoms)), path.name, *atoms, ""]))
    command = ["xtb", "turned.xyz", task, "--json", "--gfn", "2", "--norestart", "--acc", "0.0001", "--chrg", str(charge),
               "--uhf", str(multiplicity - 1)]
    try:
        run = subprocess.run(command, cwd=folder, env={**os.environ, "OMP_NUM_THREADS": "1"}, text=True,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    except FileNotFoundError as error:
        raise SystemExit("xtb is not installed") from error
    if run.returncode != 0 and not (task == "--hess" and has_whole_spectrum(folder, len(atoms))):
        raise SystemExit(f"{path}: xtb failed with status {run.returncode}\n{run.stdout[-1000:]}")
    if run.returncode != 0:
        print(f"{path}: notice: xtb failed with status {run.returncode} after it had written all its frequencies; they are used",
              file=sys.stderr)
    return len(atoms)


def has_whole_spectrum(folder, natom):
    """Whether xtb has written all modes. Of some linear molecules it has, and fails when it goes on to other outputs."""
    path = Path(folder, "vibspectrum")
    lines = path.read_text().splitlines() if path.is_file() else []
    return lines[-1:] == ["$end"] and len(spectrum_rows(lines)) == 3 * natom


def spectrum_rows(lines):
    """Frequency (cm-1) and intensity (km/mol) of each mode of a file vibspectrum."""
    rows = [line[20:].split() for line in lines if line[:1] not in ("#", "$")]     # columns 1-20: mode and symmetry
    return [(float(row[0]), float(row[1])) for row in rows]


def write_forces(path):
    """Writes the .forces file of a geometry file. To use another program, replace this."""
    with tempfile.TemporaryDirectory() as folder:
        natom = run_xtb(path, folder, "--grad")
        lines = Path(folder, "gradient").read_text().splitlines()
        dipole = json.loads(Path(folder, "xtbout.json").read_text())["dipole"]
    energy = float(lines[1].split("energy =")[1].split()[0])
    gradient = [list(map(float, line.split())) for line in lines[2 + natom:2 + 2 * natom]]
    rows = ["%.12e %.12e %.12e" % tuple(-g for g in turned_back(vector)) for vector in gradient]
    path.with_suffix(".forces").write_text("\n".join([f"# xtb {path.name}", f"energy {energy:.10f}",
                                                      "dipole %.8f %.8f %.8f" % tuple(turned_back(dipole)), *rows, ""]))


def own_modes(path):
    """What xtb itself makes of the geometry: frequencies (cm-1) and intensities (km/mol) of the 3N modes."""
    with tempfile.TemporaryDirectory() as folder:
        run_xtb(path, folder, "--hess")
        return spectrum_rows(Path(folder, "vibspectrum").read_text().splitlines())


def assemble(folder, jobs):
    """Computes all that the list names. Result: the table, and frequency and intensity of each mode."""
    names = [line.strip() for line in (folder / "files.out").read_text().splitlines() if line.strip().startswith("coord-")]
    with ThreadPoolExecutor(jobs) as pool:
        list(pool.map(write_forces, [folder / f"{name}.com" for name in names]))
    run = subprocess.run([os.environ.get("ASSEMBLER", "displacement_assembler"), "--masses", "average", str(folder)], text=True,
                         stdout=subprocess.PIPE)
    if run.returncode != 0:
        raise SystemExit("displacement_assembler failed")
    rows = [line.split() for line in run.stdout.splitlines() if not line.startswith("#")]
    return run.stdout, [(float(row[2]), float(row[5])) for row in rows]


def compute_all(folder, jobs):
    """The same without symmetry: every one of the 6N displacements is computed."""
    with tempfile.TemporaryDirectory() as spare:
        names = [line.strip() for line in (folder / "files.out").read_text().splitlines() if line.strip().startswith("coord-")]
        shutil.copy(folder / f"{names[0]}.com", Path(spare, "mol.gjf"))
        dx = re.search(r"^dx= *(\S+)", (folder / "files.out").read_text(), re.M).group(1)
        Path(spare, "control").write_text(f"&control fxyz='mol.gjf', dx={dx}, symm=F, std_orient=F /\n")
        subprocess.run([os.environ.get("PROGRAM", "displacement_generator"), "control"], cwd=spare, check=True)
        return assemble(Path(spare, "PES-0"), jobs)[1]


def compare(name, ours, others, limit):
    print(f"{name:>4}" + "".join(f"{frequency:12.4f}" for frequency, _ in others))
    difference = max((abs(a[0] - b[0]) for a, b in zip(ours, others)), default=0.0)
    intensity = max((abs(a[1] - b[1]) for a, b in zip(ours, others)), default=0.0)
    agrees = difference <= limit and len(ours) == len(others)
    print(f"largest difference from '{name}': {difference:.6f} cm-1 ({'agrees' if agrees else 'DISAGREES'}: {limit} allowed), "
          f"{intensity:.4f} km/mol")
    return agrees


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder", type=Path, help="where displacement_generator ran, or the PES-0 that it wrote")
    parser.add_argument("--all", action="store_true", help="compute the derived points too, and compare")
    parser.add_argument("--hess", action="store_true", help="compare with the Hessian that xtb makes itself")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="calculations at a time (all processors)")
    options = parser.parse_args()
    if options.jobs < 1:
        parser.error(f"--jobs {options.jobs}: at least 1")
    folder = options.folder / "PES-0" if (options.folder / "PES-0").is_dir() else options.folder
    if not (folder / "files.out").is_file():
        parser.error(f"{folder}/files.out: not found; run displacement_generator first")
    table, ours = assemble(folder, options.jobs)
    print(table, end="")
    agree = True
    if options.all:
        agree = compare("all", ours, compute_all(folder, options.jobs), SAME)
    if options.hess:
        reference = next(folder.glob("coord-*0-00.com"))
        own = sorted(own_modes(reference), key=lambda mode: abs(mode[0]))[-len(ours):]  # without rigid motions, near zero
        agree = compare("own", ours, sorted(own), CLOSE) and agree
    return 0 if agree else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (OSError, subprocess.CalledProcessError) as error:
        sys.exit(str(error))
