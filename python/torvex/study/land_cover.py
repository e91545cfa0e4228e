"""Roughness lengths on the points of a map, from classes of land cover or from lengths.

What is averaged over the cell of the map round each point is R(z0) = 1/ln^2(10/z0), as a run does
everywhere.
"""

from __future__ import annotations

import csv
import math
from collections.abc import Iterator, Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from torvex.arrays import Array
from torvex.flow import roughness_mean, roughness_of_mean
from torvex.study.errors import StudyError
from torvex.study.map_grid import Centre, MapGrid
from torvex.study.raster import Raster, nearest_codes, nearest_values
from torvex.study.terrain import row_blocks, sub_cells

TABLES = Path(__file__).parent / "tables"
_OUTSIDE = -(2**40)  # no class has this number
LARGEST_Z0 = 10.0  # where R has its pole [m]


@dataclass(frozen=True)
class LandClass:
    """A row of a table."""

    code: int
    name: str
    z0: float  # roughness length [m]
    tree_height: float  # of a forest [m], 0 for all else
    floor_z0: float  # under the trees, where they stand as a canopy [m]
    source: str


def read_table(path: Path) -> dict[int, LandClass]:
    """A table with the columns code, z0 and source, and perhaps name, tree_height, floor_z0."""
    try:
        with path.open(newline="", encoding="utf-8-sig") as file:
            lines = [line for line in file if line.strip() and not line.startswith("#")]
    except (OSError, UnicodeDecodeError) as problem:
        raise StudyError(f"{path}: the table cannot be read: {problem}") from None
    rows = csv.DictReader(lines)
    lacking = {"code", "z0", "source"} - set(rows.fieldnames or ())
    if lacking:
        raise StudyError(f"{path}: the table has no column {', '.join(sorted(lacking))}")
    classes: dict[int, LandClass] = {}
    for row in rows:
        found = _class_of(path, row)
        if found.code in classes:
            raise StudyError(f"{path}: code {found.code} stands there twice")
        classes[found.code] = found
    if not classes:
        raise StudyError(f"{path}: the table has no row")
    return classes


def _class_of(path: Path, row: Mapping[str, str | None]) -> LandClass:
    def number(column: str, otherwise: float | None = None) -> float:
        word = (row.get(column) or "").strip()
        if not word and otherwise is not None:
            return otherwise
        try:
            return float(word)
        except ValueError:
            raise StudyError(
                f"{path}: code {row.get('code')}: {column} is {word!r}, expected a number"
            ) from None

    code = number("code")
    if code != int(code):
        raise StudyError(f"{path}: code {code} is no whole number")
    source = (row.get("source") or "").strip()
    if not source:
        raise StudyError(f"{path}: code {int(code)} has no source")
    z0 = number("z0")
    return LandClass(
        int(code),
        (row.get("name") or "").strip(),
        z0,
        number("tree_height", 0.0),
        number("floor_z0", z0),
        source,
    )


def known_tables() -> dict[str, Path]:
    return {path.stem: path for path in sorted(TABLES.glob("*.csv"))}


def table_of(name: str) -> Path:
    """A table of this package by its name, or a file."""
    known = known_tables()
    if name in known:
        return known[name]
    if not Path(name).is_file():
        raise StudyError(
            f"--table {name}: there is no such file, and no table of that name; known are "
            f"{', '.join(known)}"
        )
    return Path(name)


def _each(raster: Raster, grid: MapGrid, centre: Centre) -> int:
    """Places to each side of a cell of the map: two or more to a pixel."""
    step = math.sqrt(math.prod(grid.steps(centre)))
    return int(np.clip(math.ceil(2 * step / raster.step(centre)), 4, 16))


def codes_on_map(
    rasters: Sequence[Raster], grid: MapGrid, centre: Centre
) -> Iterator[tuple[slice, Array]]:
    """Classes at places spread evenly over the cells of the map: some of its rows, and the classes
    (rows, n_lon, places). Each cell has the same number of places, so that shares of places are
    shares of the cell."""
    each = _each(rasters[0], grid, centre)
    for rows in row_blocks(grid, each**2):
        codes = np.full((rows.stop - rows.start, grid.n_lon, each**2), _OUTSIDE, np.int64)
        for raster in rasters:
            left = codes == _OUTSIDE
            if not left.any():
                break
            column, row = sub_cells(raster, grid, rows, each, centre)
            codes[left] = nearest_codes(raster, column[left], row[left], _OUTSIDE)
        yield rows, codes


@dataclass(frozen=True)
class Cover:
    """What the classes of a map come to."""

    z0: Array  # [m], (rows going north, columns going east)
    trees: Array  # share of the cell under trees
    tree_height: Array  # mean height of these trees [m]
    counts: dict[int, int]  # places by class


def cover_on_map(
    rasters: Sequence[Raster],
    grid: MapGrid,
    centre: Centre,
    table: Mapping[int, LandClass],
    canopy: bool = False,
) -> Cover:
    """Roughness of the classes; with `canopy` that of the ground under the trees of a forest."""
    shape = (grid.n_lat, grid.n_lon)
    r, trees, height = np.zeros(shape), np.zeros(shape), np.zeros(shape)
    counts: dict[int, int] = {}

    for rows, codes in codes_on_map(rasters, grid, centre):
        present, position, number = np.unique(codes, return_inverse=True, return_counts=True)
        for code, n in zip(present.tolist(), number.tolist()):
            counts[code] = counts.get(code, 0) + n
        found = [table.get(code) for code in present.tolist()]
        lengths = np.array([_z0(land, canopy) if land else math.nan for land in found])
        tall = np.array([land.tree_height if land else 0.0 for land in found])
        with np.errstate(all="ignore"):
            r[rows] = roughness_mean(lengths)[position].reshape(codes.shape).mean(axis=2)
        heights = tall[position].reshape(codes.shape)
        trees[rows] = (heights > 0).mean(axis=2)
        height[rows] = heights.sum(axis=2) / np.maximum((heights > 0).sum(axis=2), 1)
    _refuse_classes(rasters, table, counts, canopy)
    return Cover(roughness_of_mean(r), trees, height, counts)


def _z0(land: LandClass, canopy: bool) -> float:
    return land.floor_z0 if canopy and land.tree_height > 0 else land.z0


def _refuse_classes(
    rasters: Sequence[Raster],
    table: Mapping[int, LandClass],
    counts: Mapping[int, int],
    canopy: bool,
) -> None:
    total = sum(counts.values())
    name = ", ".join(rasters[0].names)
    outside = counts.get(_OUTSIDE, 0)
    if outside:
        raise StudyError(
            f"{name}: {100 * outside / total:.2f} % of the map lies outside the land cover; name "
            "further tiles, or ask for a smaller area with --size"
        )
    unknown = {code: n for code, n in counts.items() if code not in table}
    if unknown:
        raise StudyError(
            f"{name}: classes that the table does not know: {_listed(unknown, total)}; give them a "
            "row in a table of your own, and name it with --table"
        )
    bad = {
        code: n
        for code, n in counts.items()
        if not 0 < _z0(table[code], canopy) < LARGEST_Z0  # a nan too
    }
    if bad:
        lengths = ", ".join(f"{code}: {_z0(table[code], canopy):g} m" for code in sorted(bad))
        raise StudyError(
            f"{name}: roughness lengths must be above 0 and below {LARGEST_Z0:g} m, the table has "
            f"{lengths}; of places there are {_listed(bad, total)}"
        )


def _listed(counts: Mapping[int, int], total: int) -> str:
    return ", ".join(
        f"{code} ({n} places, {100 * n / total:.2f} %)" for code, n in sorted(counts.items())
    )


def choose_table(rasters: Sequence[Raster], grid: MapGrid, centre: Centre) -> Path:
    """The table of this package that knows all classes of a map, WorldCover's before others."""
    seen: set[int] = set()
    for _, codes in codes_on_map(rasters, grid, centre):
        seen.update(np.unique(codes).tolist())
    seen.discard(_OUTSIDE)
    known = known_tables()
    for name in sorted(known, key=lambda name: name != "worldcover"):
        if seen <= set(read_table(known[name])):
            return known[name]
    raise StudyError(
        f"{', '.join(rasters[0].names)}: no table knows the classes "
        f"{', '.join(map(str, sorted(seen)[:40]))}; name one with --table (there are "
        f"{', '.join(known)}, and files of your own)"
    )


def lengths_on_map(rasters: Sequence[Raster], grid: MapGrid, centre: Centre) -> Array:
    """Roughness lengths of a raster that holds metres: means of R over the cells of the map."""
    each = _each(rasters[0], grid, centre)
    mean = np.zeros((grid.n_lat, grid.n_lon))
    bad: dict[str, int] = {}
    for rows in row_blocks(grid, each**2):
        z0 = np.full((rows.stop - rows.start, grid.n_lon, each**2), np.nan)
        for raster in rasters:
            left = ~np.isfinite(z0)
            if left.any():
                column, row = sub_cells(raster, grid, rows, each, centre)
                z0[left] = nearest_values(raster, column[left], row[left]) * raster.unit
        for word, where in (
            ("no data", ~np.isfinite(z0)),
            ("0 and less", z0 <= 0),
            (f"{LARGEST_Z0:g} m and more", z0 >= LARGEST_Z0),
        ):
            if where.any():
                bad[word] = bad.get(word, 0) + int(where.sum())
        with np.errstate(all="ignore"):
            mean[rows] = roughness_mean(z0).mean(axis=2)
    if bad:
        told = ", ".join(f"{word} at {n} places" for word, n in bad.items())
        raise StudyError(
            f"{', '.join(rasters[0].names)}: roughness lengths must be above 0 and below "
            f"{LARGEST_Z0:g} m everywhere; there is {told} of {mean.size * each**2}"
        )
    return roughness_of_mean(mean)
