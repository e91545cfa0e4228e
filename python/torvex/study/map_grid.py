"""The points of a map in longitude and latitude, as the text of the map holds them.

A run reads the base of a map as degrees and minutes and its spacing in minutes, in single
precision. The points here are those that come out of these rounded numbers: a value is taken
at the very place where the run will put it.
"""

from __future__ import annotations

import math
from dataclasses import dataclass

import numpy as np

from torvex.arrays import Array
from torvex.geodesy import metres_per_degree

WGS84 = 3  # the key GS of everything that is made here
_MOST_POINTS = 60_000_000


def _single(value: float) -> float:
    return float(np.float32(value))


def degrees_minutes(angle: float) -> tuple[int, str]:
    """Whole degrees, and minutes as text; both carry the sign."""
    degrees = math.trunc(angle)
    return degrees, f"{(angle - degrees) * 60:.8f}"


def degrees_minutes_seconds(angle: float) -> str:
    """The three numbers of an angle in a case file, all with its sign; good to 3 mm."""
    sign = "-" if angle < 0 else ""
    units = round(abs(angle) * 3600 * 10000)
    seconds = units % 600000 / 10000
    minutes, degrees = units // 600000 % 60, units // 36000000
    if units == 0:
        sign = ""
    return f"{sign}{degrees}, {sign}{minutes}, {sign}{seconds:.4f}"


@dataclass(frozen=True)
class Centre:
    """The middle of the case, where metres are defined."""

    longitude: float  # [degrees]
    latitude: float

    def metres(self) -> tuple[float, float]:
        """Per degree of longitude and of latitude, by the factors of a run."""
        return metres_per_degree(self.latitude, WGS84)

    def east_north(self, longitude: Array, latitude: Array) -> tuple[Array, Array]:
        per_longitude, per_latitude = self.metres()
        return (longitude - self.longitude) * per_longitude, (
            latitude - self.latitude
        ) * per_latitude

    def degrees(self, east: float, north: float) -> tuple[float, float]:
        per_longitude, per_latitude = self.metres()
        return self.longitude + east / per_longitude, self.latitude + north / per_latitude

    def near(self, longitude: Array) -> Array:
        """The same meridians, written so that they lie within 180 degrees of the centre."""
        return np.asarray(self.longitude + (longitude - self.longitude + 180) % 360 - 180)


@dataclass(frozen=True)
class MapGrid:
    """Columns and rows of a map; the south-west point and the spacing as they are written."""

    base_longitude: tuple[int, str]  # degrees, minutes
    base_latitude: tuple[int, str]
    d_lon: str  # [minutes]
    d_lat: str
    n_lon: int
    n_lat: int

    @property
    def spacing(self) -> tuple[float, float]:
        """[degrees]"""
        return _single(float(self.d_lon)) / 60, _single(float(self.d_lat)) / 60

    @property
    def south_west(self) -> tuple[float, float]:
        """[degrees]"""
        (lon, lon_min), (lat, lat_min) = self.base_longitude, self.base_latitude
        return lon + _single(float(lon_min)) / 60, lat + _single(float(lat_min)) / 60

    def longitudes(self, first: float = 0.0, count: int | None = None) -> Array:
        """Of the columns; `first` and `count` ask for other ones, halves between two."""
        n = self.n_lon if count is None else count
        return self.south_west[0] + self.spacing[0] * (first + np.arange(n))

    def latitudes(self, first: float = 0.0, count: int | None = None) -> Array:
        n = self.n_lat if count is None else count
        return self.south_west[1] + self.spacing[1] * (first + np.arange(n))

    def steps(self, centre: Centre) -> tuple[float, float]:
        """The spacing in metres."""
        per_longitude, per_latitude = centre.metres()
        return self.spacing[0] * per_longitude, self.spacing[1] * per_latitude


def _grid(west: float, south: float, d_lon: float, d_lat: float, n_lon: int, n_lat: int) -> MapGrid:
    if n_lon * n_lat > _MOST_POINTS:
        raise ValueError(f"a map of {n_lon} x {n_lat} points is more than {_MOST_POINTS}")
    return MapGrid(
        degrees_minutes(west),
        degrees_minutes(south),
        f"{d_lon * 60:.9f}",
        f"{d_lat * 60:.9f}",
        n_lon,
        n_lat,
    )


def grid_of_step(centre: Centre, reach: float, step: float) -> MapGrid:
    """Points `step` metres apart, one of them at the centre, up to `reach` metres to each side."""
    per_longitude, per_latitude = centre.metres()
    n = math.ceil(reach / step)
    d_lon, d_lat = step / per_longitude, step / per_latitude
    west, south = centre.longitude - n * d_lon, centre.latitude - n * d_lat
    return _grid(west, south, d_lon, d_lat, 2 * n + 1, 2 * n + 1)


def grid_of_points(
    centre: Centre, reach: float, origin: tuple[float, float], spacing: tuple[float, float]
) -> MapGrid:
    """The points of a raster that a map of this reach needs: `origin` is any of them [degrees]."""
    per_longitude, per_latitude = centre.metres()
    first, count = [], []
    for middle, per_degree, start, d in zip(
        (centre.longitude, centre.latitude), (per_longitude, per_latitude), origin, spacing
    ):
        low = math.floor((middle - reach / per_degree - start) / d + 1e-6)
        high = math.ceil((middle + reach / per_degree - start) / d - 1e-6)
        first.append(start + low * d)
        count.append(high - low + 1)
    return _grid(first[0], first[1], spacing[0], spacing[1], count[0], count[1])
