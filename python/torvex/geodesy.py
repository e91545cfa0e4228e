"""Positions: degrees, metres east and north of the case centre, and the axes of the mesh.

A run turns longitude and latitude into metres by one pair of factors, those of the ellipsoid at the
latitude of the centre: there is no projection, and north is true north everywhere.
"""

from __future__ import annotations

import math
from typing import Any

# Radius at the equator [m] and squared eccentricity by the key GS.
_FLATTENING = {1: 1 / 299.1528, 2: 1 / 298.25723, 3: 1 / 298.25723}
_RADIUS = {0: 6378136.0, 1: 6377397.0, 2: 6378137.0, 3: 6378137.0}


def _eccentricity_squared(geodetic_system: int) -> float:
    if geodetic_system == 0:
        return 0.00669447
    f = _FLATTENING[geodetic_system]
    return 2 * f - f * f


def metres_per_degree(latitude: float, geodetic_system: int = 0) -> tuple[float, float]:
    """Eastwards and northwards, by the radii of curvature of the prime vertical and of the
    meridian. geodetic_system as the key GS: 0 default, 1 Tokyo, 2 JGD2000, 3 WGS 84."""
    a, e2 = _RADIUS[geodetic_system], _eccentricity_squared(geodetic_system)
    phi = math.radians(latitude)
    w2 = 1 - e2 * math.sin(phi) ** 2
    prime_vertical = a / math.sqrt(w2)
    meridian = a * (1 - e2) / (w2 * math.sqrt(w2))
    return math.radians(1) * math.cos(phi) * prime_vertical, math.radians(1) * meridian


def _turn(angle: float) -> tuple[float, float]:
    # At 270 degrees x points east and y north; at 0 degrees x = -north, y = east.
    r = math.radians(angle - 270)
    return math.cos(r), math.sin(r)


def mesh_to_east_north(angle: float, x: Any, y: Any) -> tuple[Any, Any]:
    """A position or a horizontal vector in the axes of the mesh: x downwind, y to the left."""
    c, s = _turn(angle)
    return x * c + y * s, y * c - x * s


def east_north_to_mesh(angle: float, east: Any, north: Any) -> tuple[Any, Any]:
    """The inverse of mesh_to_east_north."""
    c, s = _turn(angle)
    return east * c - north * s, east * s + north * c
