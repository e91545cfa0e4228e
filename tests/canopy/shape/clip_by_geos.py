#!/usr/bin/python3
"""Holds the clipper against GEOS: areas of random polygons in rectangles and of a layer of
polygons on the columns of an uneven mesh.

    clip_by_geos.py PROGRAM     ends with 77 where shapely is missing
"""

import math
import random
import subprocess
import sys
import tempfile
from pathlib import Path

try:
    from shapely.geometry import Polygon, box
    from shapely.strtree import STRtree
except ImportError as missing:
    print(f"skipped: {missing}; install python3-shapely")
    sys.exit(77)

POLYGONS = 10000
TOLERANCE = 1e-5


def star(rng, centre, radius, corners, snap):
    """A ring round a centre: concave, without crossings; some corners on lines of whole metres."""
    angles = sorted(rng.uniform(0, 2 * math.pi) for _ in range(corners))
    ring = []
    for angle in angles:
        r = radius * rng.uniform(0.3, 1)
        x, y = centre[0] + r * math.cos(angle), centre[1] + r * math.sin(angle)
        if rng.random() < snap:
            x, y = (round(x), y) if rng.random() < 0.5 else (x, round(y))
        ring.append((x, y))
        if rng.random() < 0.1:
            ring.append(ring[-1])
    return ring


def random_polygon(rng):
    """Outer ring, holes and the same for GEOS."""
    while True:
        centre = (rng.uniform(-12, 12), rng.uniform(-12, 12))
        radius = rng.choice([0.5, 3, 15])
        outer = star(rng, centre, radius, rng.randint(3, 20), 0.3)
        holes = []
        if rng.random() < 0.3:
            holes.append(star(rng, centre, 0.2 * radius, rng.randint(3, 8), 0))
        shape = Polygon(outer, holes)
        if shape.is_valid and shape.area > 0:
            if rng.random() < 0.5:
                outer = outer[::-1]
            return [outer, *holes], shape


def points_text(ring):
    return f"{len(ring)}\n" + "".join(f"{x!r} {y!r}\n" for x, y in ring)


def areas_of(program, mode, text):
    with tempfile.TemporaryDirectory() as directory:
        name = Path(directory) / "polygons.txt"
        name.write_text(text)
        done = subprocess.run([program, mode, str(name)], check=True, capture_output=True, text=True)
    return [float(line) for line in done.stdout.split()]


def compare_rectangles(program):
    rng = random.Random(2024)
    text, expected = [], []
    for _ in range(POLYGONS):
        rings, shape = random_polygon(rng)
        low = (rng.randint(-10, 5), rng.randint(-10, 5))
        high = (low[0] + rng.randint(1, 10), low[1] + rng.randint(1, 10))
        text.append(f"{low[0]} {low[1]} {high[0]} {high[1]} {len(rings)}\n")
        text.extend(points_text(ring) for ring in rings)
        expected.append(shape.intersection(box(*low, *high)).area)
    areas = areas_of(program, "rectangles", "".join(text))
    assert len(areas) == POLYGONS
    apart = [abs(a - e) for a, e in zip(areas, expected)]
    print(f"{POLYGONS} polygons, {sum(e > 0 for e in expected)} of them in their rectangle, "
          f"largest difference {max(apart):.1e} m2")
    return max(apart) <= TOLERANCE and sum(e > 0 for e in expected) > POLYGONS // 10


def near(tree, cell):
    """Polygons whose box meets that of the cell, in shapely 1 and 2."""
    return [tree.geometries[n] if hasattr(tree, "geometries") else n for n in tree.query(cell)]


def compare_mesh(program):
    rng = random.Random(7)
    # Steps of quarters: the lines are held in single precision.
    line = [-40.0]
    while line[-1] < 40:
        line.append(line[-1] + 0.25 * rng.randint(8, 24))
    polygons = []
    while len(polygons) < 300:
        centre = (rng.uniform(-45, 45), rng.uniform(-45, 45))
        ring = star(rng, centre, rng.choice([1, 6, 25]), rng.randint(3, 20), 0.2)
        if Polygon(ring).is_valid:
            polygons.append(ring)
    lines_text = f"{len(line)}\n" + "".join(f"{x!r}\n" for x in line)
    text = 2 * lines_text + "".join(points_text(ring) for ring in polygons)
    areas = areas_of(program, "mesh", text)
    cells = [box(line[i], line[j], line[i + 1], line[j + 1])
             for j in range(len(line) - 1) for i in range(len(line) - 1)]
    layer = STRtree([Polygon(ring) for ring in polygons])
    expected = [sum(cell.intersection(polygon).area for polygon in near(layer, cell))
                for cell in cells]
    apart = max(abs(a - e) for a, e in zip(areas, expected))
    print(f"{len(polygons)} polygons on {len(cells)} columns, largest difference {apart:.1e} m2")
    return len(areas) == len(cells) and apart <= TOLERANCE


sys.exit(0 if all([compare_rectangles(sys.argv[1]), compare_mesh(sys.argv[1])]) else 1)
