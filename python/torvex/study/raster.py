"""Rasters of any kind that GDAL reads, and their values at places given in longitude and latitude.

Every place is transformed by PROJ itself; GDAL's warper is not used, since its approximations are
some tenths of a metre out on steep ground. Values stand at the centres of pixels. Tiles that share
a lattice are read as one mosaic, so that nothing is missing along their seams; where several
rasters cover a place, the one named first counts.
"""

from __future__ import annotations

import functools
import itertools
import math
from collections.abc import Callable, Sequence
from dataclasses import dataclass, replace
from pathlib import Path
from typing import Any

import numpy as np

from torvex.arrays import Array
from torvex.packages import need
from torvex.study.errors import StudyError
from torvex.study.map_grid import Centre

# Places that would need a larger window of pixels than this are divided.
_WINDOW = 16_000_000

_numbers = itertools.count(1)

_UNITS = {
    "m": 1.0,
    "metre": 1.0,
    "meter": 1.0,
    "metres": 1.0,
    "meters": 1.0,
    "ft": 0.3048,
    "foot": 0.3048,
    "feet": 0.3048,
    "international foot": 0.3048,
    "us-ft": 1200 / 3937,
    "ftus": 1200 / 3937,
    "us survey foot": 1200 / 3937,
    "us_survey_foot": 1200 / 3937,
    "foot_us": 1200 / 3937,
    "cm": 0.01,
    "dm": 0.1,
    "km": 1000.0,
}


def _gdal() -> Any:
    gdal = need("osgeo.gdal")
    gdal.UseExceptions()
    return gdal


def metres_of_unit(name: str) -> float | None:
    """Metres in a unit of length; None where the name is not known."""
    return _UNITS.get(name.strip().lower())


@dataclass(frozen=True)
class Raster:
    """A raster, or a mosaic of tiles of one lattice."""

    names: tuple[str, ...]  # as the user gave them
    dataset: Any  # osgeo.gdal.Dataset
    crs: Any  # pyproj.CRS
    pixel_of: tuple[float, ...]  # column, row of a position: inverse geotransform
    geotransform: tuple[float, ...]
    unit: float  # metres in a unit of the values
    unit_from: str  # where that is known from, for the report
    sources: tuple[Any, ...] = ()  # datasets of a mosaic, which it needs alive

    @property
    def size(self) -> tuple[int, int]:
        return self.dataset.RasterXSize, self.dataset.RasterYSize

    def step(self, centre: Centre) -> float:
        """Metres between pixels at the centre, the geometric mean of both directions."""
        column, row = self.pixels(np.array([centre.longitude]), np.array([centre.latitude]), centre)
        beside = []
        for dx, dy in ((1, 0), (0, 1)):
            x, y = self._position(column + dx, row + dy)
            lon, lat = self._to_degrees.transform(x, y)
            east, north = centre.east_north(centre.near(np.asarray(lon)), np.asarray(lat))
            beside.append(float(np.hypot(east, north)[0]))
        return math.sqrt(beside[0] * beside[1])

    def is_own_lattice(self, centre: Centre, reach: float) -> bool:
        """North up, in degrees of a datum that is WGS 84 to a centimetre."""
        g = self.geotransform
        if not (self.crs.is_geographic and g[1] > 0 and g[2] == g[4] == 0 and g[5] != 0):
            return False
        east, north = np.meshgrid((-reach, reach), (-reach, reach))
        per_longitude, per_latitude = centre.metres()
        lon = centre.longitude + east.ravel() / per_longitude
        lat = centre.latitude + north.ravel() / per_latitude
        x, y = self._from_degrees.transform(lon, lat)
        shift_east = (np.asarray(centre.near(np.asarray(x))) - lon) * per_longitude
        shift_north = (np.asarray(y) - lat) * per_latitude
        return bool(np.hypot(shift_east, shift_north).max() < 0.01)

    def lattice(self) -> tuple[tuple[float, float], tuple[float, float]]:
        """Centre of the first pixel and spacing [degrees], of a raster in degrees."""
        g = self.geotransform
        return (g[0] + g[1] / 2, g[3] + g[5] / 2), (g[1], abs(g[5]))

    def pixels(self, longitude: Array, latitude: Array, centre: Centre) -> tuple[Array, Array]:
        """Column and row of places [degrees], 0 at the centre of the first pixel."""
        x, y = self._from_degrees.transform(longitude, latitude)
        x, y = np.asarray(x, np.float64), np.asarray(y, np.float64)
        if self.crs.is_geographic:
            # The raster may count its longitudes from 0 or from -180.
            g = self.geotransform
            middle = g[0] + g[1] * self.size[0] / 2
            x = middle + (x - middle + 180) % 360 - 180
        i = self.pixel_of
        column = i[0] + i[1] * x + i[2] * y - 0.5
        row = i[3] + i[4] * x + i[5] * y - 0.5
        # A raster's own points are met to the bit, though a map has them rounded to millimetres.
        near = 5e-4 if self.crs.is_geographic else 1e-6
        return _snapped(column, near), _snapped(row, near)

    def window(self, columns: tuple[int, int], rows: tuple[int, int], factor: int = 1) -> Array:
        """Pixels first .. last - 1 in units of values, nan where there is no data. With a factor
        the means over factor x factor pixels, of which at least half must have data."""
        x0, y0 = columns[0] * factor, rows[0] * factor
        nx, ny = (columns[1] - columns[0]) * factor, (rows[1] - rows[0]) * factor
        nx, ny = min(nx, self.size[0] - x0), min(ny, self.size[1] - y0)
        band = self.dataset.GetRasterBand(1)
        try:
            raw = band.ReadAsArray(x0, y0, nx, ny)
            mask = band.GetMaskBand().ReadAsArray(x0, y0, nx, ny)
        except RuntimeError as problem:
            raise StudyError(f"{self.names[0]}: cannot be read: {problem}") from None
        values = np.asarray(raw, np.float64)
        scale, offset = _scale_offset(band)
        values = values * scale + offset
        values[(mask == 0) | ~np.isfinite(values)] = np.nan
        return values if factor == 1 else _block_means(values, factor)

    def codes(self, columns: tuple[int, int], rows: tuple[int, int]) -> Array:
        """The whole numbers of pixels as they stand; where there is no data too."""
        band = self.dataset.GetRasterBand(1)
        try:
            raw = band.ReadAsArray(columns[0], rows[0], columns[1] - columns[0], rows[1] - rows[0])
        except RuntimeError as problem:
            raise StudyError(f"{self.names[0]}: cannot be read: {problem}") from None
        values = np.asarray(raw)
        if np.issubdtype(values.dtype, np.floating):
            values = np.where(np.isfinite(values), values, -1)
            if (values != np.round(values)).any():
                raise StudyError(
                    f"{self.names[0]}: classes of land cover are whole numbers, this raster holds "
                    "fractions; roughness lengths in metres go with --roughness"
                )
        return values.astype(np.int64)

    @functools.cached_property
    def _from_degrees(self) -> Any:
        pyproj = need("pyproj")
        return pyproj.Transformer.from_crs(pyproj.CRS(4326), self.crs, always_xy=True)

    @functools.cached_property
    def _to_degrees(self) -> Any:
        pyproj = need("pyproj")
        return pyproj.Transformer.from_crs(self.crs, pyproj.CRS(4326), always_xy=True)

    def _position(self, column: Array, row: Array) -> tuple[Array, Array]:
        g = self.geotransform
        x, y = column + 0.5, row + 0.5
        return g[0] + g[1] * x + g[2] * y, g[3] + g[4] * x + g[5] * y


def _snapped(index: Array, near: float) -> Array:
    whole = np.round(index)
    return np.where(np.abs(index - whole) < near, whole, index)


def _block_means(values: Array, factor: int) -> Array:
    ny, nx = (-(-n // factor) for n in values.shape)
    padded = np.full((ny * factor, nx * factor), np.nan)
    padded[: values.shape[0], : values.shape[1]] = values
    blocks = padded.reshape(ny, factor, nx, factor)
    there = np.isfinite(blocks).sum(axis=(1, 3))
    sums = np.nansum(blocks, axis=(1, 3))
    # Half a block would be the mean of another place.
    return np.where(there * 2 >= factor * factor, sums / np.maximum(there, 1), np.nan)


def open_rasters(
    paths: Sequence[Path], centre: Centre | None = None, unit: str | None = None
) -> list[Raster]:
    """The rasters that are named; tiles of one lattice become one. `unit` overrules what the files
    say of the unit of their values. Without a centre no tile is moved over the antimeridian."""
    tiles = [_open_tile(path, unit) for path in paths]
    if centre is not None:
        tiles = [_beside(tile, centre) for tile in tiles]
    groups: list[list[Raster]] = []
    for tile in tiles:
        group = next((g for g in groups if _share_a_lattice(g[0], tile)), None)
        if group is None:
            groups.append([tile])
        else:
            group.append(tile)
    return [_mosaic(group) for group in groups]


def _open_tile(path: Path, unit: str | None) -> Raster:
    gdal = _gdal()
    if not str(path).startswith("/vsi") and not path.exists():
        raise StudyError(f"{path}: there is no such file")
    try:
        dataset = gdal.Open(str(path))
    except RuntimeError as problem:
        raise StudyError(f"{path}: no raster that GDAL can read: {problem}") from None
    if dataset.RasterCount < 1:
        raise StudyError(f"{path}: a raster without a band; name one of its subdatasets")
    if min(dataset.RasterXSize, dataset.RasterYSize) < 2:
        raise StudyError(
            f"{path}: {dataset.RasterXSize} columns and {dataset.RasterYSize} rows, expected 2 or "
            "more of both"
        )
    if dataset.GetRasterBand(1).DataType >= gdal.GDT_CInt16:
        raise StudyError(f"{path}: a raster of complex numbers, expected elevations")
    crs = _crs_of(path, dataset)
    geotransform = dataset.GetGeoTransform(can_return_null=True)
    if geotransform is None:
        raise StudyError(
            f"{path}: the raster does not say where it stands (no geotransform); lay it onto a "
            "lattice with gdalwarp"
        )
    inverse = gdal.InvGeoTransform(geotransform)
    if inverse is None:
        raise StudyError(f"{path}: its geotransform {geotransform} has no inverse")
    factor, known = _unit_of(path, dataset, crs, unit)
    return Raster((str(path),), dataset, horizontal_of(crs), inverse, geotransform, factor, known)


def horizontal_of(crs: Any) -> Any:
    """A reference system without its heights."""
    return crs.sub_crs_list[0] if crs.is_compound else crs


def _crs_of(path: Path, dataset: Any) -> Any:
    pyproj = need("pyproj")
    wkt = dataset.GetProjection()
    if not wkt:
        raise StudyError(
            f"{path}: the raster has no coordinate reference system; give it one, with "
            f"gdal_edit.py -a_srs EPSG:4326 {path.name}"
        )
    try:
        crs = pyproj.CRS.from_wkt(wkt)
        horizontal = horizontal_of(crs)
        if not (horizontal.is_geographic or horizontal.is_projected or horizontal.is_bound):
            raise StudyError(
                f"{path}: {crs.name} is tied to no place on earth; give the raster a coordinate "
                "reference system with gdal_edit.py -a_srs"
            )
    except pyproj.exceptions.CRSError as problem:
        raise StudyError(f"{path}: PROJ does not know its reference system: {problem}") from None
    return crs


def _unit_of(path: Path, dataset: Any, crs: Any, asked: str | None) -> tuple[float, str]:
    if asked is not None:
        factor = metres_of_unit(asked)
        if factor is None:
            raise StudyError(f"--dem-unit {asked}: known are {', '.join(sorted(_UNITS))}")
        return factor, f"{asked}, as asked"
    named = dataset.GetRasterBand(1).GetUnitType()
    if named:
        factor = metres_of_unit(named)
        if factor is None:
            raise StudyError(
                f"{path}: its values are in {named!r}, which is no known unit of length; say with "
                "--dem-unit what it is"
            )
        return factor, f"{named}, from the band"
    vertical = next((c for c in crs.sub_crs_list if c.is_vertical), None)
    if vertical is not None and vertical.axis_info:
        axis = vertical.axis_info[0]
        return float(axis.unit_conversion_factor), f"{axis.unit_name}, from the vertical system"
    return 1.0, "metres, since the file says nothing"


def _beside(tile: Raster, centre: Centre) -> Raster:
    """A tile in degrees moved by whole turns next to the centre, so that tiles on both sides of the
    antimeridian have one lattice."""
    g = tile.geotransform
    width = g[1] * tile.size[0]
    if not tile.crs.is_geographic or abs(width) > 180:
        return tile
    turns = round((centre.longitude - (g[0] + width / 2)) / 360)
    if turns == 0:
        return tile
    gdal = _gdal()
    moved = (g[0] + 360.0 * turns, *g[1:])
    # A mosaic opens its sources by their names.
    name = f"/vsimem/torvex-{next(_numbers)}.vrt"
    copy = gdal.GetDriverByName("VRT").CreateCopy(name, tile.dataset)
    copy.SetGeoTransform(moved)
    copy.FlushCache()
    return replace(
        tile,
        dataset=copy,
        pixel_of=gdal.InvGeoTransform(moved),
        geotransform=moved,
        sources=(tile.dataset,),
    )


def _share_a_lattice(one: Raster, other: Raster) -> bool:
    a, b = one.geotransform, other.geotransform
    if one.crs != other.crs or one.unit != other.unit:
        return False
    if a[2] or a[4] or b[2] or b[4] or a[5] > 0 or b[5] > 0:
        return False  # turned or upside down: read as they are
    if abs(a[1] / b[1] - 1) > 1e-6 or abs(a[5] / b[5] - 1) > 1e-6:
        return False
    apart = ((b[0] - a[0]) / a[1], (b[3] - a[3]) / a[5])
    return _meaning_of_values(one) == _meaning_of_values(other) and all(
        abs(n - round(n)) < 0.01 for n in apart
    )


def _meaning_of_values(raster: Raster) -> tuple[float, float, str]:
    scale, offset = _scale_offset(raster.dataset.GetRasterBand(1))
    # The marker as text, since it may be nan.
    return scale, offset, str(raster.dataset.GetRasterBand(1).GetNoDataValue())


def _scale_offset(band: Any) -> tuple[float, float]:
    scale, offset = band.GetScale(), band.GetOffset()
    return 1.0 if scale is None else scale, 0.0 if offset is None else offset


def _mosaic(tiles: list[Raster]) -> Raster:
    if len(tiles) == 1:
        return tiles[0]
    gdal = _gdal()
    names = tuple(name for tile in tiles for name in tile.names)
    # Of overlapping sources the last one counts in a VRT.
    sources = [tile.dataset for tile in reversed(tiles)]
    try:
        dataset = gdal.BuildVRT("", sources, resolution="highest")
    except RuntimeError as problem:
        raise StudyError(f"{', '.join(names)}: cannot be read as one: {problem}") from None
    if dataset is None:
        raise StudyError(f"{', '.join(names)}: cannot be read as one mosaic")
    g = dataset.GetGeoTransform()
    first = tiles[0]
    inverse = gdal.InvGeoTransform(g)
    return Raster(
        names, dataset, first.crs, inverse, g, first.unit, first.unit_from, tuple(sources)
    )


def covered_reach(rasters: Sequence[Raster], centre: Centre, most: float) -> float:
    """How far a square round the centre may reach to each side [m], for its edges to lie within the
    rasters; up to `most`."""
    along = np.linspace(-1, 1, 41)
    edge = np.ones(along.size)
    east = np.concatenate([along, along, edge, -edge])
    north = np.concatenate([edge, -edge, along, along])
    per_longitude, per_latitude = centre.metres()

    def inside(reach: float) -> bool:
        lon = centre.longitude + reach * east / per_longitude
        lat = centre.latitude + reach * north / per_latitude
        held = np.zeros(lon.shape, bool)
        for raster in rasters:
            column, row = raster.pixels(lon, lat, centre)
            in_x = (column >= 0) & (column <= raster.size[0] - 1)
            held |= in_x & (row >= 0) & (row <= raster.size[1] - 1)
        return bool(held.all())

    if inside(most):
        return most
    low, high = 0.0, most
    while high - low > 1.0:
        middle = (low + high) / 2
        low, high = (middle, high) if inside(middle) else (low, middle)
    return low


# Values at places.


def _halves(count: int) -> tuple[slice, slice]:
    return slice(0, count // 2), slice(count // 2, count)


def _inside_window(index: Array, last: int, spare: int = 1) -> tuple[Array, int, int]:
    """Which indices lie within 0 .. last, and the pixels first .. end that hold them."""
    good = (index >= 0) & (index <= last)
    if not good.any():
        return good, 0, 0
    low = max(0, int(np.floor(index[good].min())) - spare)
    high = min(last, int(np.ceil(index[good].max())) + spare)
    return good, low, high + 1


def values_at(raster: Raster, column: Array, row: Array, factor: int = 1) -> Array:
    """Bilinear between the centres of pixels (of blocks of factor x factor pixels), in the unit of
    the raster; nan where a corner with weight has no data, and outside."""
    shape = column.shape
    # Index of blocks: a block of f pixels has its middle at (f - 1)/2 of its first.
    x = (column.ravel() - (factor - 1) / 2) / factor
    y = (row.ravel() - (factor - 1) / 2) / factor
    return _values_of_block(raster, x, y, factor).reshape(shape)


def _values_of_block(raster: Raster, x: Array, y: Array, factor: int) -> Array:
    last = [n // factor - 1 for n in raster.size]
    in_x, x0, x1 = _inside_window(x, last[0])
    in_y, y0, y1 = _inside_window(y, last[1])
    good = in_x & in_y
    result = np.full(x.shape, np.nan)
    if not good.any():
        return result
    if (x1 - x0) * (y1 - y0) * factor * factor > _WINDOW and x.size > 64:
        return np.concatenate(
            [_values_of_block(raster, x[part], y[part], factor) for part in _halves(x.size)]
        )
    values = raster.window((x0, x1), (y0, y1), factor)
    u, v = x[good] - x0, y[good] - y0
    i = np.clip(np.floor(u).astype(np.int64), 0, max(values.shape[1] - 2, 0))
    j = np.clip(np.floor(v).astype(np.int64), 0, max(values.shape[0] - 2, 0))
    s, t = u - i, v - j
    total = np.zeros(i.shape)
    for di, of_i in ((0, 1 - s), (1, s)):
        for dj, of_j in ((0, 1 - t), (1, t)):
            weight = of_i * of_j
            corner = values[
                np.minimum(j + dj, values.shape[0] - 1), np.minimum(i + di, values.shape[1] - 1)
            ]
            total += np.where(weight != 0, weight * corner, 0.0)
    result[good] = total
    return result


def nearest_codes(raster: Raster, column: Array, row: Array, outside: int) -> Array:
    """The class of the pixel that a place lies in."""
    result = np.full(column.size, outside, np.int64)
    _nearest(raster.codes, raster.size, column.ravel(), row.ravel(), result)
    return result.reshape(column.shape)


def nearest_values(raster: Raster, column: Array, row: Array) -> Array:
    """The value of the pixel that a place lies in; nan where there is none, and outside."""
    result = np.full(column.size, np.nan)
    _nearest(raster.window, raster.size, column.ravel(), row.ravel(), result)
    return result.reshape(column.shape)


def _nearest(
    read: Callable[[tuple[int, int], tuple[int, int]], Array],
    size: tuple[int, int],
    column: Array,
    row: Array,
    result: Array,
) -> None:
    """Fills the part of `result` that lies inside."""
    x, y = np.floor(column + 0.5), np.floor(row + 0.5)
    in_x, x0, x1 = _inside_window(x, size[0] - 1, 0)
    in_y, y0, y1 = _inside_window(y, size[1] - 1, 0)
    good = in_x & in_y
    if not good.any():
        return
    if (x1 - x0) * (y1 - y0) > _WINDOW and x.size > 64:
        for part in _halves(x.size):
            _nearest(read, size, column[part], row[part], result[part])
        return
    values = read((x0, x1), (y0, y1))
    result[good] = values[y[good].astype(np.int64) - y0, x[good].astype(np.int64) - x0]
