#!/usr/bin/env python3
"""The arbiter of the bytes: a second, independent account of one successful run.

    oracle.py CASE OUTDIR        write what the run of CASE leaves behind under OUTDIR
    oracle.py --check [CASE...]  compare expected/tree of the cases with a fresh computation (default: all)

It shares no code and no data with the program and aims at being easy to judge by eye, not at being fast or forgiving:
a faulty input ends in a traceback. Where the program turns vectors by matrices, this file flips signs and swaps axes;
where the program compares masses, this file compares symbols; numbers are rounded in exact decimal arithmetic.
"""

import argparse
import math
import re
import shutil
import struct
import sys
import tempfile
from decimal import ROUND_HALF_EVEN, Context, Decimal
from itertools import product
from pathlib import Path

CASES = Path(__file__).resolve().parent
WORK_DIR = "PES-0"

# 0.001 as a single-precision number: the distance within which two atoms count as being in one place, and the step when
# the control file gives none.
SINGLE_0_001 = struct.unpack("f", struct.pack("f", 0.001))[0]
FLATNESS = 1e-6

# The operations in their fixed order: which of x, y, z keep their sign and which change it.
SIGNS = {
    "E": (+1, +1, +1),
    "C2z": (-1, -1, +1),
    "C2y": (-1, +1, -1),
    "C2x": (+1, -1, -1),
    "I": (-1, -1, -1),
    "Sxy": (+1, +1, -1),
    "Szx": (+1, -1, +1),
    "Syz": (-1, +1, +1),
}
GROUP_ORDER = {"C1": 1, "CS": 2, "C2": 2, "C2V": 4, "D2H": 8, "CI": 2, "C2H": 4, "D2": 4}

QUARTER_TURNS = {
    "C4z": lambda x, y, z: (y, -x, z),
    "C4y": lambda x, y, z: (-z, y, x),
    "C4x": lambda x, y, z: (x, z, -y),
}

# A symbol's place is its atomic number, 0 being the dummy atom. Places 83 and 94 repeat Be and Ru, and the later place
# wins; there is no Bi and no Pu.
SYMBOLS = """
    X  H  He Li Be B  C  N  O  F    Ne Na Mg Al Si P  S  Cl Ar K    Ca Sc Ti V  Cr Mn Fe Co Ni Cu
    Zn Ga Ge As Se Br Kr Rb Sr Y    Zr Nb Mo Tc Ru Rh Pd Ag Cd In   Sn Sb Te I  Xe Cs Ba La Ce Pr
    Nd Pm Sm Eu Gd Tb Dy Ho Er Tm   Yb Lu Hf Ta W  Re Os Ir Pt Au   Hg Tl Pb Be Po At Rn Fr Ra Ac
    Th Pa U  Np Ru Am Cm Bk Cf Es   Fm
""".split()
ATOMIC_NUMBERS = {symbol: number for number, symbol in enumerate(SYMBOLS)}


# ---- text in -------------------------------------------------------------------------------------------------------


def read_text(path):
    """Bytes as characters, one to one: columns are counted in bytes."""
    return path.read_bytes().decode("latin-1")


def records(text):
    """The lines; LF and CR LF end a line, and so does the end of the file, or a last CR, when anything stands before it."""
    lines = re.split(r"\r?\n|\r\Z", text)
    return lines if lines[-1] else lines[:-1]


def number(field):
    return float(re.sub("[dD]", "e", field))


# ---- control file --------------------------------------------------------------------------------------------------

OPENING = re.compile(r"^[ \t]*&control(?=[ \t\r/!,]|$)", re.MULTILINE | re.IGNORECASE)
TOKEN = re.compile(
    r"""
    (?P<skipped> [ \t\r\n]+ | ![^\n]* )
  | (?P<text>    '(?:[^']|'')*' | "(?:[^"]|"")*" )
  | (?P<mark>    [=,/] )
  | (?P<word>    [^ \t\r\n=,/!'"]+ )
    """,
    re.VERBOSE,
)


def text_value(token):
    """What stands between the quotation marks, a doubled mark being one; 200 characters, trailing blanks dropped.

    A text may go on in the next line; the line end is no part of it.
    """
    mark = token[0]
    return re.sub(r"\r?\n", "", token[1:-1]).replace(mark * 2, mark)[:200].rstrip(" ")


def logical_value(token):
    return {"t": True, "true": True, "f": False, "false": False}[token.lower().strip(".")]


READ_VALUE = {
    "symm": logical_value,
    "std_orient": logical_value,
    "dx": number,
    "disp_sign": int,
    "fxyz": text_value,
    "qctype": text_value,
    "task": text_value,
}


def read_control(path):
    settings = dict(symm=True, std_orient=True, dx=SINGLE_0_001, disp_sign=-1, fxyz="")
    text = read_text(path)
    matches = TOKEN.finditer(text, OPENING.search(text).end())
    tokens = (match.group() for match in matches if match.lastgroup != "skipped")
    for token in tokens:
        if token == "/":
            return settings
        if token == ",":
            continue
        key, equals, value = token.lower(), next(tokens), next(tokens)
        assert equals == "=", key
        if value == "/":
            return settings
        if value != ",":  # a value left out keeps what was there
            settings[key] = READ_VALUE[key](value)
    raise ValueError("the group is not closed")


# ---- Gaussian input ------------------------------------------------------------------------------------------------


class Molecule:
    """symbols and coords of the atoms; head and tail are the lines before and after the atom lines."""

    def __init__(self, path):
        whole = records(read_text(path))
        lines = [line[:200] for line in whole]  # what is looked at; up to 500 columns are copied
        blank = [line.strip(" ") == "" for line in lines]

        route = max(n for n, line in enumerate(lines) if line.lstrip(" ").startswith("#"))
        title = blank.index(True, route + 1) + 1
        charge = blank.index(True, title + 1) + 1  # the first title line may be blank without ending the title
        first = charge + 1
        end = (blank + [True]).index(True, first)  # the end of the file ends the atoms as well

        copied = [line[:500].rstrip(" ") for line in whole]
        self.head, self.tail = copied[:first], copied[end:]
        self.symbols, self.coords = [], []
        for line in lines[first:end]:
            # Fields lie between commas or runs of blanks and tabs; "/" ends the line.
            symbol, *numbers = re.split(r"[ \t]*,[ \t]*|[ \t]+", line.split("/")[0].strip(" \t"))
            symbol = re.sub(r"^(['\"])(.*)\1$", r"\2", symbol)
            self.symbols.append(symbol[:2])
            self.coords.append(tuple(number(field) for field in numbers[:3]))


def atomic_number(symbol):
    """0 for the dummy atom and for a symbol that is not in the table."""
    first, second = symbol[:1], symbol[1:]
    first = first.upper()
    if second.isupper():
        second = first.lower()  # not its own lower case: "CL" becomes "Cc", which is nothing
    return ATOMIC_NUMBERS.get(first + second, 0)


def kind(symbol):
    """Equal for two atoms that an operation may exchange. (A mass follows from its atomic number and tells no more.)"""
    return atomic_number(symbol) or symbol


# ---- symmetry ------------------------------------------------------------------------------------------------------


def images(signs, kinds, coords):
    """For each atom the atom that it is carried onto, or None when an atom is carried onto no atom.

    Every operation undoes itself, so a match is noted for both atoms. Atoms on top of one another make a later match
    overwrite an earlier one, which is why this is a loop over the atoms in their order.
    """
    image = [None] * len(coords)
    for i, here in enumerate(coords):
        target = [sign * c for sign, c in zip(signs, here)]
        for j, there in enumerate(coords):
            dx, dy, dz = (t - c for t, c in zip(target, there))
            if kinds[i] == kinds[j] and math.sqrt(dx * dx + dy * dy + dz * dz) <= SINGLE_0_001:
                image[i], image[j] = j, i
                break
        else:
            return None
    return image


def find_operations(kinds, coords):
    """The operations that leave the molecule as it is, in their order, each with its images."""
    found = {name: images(signs, kinds, coords) for name, signs in SIGNS.items()}
    return {name: image for name, image in found.items() if image is not None}


def group_and_turn(present):
    """The point group, and the quarter turn into its standard orientation: the first rule that holds."""
    if len(present) == 1:
        return "C1", None
    if len(present) == 8:
        return "D2H", None
    if len(present) == 2:
        return next(
            (group, turn)
            for operation, group, turn in (
                ("Syz", "CS", "C4y"),
                ("Szx", "CS", "C4x"),
                ("Sxy", "CS", None),
                ("I", "CI", None),
                ("C2x", "C2", "C4y"),
                ("C2y", "C2", "C4x"),
                ("C2z", "C2", None),
            )
            if operation in present
        )
    # Four operations, or a set that is no group and exists only through the tolerance.
    turn = "C4x" if "C2y" in present else "C4y" if "C2x" in present else None
    if "I" in present:
        return "C2H", turn
    if "Syz" in present or "Szx" in present:
        return "C2V", turn
    return "D2", None


def turned(coords, turn):
    """The turn sums products from 0.0 on, so no turned coordinate is -0.0; adding 0.0 does the same."""
    return [tuple(c + 0.0 for c in QUARTER_TURNS[turn](*xyz)) for xyz in coords]


def into_yz_plane(coords):
    flat_y, flat_z = (all(abs(xyz[axis]) <= FLATNESS for xyz in coords) for axis in (1, 2))
    if flat_y:
        coords = turned(coords, "C4z")
    if flat_z:
        coords = turned(coords, "C4y")
    return coords


def standard_orientation(group, turn, coords):
    if turn:
        coords = turned(coords, turn)
    if group == "C2V":
        coords = into_yz_plane(into_yz_plane(coords))
    return coords


def sources(natom, operations):
    """For each point (atom, axis, step) the computed point it follows from and the operation that leads there.

    Points are visited in ascending order. One that nothing has reached yet is computed, and reaches what its operations
    make of it: an operation keeps the axis, swaps the steps where it changes the sign, and goes from an atom to those
    that it carries onto this atom. Which step is the positive one makes no difference.
    """
    source = {}
    for atom, axis, step in product(range(natom), range(3), range(2)):
        point = atom, axis, step
        if point in source:
            continue
        source[point] = point, "E"
        for name, image in operations.items():
            if name == "E":
                continue
            other_step = step if SIGNS[name][axis] > 0 else 1 - step
            for other in range(atom, natom):
                if image[other] == atom:
                    source.setdefault((other, axis, other_step), (point, name))
    return source


# ---- text out ------------------------------------------------------------------------------------------------------


def text(value, width):
    return value[:width].rjust(width)


def integer(value, width):
    digits = str(value)
    return digits.rjust(width) if len(digits) <= width else "*" * width


def real(value, width, decimals):
    """Fixed notation. The exact binary value is rounded, a tie to the even digit; the sign of a zero is kept."""
    exact = Context(prec=400, rounding=ROUND_HALF_EVEN)
    digits = format(Decimal(value).quantize(Decimal(1).scaleb(-decimals), context=exact), "f")
    return digits.rjust(width) if len(digits) <= width else "*" * width


def geometry(molecule, coords):
    atoms = [
        text(f"{symbol:2}", 5) + " " * 11 + "".join(real(c, 14, 8) for c in xyz)
        for symbol, xyz in zip(molecule.symbols, coords)
    ]
    return [*molecule.head, *atoms, *molecule.tail, ""]


def info_block(molecule, group, operations, shown, tags, source):
    """tags: the reference's, then one for each point; shown: the name that an operation goes by in the listing."""
    natom, names = len(molecule.symbols), list(operations)
    ncalc = sum(point == origin for point, (origin, _) in source.items())

    yield "Begin_vesk_info"
    yield "Point          group:" + text(group, 10)
    yield "Number of operations:" + integer(GROUP_ORDER[group], 10)  # the group's order, whatever was found
    yield "Operation     matrix:"
    for n, name in enumerate(names, start=1):
        yield "Operation" + integer(n, 10) + text(shown[name], 10)
        for row in range(3):
            yield "".join(real(SIGNS[name][row] if row == column else 0, 15, 9) for column in range(3))

    yield "Atom correspondance:"
    yield "".join(text(word, 8) for word in ("n", "symbol", "nat", *(shown[name] for name in names)))
    for i, symbol in enumerate(molecule.symbols):
        onto = "".join(integer(operations[name][i] + 1, 8) for name in names)
        yield integer(i + 1, 8) + text(f"{symbol:2}", 8) + integer(atomic_number(symbol), 8) + onto

    yield "Total         points:" + integer(6 * natom, 10)
    yield "Calculated    points:" + integer(ncalc, 10)
    yield text("n", 8) + "  " + "".join(text(word, 8) for word in ("file", "is_calc", "m", "num(op)", "op"))
    yield row_of_point(0, tags[0], True, 0, 1, "E")
    for point, (origin, name) in sorted(source.items()):
        n = 1 + 6 * point[0] + 2 * point[1] + point[2]
        m = 1 + 6 * origin[0] + 2 * origin[1] + origin[2]
        yield row_of_point(n, tags[n], n == m, m, names.index(name) + 1, shown[name])
    yield "End_vesk_info"


def row_of_point(n, tag, computed, m, operation, name):
    return (
        integer(n, 8)
        + "  "
        + f"{tag[:8]:8}"
        + text("T" if computed else "F", 8)
        + integer(m, 8)
        + integer(operation, 8)
        + text(name, 8)
    )


# ---- the run -------------------------------------------------------------------------------------------------------


def run(case):
    """The files of the run: path -> lines."""
    arguments = case / "args"
    control = records(read_text(arguments))[0] if arguments.exists() else "control"
    settings = read_control(case / control)
    molecule = Molecule(case / settings["fxyz"])
    natom, coords, dx = len(molecule.symbols), molecule.coords, settings["dx"]

    if settings["symm"]:
        kinds = [kind(symbol) for symbol in molecule.symbols]
        # The group rests on the orientation as given, operations and images on the one that is written.
        group, turn = group_and_turn(find_operations(kinds, coords))
        if settings["std_orient"]:
            coords = standard_orientation(group, turn, coords)
        operations = find_operations(kinds, coords)
        shown = {name: name for name in operations}
    else:
        group, operations, shown = "C1", {"E": range(natom)}, {"E": "E  "}
    source = sources(natom, operations)
    computed = [point for point in sorted(source) if source[point][0] == point]

    # Steps are always minus dx, then plus dx; disp_sign only labels them.
    labels = "+-" if settings["disp_sign"] == 1 else "-+"
    digits = len(str(natom))
    tags = {(a, x, s): f"{a + 1:0{digits}}{labels[s]}d{'xyz'[x]}" for a, x, s in sorted(source)}
    reference = f"{0:0{digits}}-00"

    listed = [(reference, coords)]
    for point in computed:
        atom, axis, step = point
        moved = [list(xyz) for xyz in coords]
        moved[atom][axis] += (-1, +1)[step] * dx
        listed.append((tags[point], moved))

    files = {f"{WORK_DIR}/coord-{tag}.com": geometry(molecule, xyz) for tag, xyz in listed}
    files[f"{WORK_DIR}/files.out"] = [
        "Number of atoms: " + integer(natom, 6),
        "Number of files: " + integer(len(listed), 6),
        "dx=" + real(dx, 10, 6),
        *(text("coord-" + tag, 30) for tag, _ in listed),
        *info_block(molecule, group, operations, shown, [reference, *tags.values()], source),
    ]
    return files


def write_tree(case, outdir):
    """outdir: what was there before the run, with the run's files over it."""
    outdir.mkdir(parents=True, exist_ok=True)
    if (case / "before").exists():
        shutil.copytree(case / "before", outdir, dirs_exist_ok=True)
    for name, lines in run(case).items():
        path = outdir / name
        path.parent.mkdir(exist_ok=True)
        path.write_bytes("".join(line + "\n" for line in lines).encode("latin-1"))


# ---- checking ------------------------------------------------------------------------------------------------------


def tree(root):
    return {str(path.relative_to(root)): path.read_bytes() for path in root.rglob("*") if path.is_file()}


def differences(case):
    """What is wrong with the case's expected folder, one line each."""
    expected = case / "expected"
    for stream in ("stdout", "stderr"):
        if (expected / stream).read_bytes():
            yield f"{case.name}/expected/{stream}: a successful run prints nothing"
    with tempfile.TemporaryDirectory() as scratch:
        write_tree(case, Path(scratch))
        fresh, stored = tree(Path(scratch)), tree(expected / "tree")
    for name in sorted(fresh.keys() | stored.keys()):
        place = f"{case.name}/expected/tree/{name}"
        if name not in stored:
            yield f"{place}: missing"
        elif name not in fresh:
            yield f"{place}: the run does not make it"
        elif fresh[name] != stored[name]:
            pairs = zip(fresh[name].split(b"\n"), stored[name].split(b"\n"))
            line = next((n for n, (ours, theirs) in enumerate(pairs, start=1) if ours != theirs), "end")
            yield f"{place}:{line}: differs"


def check(cases):
    cases = [case for case in cases if (case / "expected" / "status").read_text() == "0\n"]
    wrong = [line for case in cases for line in differences(case)]
    print(*wrong, f"{len(cases)} cases checked, {len(wrong)} differences", sep="\n")
    return 1 if wrong or not cases else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--check", action="store_true", help="compare instead of write")
    parser.add_argument("paths", nargs="*", type=Path, metavar="PATH")
    arguments = parser.parse_args()
    if arguments.check:
        every_case = (path.parent.parent for path in CASES.glob("*/expected/status"))
        return check(sorted(arguments.paths or every_case))
    if len(arguments.paths) != 2:
        parser.error("expected CASE and OUTDIR")
    write_tree(*arguments.paths)
    return 0


if __name__ == "__main__":
    sys.exit(main())
