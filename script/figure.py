#!/usr/bin/env python3
"""Draws docs/displacements.svg: the displacements of ethylene, which are computed and which follow by symmetry.

    script/figure

Builds the program, runs it on examples/ethylene in a folder of its own, and draws what PES-0 then holds.
"""
import math
import shutil
import subprocess
import tempfile
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
EXAMPLE = "ethylene"
OUTPUT = TOP / "docs" / "displacements.svg"

SCALE = 168             # pixels for one unit of length
WIDTH, HEIGHT = 780, 500
CENTRE = 390, 236       # of the molecule, pixels
AZIMUTH, ELEVATION = math.radians(-71), math.radians(41)    # from where it is seen
ARROW = 0.36            # length of an arrow, far more than the real step
GAP = 0.035             # between the atom and the arrow

COMPUTED, DERIVED = "#c8500a", "#5b8fbd"
INK, QUIET, BOND = "#222222", "#5c5c5c", "#b3b3b3"
ATOMS = {"C": (0.185, "#4d4d4d", "#ffffff"), "H": (0.135, "#f2f2f2", "#222222")}     # radius, fill, number


def read(folder):
    """Symbols, coordinates, group, and for each point 1..6N its tag and whether it is computed."""
    lines = (folder / "files.out").read_text().splitlines()
    block = lines[lines.index("Begin_vesk_info"):]
    group = block[1].split()[-1]
    natom = int(lines[0].split()[-1])
    points = [row.split() for row in block[-1 - 6 * natom:-1]]
    reference = (folder / f"{lines[3].strip()}.com").read_text().splitlines()
    first = block.index("Atom correspondance:") + 2
    symbols = [row.split()[1] for row in block[first:first + natom]]
    rows = [line.split() for line in reference if len(line) == 58]
    assert [row[0] for row in rows] == symbols
    return symbols, [[float(c) for c in row[1:]] for row in rows], group, [(p[1], p[2] == "T") for p in points]


def project(point):
    """Screen x and y in pixels, and how near it is."""
    x, y, z = point
    sin_a, cos_a, sin_e, cos_e = math.sin(AZIMUTH), math.cos(AZIMUTH), math.sin(ELEVATION), math.cos(ELEVATION)
    across = -sin_a * x + cos_a * y
    up = -sin_e * (cos_a * x + sin_a * y) + cos_e * z
    near = cos_e * (cos_a * x + sin_a * y) + sin_e * z
    return CENTRE[0] + SCALE * across, CENTRE[1] - SCALE * up, near


def along(start, axis, length):
    end = list(start)
    end[axis] += length
    return end


def line(x1, y1, x2, y2, colour, width, extra=""):
    return (f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}" '
            f'stroke-width="{width}" stroke-linecap="round"{extra}/>')


def text(x, y, content, size, colour, anchor="start", extra=""):
    return (f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" fill="{colour}" text-anchor="{anchor}"{extra}>'
            f'{content}</text>')


def arrow(tail, tip, colour, width):
    """A shaft and a head; an arrow seen nearly end on gets a smaller head."""
    (x1, y1), (x2, y2) = tail, tip
    length = math.hypot(x2 - x1, y2 - y1)
    ux, uy = (x2 - x1) / length, (y2 - y1) / length
    head = min(4.2 * width, 0.55 * length)
    half = 0.42 * head
    bx, by = x2 - head * ux, y2 - head * uy
    corners = f"{x2:.1f},{y2:.1f} {bx - half * uy:.1f},{by + half * ux:.1f} {bx + half * uy:.1f},{by - half * ux:.1f}"
    return line(x1, y1, bx, by, colour, width) + f'<polygon points="{corners}" fill="{colour}"/>'


def bonds(symbols, xyz):
    for i, a in enumerate(xyz):
        for j in range(i):
            if math.dist(a, xyz[j]) < (1.2 if "H" in (symbols[i], symbols[j]) else 1.6):
                yield i, j


def draw(symbols, xyz, group, points):
    items = []      # (how near, SVG)
    for i, j in bonds(symbols, xyz):
        (x1, y1, n1), (x2, y2, n2) = project(xyz[i]), project(xyz[j])
        items.append((min(n1, n2) - 1.0, line(x1, y1, x2, y2, BOND, 9)))
    for i, (symbol, centre) in enumerate(zip(symbols, xyz)):
        radius, fill, ink = ATOMS[symbol]
        x, y, near = project(centre)
        items.append((near, f'<circle cx="{x:.1f}" cy="{y:.1f}" r="{radius * SCALE:.1f}" fill="{fill}" '
                            f'stroke="{INK}" stroke-width="1.2"/>'
                            + text(x, y + 5, i + 1, 15, ink, "middle", ' font-weight="600"')))
    labels = []
    for n, (tag, computed) in enumerate(points):
        i, axis, way = n // 6, n // 2 % 3, 1 if n % 2 else -1
        radius = ATOMS[symbols[i]][0] + GAP
        tail = along(xyz[i], axis, way * radius)
        tip = along(xyz[i], axis, way * (radius + ARROW))
        (x1, y1, n1), (x2, y2, n2) = project(tail), project(tip)
        colour, width = (COMPUTED, 4.2) if computed else (DERIVED, 2.6)
        items.append(((n1 + n2) / 2, arrow((x1, y1), (x2, y2), colour, width)))
        if computed:
            x, y, anchor = [(x2 - 9 * way, y2 - 12, "middle"),
                            (x2 + 5 * way, y2 + (2 if way > 0 else 9), "start" if way > 0 else "end"),
                            (x2 - 5, y2 - 8 if way > 0 else y2 + 13, "middle")][axis]
            labels.append(text(x, y, tag, 13, COMPUTED, anchor,
                               ' stroke="#ffffff" stroke-width="3.5" paint-order="stroke"'))
    svg = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" '
           f'viewBox="0 0 {WIDTH} {HEIGHT}" font-family="Helvetica, Arial, sans-serif">',
           f"<title>The displacements of {EXAMPLE}: computed and derived</title>",
           f'<rect width="{WIDTH}" height="{HEIGHT}" rx="6" fill="#ffffff"/>']
    svg += [drawn for _, drawn in sorted(items, key=lambda item: item[0])] + labels
    svg += legend(len(points), sum(computed for _, computed in points), group) + axes()
    return "\n".join([*svg, "</svg>", ""])


def legend(total, computed, group):
    left, top = 30, HEIGHT - 80
    return [text(left, top, f"{EXAMPLE}, {group[0]}<tspan font-size=\"12\" dy=\"3\">{group[1:].lower()}</tspan>", 18, INK),
            arrow((left, top + 24), (left + 40, top + 24), COMPUTED, 4.2),
            text(left + 50, top + 29, f"{computed} computed, each with its name", 14, COMPUTED),
            arrow((left, top + 48), (left + 40, top + 48), DERIVED, 2.6),
            text(left + 50, top + 53, f"{total - computed} derived by symmetry", 14, DERIVED)]


def axes():
    """The directions of x, y and z, in a corner."""
    corner, drawn = (WIDTH - 92, HEIGHT - 46), []
    for axis, name in enumerate("xyz"):
        x, y, _ = project(along((0.0, 0.0, 0.0), axis, 1.0))
        dx, dy = 0.33 * (x - CENTRE[0]), 0.33 * (y - CENTRE[1])
        length = math.hypot(dx, dy)
        drawn += [arrow(corner, (corner[0] + dx, corner[1] + dy), QUIET, 1.8),
                  text(corner[0] + dx * (1 + 10 / length), corner[1] + dy * (1 + 10 / length) + 5, name, 14, QUIET, "middle")]
    return drawn


def main():
    subprocess.run([TOP / "script" / "build", "release"], check=True)
    with tempfile.TemporaryDirectory() as scratch:
        for name in ("control", "mol.gjf"):
            shutil.copy(TOP / "examples" / EXAMPLE / name, scratch)
        subprocess.run([TOP / "build" / "release" / "bin" / "displacement_generator", "control"], cwd=scratch, check=True)
        OUTPUT.write_text(draw(*read(Path(scratch) / "PES-0")))


if __name__ == "__main__":
    main()
