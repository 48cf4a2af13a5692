#!/usr/bin/env python3
"""From any frame to the displaced inputs: whole_way.py PREPARER GENERATOR

Every example is turned and moved at random, its atoms shaken a little, and given to the preparer as an xyz file. The
generator must take what comes out and compute as many displacements as the preparer says, never more than for the
example as it stands; distances between atoms must be those of the source within twice the largest move; and what was
prepared must stay as it is when it is prepared again.
"""
import math
import pathlib
import random
import re
import subprocess
import sys
import tempfile

preparer, generator = (str(pathlib.Path(p).resolve()) for p in sys.argv[1:3])
examples = pathlib.Path(__file__).resolve().parents[2] / "examples"
# Displacements to compute in the best frame, worked out from the point group by hand: the mean, over the operations that
# lie on the axes, of 2 x (directions an atom in its place keeps) summed over the atoms left in their place.
FEWEST = {
    "water": 9, "benzene": 18, "ethylene": 9, "fullerene-c60": 51, "formaldehyde": 13,
    "hydrogen-peroxide": 12, "hypochlorous-acid": 15, "bromochlorofluoromethane": 30,
}
random.seed(12)
wrong = []


def random_rotation():
    a, b, c, d = (random.gauss(0, 1) for _ in range(4))
    n = math.sqrt(a * a + b * b + c * c + d * d)
    a, b, c, d = a / n, b / n, c / n, d / n
    return [[a * a + b * b - c * c - d * d, 2 * (b * c - a * d), 2 * (b * d + a * c)],
            [2 * (b * c + a * d), a * a - b * b + c * c - d * d, 2 * (c * d - a * b)],
            [2 * (b * d - a * c), 2 * (c * d + a * b), a * a - b * b - c * c + d * d]]


def atoms_of(text):
    """Atoms of an input as the generator writes and the preparer writes it: after the third section's first line."""
    lines = text.split("\n\n")[2].splitlines()[1:]
    return [(w[0], [float(v) for v in w[1:4]]) for w in map(str.split, lines) if w]


def generated(folder, name):
    (folder / "control").write_text(f"&control fxyz='{name}' /\n")
    done = subprocess.run([generator, "control"], cwd=folder, capture_output=True, text=True, timeout=120)
    if done.returncode != 0 or done.stdout or done.stderr:
        return f"the generator says {done.stdout + done.stderr!r}"
    return len(list((folder / "PES-0").glob("*.com"))) - 1


def prepared(arguments, folder):
    return subprocess.run([preparer, *arguments], cwd=folder, capture_output=True, text=True, timeout=120)


def distances(atoms):
    return [math.dist(a[1], b[1]) for i, a in enumerate(atoms) for b in atoms[:i]]


def check(name, example, noise):
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        atoms = atoms_of((example / "mol.gjf").read_text())
        turn, move = random_rotation(), [random.uniform(-5, 5) for _ in range(3)]
        source = [(s, [sum(turn[i][j] * x[j] for j in range(3)) + move[i] + random.uniform(-noise, noise) for i in range(3)])
                  for s, x in atoms]
        (folder / "mol.xyz").write_text(f"{len(source)}\n\n" + "".join(f"{s} {x[0]:.10f} {x[1]:.10f} {x[2]:.10f}\n" for s, x in source))
        done = prepared(["--route", "#p hf/3-21g", "--multiplicity", "1", "-o", "out.gjf", "mol.xyz"], folder)
        if done.returncode != 0:
            return [done.stderr]
        problems = []
        now = int(re.search(r"^(\d+) of \d+ displacements", done.stderr, re.M).group(1))
        moved = float(re.search(r"by more than ([\d.]+) angstrom", done.stderr).group(1))
        text = (folder / "out.gjf").read_text()
        result = atoms_of(text)
        if [a[0] for a in result] != [a[0] for a in atoms]:
            problems.append("other atoms, or in another order")
        difference = max((abs(a - b) for a, b in zip(distances(source), distances(result))), default=0)
        if difference > 2 * moved + 1e-9:
            problems.append(f"a distance differs by {difference}, no atom moved by more than {moved}")
        if name in FEWEST and now != FEWEST[name]:
            problems.append(f"expected {FEWEST[name]} displacements, found {now}")
        written = generated(folder, "out.gjf")
        if written != now:
            problems.append(f"{now} displacements promised, generated: {written}")
        original = folder / "original"
        original.mkdir()
        (original / "mol.gjf").write_text((example / "mol.gjf").read_text())
        before = generated(original, "mol.gjf")
        if isinstance(before, int) and now > before:
            problems.append(f"{now} displacements, {before} as the example stands")
        again = prepared(["out.gjf"], folder)
        if again.stdout != text:
            problems.append("prepared again it is another one")
        return problems


count = 0
for example in sorted(path.parent for path in examples.glob("*/mol.gjf")):
    for noise in (0.0, 1e-4, 1e-3):
        count += 1
        wrong += [f"{example.name}, noise {noise}: {problem}" for problem in check(example.name, example, noise)]
for line in wrong:
    print(line)
print(f"{count} runs, {len(wrong)} problems")
sys.exit(1 if wrong or count < 30 else 0)
