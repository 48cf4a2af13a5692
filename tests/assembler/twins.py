"""A small model in place of Gaussian, for the Python tests of this folder: what a job prints and what it takes for granted.

Every atom hangs on a spring of its own and on one to each other atom, so that no force is zero by accident; the dipole moment is linear.
"""
import pathlib
import subprocess

BOHR = 0.529177210903  # angstrom
OWN_SPRING, PAIR_SPRING = 0.3, 0.05  # hartree/bohr^2
CHARGES = {"H": 0.3, "C": 0.1, "O": -0.6}  # e
NUMBERS = {"H": 1, "C": 6, "O": 8}
WATER = "#p hf/3-21g force nosymm\n\nwater\n\n0 1\nO 0 0 0.4\nH 0 0.75 -0.2\nH 0 -0.75 -0.2\n\n"


def generate(generator, folder, molecule=WATER, settings=""):
    """Runs the generator on an input. Result: the names in the list, the reference first."""
    (folder / "mol.gjf").write_text(molecule)
    (folder / "control").write_text(f"&control fxyz='mol.gjf', dx=0.005 {settings} /\n")
    subprocess.run([generator, "control"], cwd=folder, check=True)
    lines = (folder / "PES-0" / "files.out").read_text().split("Begin_vesk_info")[0].splitlines()
    return [line.strip() for line in lines if line.strip().startswith("coord-")]


def read_geometry(path):
    """Symbols, and coordinates in angstrom."""
    atoms = [line.split() for line in path.read_text().splitlines() if line[:3] == "   " and len(line.split()) == 4]
    return [atom[0] for atom in atoms], [[float(x) for x in atom[1:]] for atom in atoms]


def compute(at, reference, symbols):
    """Energy (hartree), forces (hartree/bohr) and dipole moment (e bohr). The mean displacement stands for all the springs between pairs."""
    moves = [[(x - x0) / BOHR for x, x0 in zip(a, b)] for a, b in zip(at, reference)]
    mean = [sum(move[k] for move in moves) / len(moves) for k in range(3)]
    forces = [[-OWN_SPRING * move[k] - PAIR_SPRING * (move[k] - mean[k]) for k in range(3)] for move in moves]
    energy = -76.0 - sum(f * x for force, move in zip(forces, moves) for f, x in zip(force, move)) / 2
    return energy, forces, [sum(CHARGES[s] * move[k] for s, move in zip(symbols, moves)) for k in range(3)]


def forces_text(symbols, at, energy, forces, dipole):
    rows = "".join("%.10f %.10f %.10f\n" % tuple(force) for force in forces)
    return "energy %.10f\ndipole %.8f %.8f %.8f\n" % (energy, *dipole) + rows


def log_text(symbols, at, energy, forces, dipole, route="#p hf/3-21g force nosymm", more=""):
    """`more` stands between geometry and forces, as Gaussian prints much there."""
    rule, dashes = " " + "-" * 69 + "\n", " " + "-" * 70 + "\n"
    text = " Entering Gaussian System, Link 0=g16\n" + dashes + f" {route}\n" + dashes + " Charge =  0 Multiplicity = 1\n"
    text += "                         Input orientation:                          \n" + rule
    text += " Center     Atomic      Atomic             Coordinates (Angstroms)\n"
    text += " Number     Number       Type             X           Y           Z\n" + rule
    for i, (symbol, x) in enumerate(zip(symbols, at)):
        text += "%7d %10d %11d    %12.6f%12.6f%12.6f\n" % (i + 1, NUMBERS[symbol], 0, *x)
    text += rule + more
    text += " SCF Done:  E(RHF) =  %.10f     A.U. after    9 cycles\n" % energy
    text += " Dipole        =" + "".join(("%15.8E" % x).replace("E", "D") for x in dipole) + "\n"
    text += rule + " Center     Atomic                   Forces (Hartrees/Bohr)\n"
    text += " Number     Number              X              Y              Z\n" + rule
    for i, (symbol, force) in enumerate(zip(symbols, forces)):
        text += "%7d %8d    %15.9f%15.9f%15.9f\n" % (i + 1, NUMBERS[symbol], *force)
    return text + rule + " Normal termination of Gaussian 16 at Mon Jan  1 00:00:00 2024.\n"


def compute_all(folder, names, text_of=forces_text, ending=".forces"):
    """Writes a result beside every input."""
    symbols, reference = read_geometry(folder / "PES-0" / f"{names[0]}.com")
    for name in names:
        at = read_geometry(folder / "PES-0" / f"{name}.com")[1]
        (folder / "PES-0" / (name + ending)).write_text(text_of(symbols, at, *compute(at, reference, symbols)))
