#!/usr/bin/env python3
"""Draws the wood of this example, wood.shp and its companions, into the folder of this script.

    /usr/bin/python3 examples/wood/draw_wood.py

A lattice of stands is bent, and each side that two stands share is broken into a wandering line, so
that they neither overlap nor gape. Left out are the corners, bites of the edge and two clearings.
Three stands lie round a pond, six have two parts, two have no height. Needs numpy and GDAL.
"""

from pathlib import Path

import numpy as np
from osgeo import ogr, osr

ROWS, COLUMNS = 9, 15
STAND_EAST, STAND_NORTH = 68.0, 66.0  # [m]
CENTRE_LONGITUDE, CENTRE_LATITUDE = 9.25, 52.0  # of the case
UTM_32_NORTH = 32632

CLEARINGS = {(4, 3), (4, 4), (6, 10), (7, 10), (6, 11)}  # row from the south, column from the west
BITES = {(0, 0), (0, 1), (1, 0), (0, 6), (0, 7), (0, 13), (0, 14), (1, 14), (2, 14), (3, 0)}
BITES |= {(7, 0), (8, 0), (8, 1), (8, 2), (7, 1), (8, 8), (8, 9), (8, 13), (8, 14), (7, 14)}
PONDS = {(2, 5), (5, 7), (6, 4)}
TWO_PARTS = {  # the second part belongs to the stand of the first
    (1, 3): (3, 5),
    (2, 9): (5, 9),
    (3, 12): (6, 13),
    (7, 5): (7, 7),
    (1, 9): (1, 11),
    (5, 2): (7, 3),
}
FELLED = {(3, 8), (2, 11)}
COPSES = {(-690, -120): 34, (-640, 230): 26, (700, 190): 40, (640, -330): 30, (850, -60): 22}
TREES = (("spruce", 22.0, 28.0), ("beech", 18.0, 24.0), ("pine", 14.0, 20.0), ("young", 6.0, 11.0))
FREQUENT = (0.45, 0.25, 0.2, 0.1)


def bent(corners):
    """Lattice points moved along long waves: the outline and the rides wander."""
    east, north = corners[..., 0], corners[..., 1]
    moved = np.empty_like(corners)
    moved[..., 0] = east + 38 * np.sin(north / 105 + 0.4) + 18 * np.sin(east / 140 + north / 90)
    moved[..., 1] = north + 42 * np.sin(east / 150) + 20 * np.cos(east / 75 + north / 120 + 1)
    return moved


def wandering(start, end, random, depth=3):
    """Points from start to end without end: halves, each middle moved by up to a tenth across."""
    if depth == 0:
        return [start]
    along = end - start
    across = np.array((-along[1], along[0]))
    middle = 0.5 * (start + end) + random.uniform(-0.12, 0.12) * across
    first = wandering(start, middle, random, depth - 1)
    return first + wandering(middle, end, random, depth - 1)


def loop(centre, radius, random, points=24):
    """A closed outline about a centre whose radius varies by a third."""
    angle = np.linspace(0, 2 * np.pi, points, endpoint=False)
    phases = random.uniform(0, 2 * np.pi, 3)
    waves = sum(np.sin(n * angle + p) / n for n, p in zip((2, 3, 5), phases))
    distance = radius * (1 + 0.2 * waves)
    return centre + np.stack((distance * np.cos(angle), distance * np.sin(angle)), axis=1)


def stand_outlines(random):
    """Row and column of every stand with its outline, counterclockwise."""
    n, e = np.mgrid[0 : ROWS + 1, 0 : COLUMNS + 1]
    corners = np.stack(((e - COLUMNS / 2) * STAND_EAST, (n - ROWS / 2) * STAND_NORTH), axis=-1)
    corners += random.uniform(-13, 13, corners.shape)
    corners = bent(corners)
    eastward = {
        (r, c): wandering(corners[r, c], corners[r, c + 1], random)
        for r in range(ROWS + 1)
        for c in range(COLUMNS)
    }
    northward = {
        (r, c): wandering(corners[r, c], corners[r + 1, c], random)
        for r in range(ROWS)
        for c in range(COLUMNS + 1)
    }
    outlines = {}
    for r, c in np.ndindex(ROWS, COLUMNS):
        back_west = [corners[r + 1, c + 1]] + eastward[r + 1, c][:0:-1]
        back_south = [corners[r + 1, c]] + northward[r, c][:0:-1]
        outlines[r, c] = np.array(eastward[r, c] + northward[r, c + 1] + back_west + back_south)
    return outlines


def polygon(rings, origin):
    """The first ring bounds, the others are holes."""
    shape = ogr.Geometry(ogr.wkbPolygon)
    for points in rings:
        ring = ogr.Geometry(ogr.wkbLinearRing)
        for east, north in np.round(points + origin, 2):
            ring.AddPoint_2D(east, north)
        ring.CloseRings()
        shape.AddGeometry(ring)
    return shape


def stands(random, origin):
    """Shapes of all stands, and whether they are without height."""
    outlines = stand_outlines(random)
    second_parts = set(TWO_PARTS.values())

    def part(at):
        rings = [outlines[at]]
        if at in PONDS:
            rings.append(loop(outlines[at].mean(axis=0), 17, random))
        return polygon(rings, origin)

    for at in outlines:
        if at in CLEARINGS | BITES | second_parts:
            continue
        shape = part(at)
        if at in TWO_PARTS:
            both = ogr.Geometry(ogr.wkbMultiPolygon)
            both.AddGeometry(shape)
            both.AddGeometry(part(TWO_PARTS[at]))
            shape = both
        yield shape, at in FELLED
    for place, radius in COPSES.items():
        yield polygon([loop(np.array(place, float), radius, random)], origin), False


def main():
    ogr.UseExceptions()
    osr.UseExceptions()
    degrees, utm = osr.SpatialReference(), osr.SpatialReference()
    degrees.ImportFromEPSG(4326)
    degrees.SetAxisMappingStrategy(osr.OAMS_TRADITIONAL_GIS_ORDER)
    utm.ImportFromEPSG(UTM_32_NORTH)
    to_utm = osr.CoordinateTransformation(degrees, utm)
    origin = np.array(to_utm.TransformPoint(CENTRE_LONGITUDE, CENTRE_LATITUDE)[:2])

    driver = ogr.GetDriverByName("ESRI Shapefile")
    path = Path(__file__).resolve().parent / "wood.shp"
    if path.exists():
        driver.DeleteDataSource(str(path))
    source = driver.CreateDataSource(str(path))
    layer = source.CreateLayer("wood", utm, ogr.wkbPolygon, ["DBF_DATE_LAST_UPDATE=2026-01-01"])
    layer.CreateField(ogr.FieldDefn("STAND", ogr.OFTInteger))
    trees_column = ogr.FieldDefn("TREES", ogr.OFTString)
    trees_column.SetWidth(10)
    layer.CreateField(trees_column)
    height_column = ogr.FieldDefn("H", ogr.OFTReal)
    height_column.SetWidth(6)
    height_column.SetPrecision(1)
    layer.CreateField(height_column)

    random = np.random.default_rng(20)
    for number, (shape, felled) in enumerate(stands(random, origin)):
        trees, lowest, highest = TREES[random.choice(len(TREES), p=FREQUENT)]
        feature = ogr.Feature(layer.GetLayerDefn())
        feature["STAND"] = number
        feature["TREES"] = "felled" if felled else trees
        if not felled:
            feature["H"] = round(random.uniform(lowest, highest), 1)
        feature.SetGeometry(shape)
        layer.CreateFeature(feature)


if __name__ == "__main__":
    main()
