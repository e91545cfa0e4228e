"""Study area and spacings of the mesh, from sites, height of interest and a number of cells.

The extents and counts follow the rules of a run for its domain, so that maps can be made before a
run has sized anything: from the centre outwards `n_fine` cells of MIN_DXY, then cells that grow by
MESH_HRATIO, then cells of MAX_DXY, up to the first line beyond each limit.
"""

from __future__ import annotations

import math
from dataclasses import dataclass, replace

from torvex.study.errors import StudyError

# The default ratios of the zones round the study circle, over its diameter.
SIDE, UP, DOWN, ADDITIONAL = 0.3, 0.3, 0.3, 1.0

MARGIN = 1000.0  # of the study area round the sites [m]
LEAST_MARGIN = 250.0
_FINEST = 5.0  # [m]


@dataclass(frozen=True)
class MeshKeys:
    """Keys of a case that say how its mesh is made [m]."""

    WE_LENGTH: float
    NS_LENGTH: float
    MIN_DXY: float
    MAX_DXY: float
    MIN_DXY_RAD: float
    MESH_HRATIO: float
    MIN_DZ: float
    MESH_VRATIO: float
    CONSTANT_DZ_HEIGHT: float
    top: float  # of the domain above the datum of the maps
    ground: float  # lowest ground above the datum

    @property
    def diameter(self) -> float:
        return math.hypot(self.WE_LENGTH, self.NS_LENGTH)


@dataclass(frozen=True)
class Extent:
    """What the keys come to."""

    ni: int
    nj: int
    nk: int
    upwind: float  # from the centre to the edges [m]
    downwind: float
    side: float

    @property
    def cells(self) -> int:
        return self.ni * self.nj * self.nk

    @property
    def reach(self) -> float:
        """From the centre to the farthest corner [m]: what a map must hold for all directions."""
        return math.hypot(max(self.upwind, self.downwind), self.side)


def extent_of(keys: MeshKeys) -> Extent:
    radius, d = keys.diameter / 2, keys.diameter
    limits = {
        "up": radius + d * ADDITIONAL + d * UP,
        "down": radius + d * DOWN,
        "side": radius + d * SIDE,
    }
    fine = math.ceil(keys.MIN_DXY_RAD / keys.MIN_DXY)
    growth = math.log(keys.MESH_HRATIO)
    stretched = int(math.log(keys.MAX_DXY / keys.MIN_DXY) / growth - 1) if growth else 100000
    at, m = 0.0, 0
    found: dict[str, tuple[int, float]] = {}
    while len(found) < len(limits):
        m += 1
        if m <= fine:
            at += keys.MIN_DXY
        elif m <= fine + stretched:
            at += keys.MESH_HRATIO ** (m - fine) * keys.MIN_DXY
        else:
            at += keys.MAX_DXY
        for name, limit in limits.items():
            if at >= limit:
                found.setdefault(name, (m, at))
        if m > 20000:
            raise StudyError(f"cells of {keys.MIN_DXY:g} m are too small for this study area")
    (up, x_up), (down, x_down), (side, y_side) = (found[name] for name in limits)
    return Extent(up + down + 2, 2 * side + 2, _levels(keys), x_up, x_down, y_side)


def _levels(keys: MeshKeys) -> int:
    height, k = 0.0, 2
    while True:
        height += keys.MESH_VRATIO ** (k - 1) * keys.MIN_DZ
        if height > keys.top or k > 5000:
            return k + 1
        k += 1


def _neat(step: float) -> float:
    """A spacing that reads well, not below the given one."""
    unit = 1.0 if step < 50 else 5.0
    return math.ceil(step / unit - 1e-9) * unit


def with_spacing(keys: MeshKeys, finest: float) -> MeshKeys:
    """MIN_DXY and what hangs on it: cells five times as wide at the rim, but at least three in the
    narrowest buffer zone."""
    coarsest = max(finest, min(5 * finest, SIDE * keys.diameter / 3))
    return replace(keys, MIN_DXY=finest, MAX_DXY=round(coarsest, 1))


def finest_spacing(keys: MeshKeys, cells: int, raster_step: float) -> MeshKeys:
    """The smallest MIN_DXY whose mesh has no more than `cells` cells; not below the step of the
    raster, which knows nothing of smaller hills."""
    least = max(_FINEST, _neat(raster_step) if raster_step < keys.diameter / 20 else _FINEST)
    coarse = keys.diameter / 10
    finest = least
    while extent_of(with_spacing(keys, finest)).cells > cells:
        finest = _neat(finest * 1.02 + 1e-6)
        if finest > coarse:
            least_cells = extent_of(with_spacing(keys, coarse)).cells
            raise StudyError(
                f"{cells} cells are too few for a study area of {keys.WE_LENGTH:.0f} m x "
                f"{keys.NS_LENGTH:.0f} m: the coarsest mesh that makes sense has {least_cells}; "
                "raise --cells, or make the area smaller with --size"
            )
    return with_spacing(keys, finest)


def first_layer(height: float, largest_z0: float) -> float:
    """Height of the first layer: a twentieth of the height of interest and ten times the largest
    roughness length, at most a quarter of the height of interest."""
    return round(min(max(height / 20, 10 * largest_z0, 1.0), height / 4), 2)


def top_of(highest: float, lowest: float) -> float:
    """Top of the domain above the datum: three times the relief above the highest ground, and no
    lower than a run would take it by itself."""
    return max(highest + max(1000.0, 3 * (highest - lowest)), 1500.0)
