"""Elevations on the points of a map, and the small holes in them.

A map holds values at points. Where pixels are at least half a step of the map wide, the value of
a point is that of the raster there, bilinear between the centres of pixels. Where they are smaller,
it is the mean over the cell of the map round the point, so that what is finer than the map does not
come in by chance; of a plane this mean is the value at the point.
"""

from __future__ import annotations

import math
from collections.abc import Iterator, Sequence
from dataclasses import dataclass

import numpy as np

from torvex.arrays import Array
from torvex.packages import need
from torvex.study.errors import StudyError
from torvex.study.map_grid import Centre, MapGrid
from torvex.study.raster import Raster, values_at

# A hole of more points than this to a side is no hole but a missing part of the map.
LARGEST_HOLE = 12
_MOST_FILLED = 0.02  # of the map
_ROWS = 400_000  # points worked on at a time


@dataclass(frozen=True)
class Elevation:
    values: Array  # [m], (rows going north, columns going east)
    filled: int  # points that were holes
    holes: int
    means: bool  # over the cells of the map


def row_blocks(grid: MapGrid, points_each: int = 1) -> Iterator[slice]:
    """Parts of the rows of a map, such that no more than a bearable number of places is held."""
    rows = max(1, _ROWS // (grid.n_lon * points_each))
    for first in range(0, grid.n_lat, rows):
        yield slice(first, min(first + rows, grid.n_lat))


def sub_cells(
    raster: Raster, grid: MapGrid, rows: slice, each: int, centre: Centre
) -> tuple[Array, Array]:
    """Columns and rows of the raster for `each` x `each` places, evenly spread over the cells round
    the points of some rows of a map: arrays (rows, n_lon, each^2). The corners of the cells are
    transformed exactly; within a cell the transformation is linear between them."""
    lon = grid.longitudes(-0.5, grid.n_lon + 1)
    lat = grid.latitudes(rows.start - 0.5, rows.stop - rows.start + 1)
    t, s = np.meshgrid((np.arange(each) + 0.5) / each, (np.arange(each) + 0.5) / each)
    t, s = t.ravel(), s.ravel()

    def inside(corner: Array) -> Array:
        c = corner[:, :, None]
        return (1 - t) * ((1 - s) * c[:-1, :-1] + s * c[:-1, 1:]) + t * (
            (1 - s) * c[1:, :-1] + s * c[1:, 1:]
        )

    longitude, latitude = np.meshgrid(lon, lat)
    column, row = raster.pixels(longitude, latitude, centre)
    return inside(column), inside(row)


def _mean_over_cells(raster: Raster, grid: MapGrid, rows: slice, centre: Centre) -> Array:
    factor, each = _division(raster, grid, centre)
    values = values_at(raster, *sub_cells(raster, grid, rows, each, centre), factor)
    return np.asarray(values.mean(axis=2))


def _division(raster: Raster, grid: MapGrid, centre: Centre) -> tuple[int, int]:
    """Pixels of a block, and places to each side of a cell, some four of such blocks wide."""
    ratio = math.sqrt(math.prod(grid.steps(centre))) / raster.step(centre)
    factor = max(1, int(ratio / 4))
    return factor, max(1, math.ceil(ratio / factor))


def _values_on_map(rasters: Sequence[Raster], grid: MapGrid, centre: Centre, means: bool) -> Array:
    values = np.full((grid.n_lat, grid.n_lon), np.nan)
    each = max(_division(raster, grid, centre)[1] for raster in rasters) if means else 1
    for rows in row_blocks(grid, each**2):
        part = values[rows]
        for raster in rasters:
            open_yet = ~np.isfinite(part)
            if not open_yet.any():
                break
            if means:
                found = _mean_over_cells(raster, grid, rows, centre)
            else:
                lon, lat = np.meshgrid(
                    grid.longitudes(), grid.latitudes(rows.start, rows.stop - rows.start)
                )
                found = values_at(raster, *raster.pixels(lon, lat, centre))
            part[open_yet] = (found * raster.unit)[open_yet]
    return values


def wants_means(rasters: Sequence[Raster], grid: MapGrid, centre: Centre) -> bool:
    """Whether the pixels are less than half a step of the map wide."""
    step = math.sqrt(math.prod(grid.steps(centre)))
    return rasters[0].step(centre) < 0.499 * step


def elevation_on_map(
    rasters: Sequence[Raster], grid: MapGrid, centre: Centre, rest: float | None = None
) -> Elevation:
    """Elevations with their small holes filled. What is larger becomes `rest`, where that is given
    (the sea), and is otherwise left as nan for the caller to refuse."""
    means = wants_means(rasters, grid, centre)
    values = _values_on_map(rasters, grid, centre, means)
    if not np.isfinite(values).any():
        raise StudyError(
            f"{', '.join(rasters[0].names)}: no value at any point of the map round "
            f"{centre.latitude:.5f} N, {centre.longitude:.5f} E; the raster lies elsewhere, or "
            "holds no data there"
        )
    holes, small = find_holes(values)
    if small.any():
        values = fill_smoothly(values, small)
    if rest is not None:
        values[~np.isfinite(values)] = rest
    return Elevation(values, int(small.sum()), holes, means)


def find_holes(values: Array) -> tuple[int, Array]:
    """Number of small holes, and their points: those that data surround, no wider than
    LARGEST_HOLE, and not so many that the map would be made up."""
    missing = ~np.isfinite(values)
    small = np.zeros(values.shape, bool)
    if not missing.any():
        return 0, small
    ndimage = need("scipy.ndimage")
    labels, count = ndimage.label(missing, structure=np.ones((3, 3)))
    holes = 0
    for number, place in enumerate(ndimage.find_objects(labels), start=1):
        inside = all(part.start > 0 and part.stop < size for part, size in zip(place, values.shape))
        if inside and all(part.stop - part.start <= LARGEST_HOLE for part in place):
            small[place] |= labels[place] == number
            holes += 1
    if small.sum() > _MOST_FILLED * values.size:
        return 0, np.zeros(values.shape, bool)
    return holes, small


def fill_smoothly(values: Array, holes: Array) -> Array:
    """Values in the holes that are the mean of their four neighbours: a plane stays a plane."""
    sparse = need("scipy.sparse")
    solve = need("scipy.sparse.linalg").spsolve
    number = np.full(values.shape, -1)
    number[holes] = np.arange(int(holes.sum()))
    j, i = np.nonzero(holes)
    rows, columns, right = [number[j, i]], [number[j, i]], np.zeros(j.size)
    entries = [np.full(j.size, 4.0)]
    for dj, di in ((-1, 0), (1, 0), (0, -1), (0, 1)):
        beside = number[j + dj, i + di]
        unknown = beside >= 0
        rows.append(number[j, i][unknown])
        columns.append(beside[unknown])
        entries.append(np.full(int(unknown.sum()), -1.0))
        right[~unknown] += values[j + dj, i + di][~unknown]
    matrix = sparse.csr_matrix(
        (np.concatenate(entries), (np.concatenate(rows), np.concatenate(columns))),
        shape=(j.size, j.size),
    )
    filled = values.copy()
    filled[holes] = solve(matrix, right)
    return filled


def no_data_report(values: Array, grid: MapGrid, centre: Centre) -> str:
    """Where points have no value: their share, and how far from the centre the nearest is."""
    missing = ~np.isfinite(values)
    lon, lat = np.meshgrid(grid.longitudes(), grid.latitudes())
    east, north = centre.east_north(lon[missing], lat[missing])
    n = int(np.argmin(np.hypot(east, north)))
    sideways, upwards = "east" if east[n] >= 0 else "west", "north" if north[n] >= 0 else "south"
    return (
        f"{int(missing.sum())} of {values.size} points ({100 * missing.mean():.1f} %) have no "
        f"data, the nearest {abs(east[n]):.0f} m {sideways} and {abs(north[n]):.0f} m {upwards} of "
        "the centre"
    )
