"""What is asked of the wind at a height above ground, defined once."""

from __future__ import annotations

import math
from dataclasses import dataclass, fields, replace
from typing import Any

import numpy as np

from torvex.arrays import Array
from torvex.geodesy import mesh_to_east_north
from torvex.heights import AtHeight


def roughness_mean(z0: Array) -> Array:
    """R(z0) = 1 / ln^2(10 / z0), which is what is averaged of a roughness length [m]."""
    return np.asarray(1 / np.log(10 / np.minimum(np.asarray(z0, np.float64), 9.999)) ** 2)


def roughness_of_mean(r: Array) -> Array:
    """The inverse of roughness_mean."""
    return np.asarray(10 / np.exp(1 / np.sqrt(r)))


@dataclass(frozen=True)
class Columns:
    """Columns of cells, arrays of the shape (..., nk)."""

    z: Array  # height above the datum of the map, the first level being the ground [m]
    u: Array  # velocity, mesh axes [m/s]
    v: Array
    w: Array
    p: Array  # pressure [Pa]
    tke: Array  # turbulence energy [m2/s2]
    z0: Array | float  # roughness length of the ground [m], (...)


@dataclass(frozen=True)
class Cells:
    """Where points lie between the columns of a mesh."""

    i: Array  # the column before a point
    j: Array
    a: Array  # weight of the next column
    b: Array
    inside: Array

    @classmethod
    def of_points(cls, x_line: Array, y_line: Array, x: Array, y: Array) -> Cells:
        """The lines are those of the first row, as for the sites of a run."""
        i, a, in_x = cls._between(x_line, x)
        j, b, in_y = cls._between(y_line, y)
        return cls(i, j, a, b, in_x & in_y)

    @staticmethod
    def _between(line: Array, at: Array) -> tuple[Array, Array, Array]:
        line = np.asarray(line, np.float64)
        if not (np.diff(line) > 0).all():
            raise ValueError("the lines of the mesh do not rise, no point can be found in it")
        inside = (line[0] <= at) & (at <= line[-1])
        n = np.clip(np.searchsorted(line, at, side="right") - 1, 0, line.size - 2)
        return n, (at - line[n]) / (line[n + 1] - line[n]), inside

    def bilinear(self, values: Array) -> Array:
        """Values (ni, nj) at the points, nan outside the mesh: nothing is extrapolated."""
        total = np.zeros(self.inside.shape)
        for i, of_i in ((self.i, 1 - self.a), (self.i + 1, self.a)):
            for j, of_j in ((self.j, 1 - self.b), (self.j + 1, self.b)):
                weight = of_i * of_j
                # A column without a value counts only where it has a weight.
                total = total + np.where(weight != 0, weight * values[i, j], 0.0)
        return np.where(self.inside, total, np.nan)


@dataclass(frozen=True)
class Flow:
    """The wind at one height above ground, over columns or at points; all arrays have one shape.
    There is nan where a column ends below the height, in the first two roughness lengths above the
    ground, and outside the mesh."""

    height: float  # above ground [m]
    angle: float  # of the direction: where the free wind comes from [degrees]
    inflow: tuple[float, float]  # u and v of the inflow column at the same height above ground
    u: Array  # velocity, mesh axes: downwind, to the left, up [m/s]
    v: Array
    w: Array
    p: Array  # pressure [Pa]
    tke: Array  # turbulence energy [m2/s2]
    ground: Array  # height of the ground above the datum of the map [m]
    z0: Array  # roughness length of the ground [m]
    low: tuple[Array, Array]  # u and v at height/sqrt(2)
    high: tuple[Array, Array]  # u and v at height*sqrt(2)

    @classmethod
    def of_columns(
        cls,
        columns: Columns,
        height: float,
        angle: float = math.nan,
        inflow: tuple[float, float] = (math.nan, math.nan),
    ) -> Flow:
        c = columns
        here = AtHeight.of_columns(c.z, c.z0, height)

        def wind(factor: float) -> tuple[Array, Array]:
            try:
                there = AtHeight.of_columns(c.z, c.z0, height * factor)
            except ValueError:  # above all columns
                return np.full(here.weight.shape, np.nan), np.full(here.weight.shape, np.nan)
            return there.velocity(c.u), there.velocity(c.v)

        return cls(
            height=height,
            angle=angle,
            inflow=inflow,
            u=here.velocity(c.u),
            v=here.velocity(c.v),
            w=here.velocity(c.w),
            p=here.value(c.p),
            tke=here.value(c.tke),
            ground=np.asarray(c.z[..., 0], np.float64),
            z0=np.asarray(c.z0, np.float64),
            low=wind(math.sqrt(0.5)),
            high=wind(math.sqrt(2)),
        )

    def at(self, cells: Cells) -> Flow:
        """Between the columns, bilinear; the roughness through its mean."""
        at = cells.bilinear
        arrays: dict[str, Any] = {
            field.name: at(getattr(self, field.name))
            for field in fields(self)
            if field.name in ("u", "v", "w", "p", "tke", "ground")
        }
        return replace(
            self,
            **arrays,
            z0=roughness_of_mean(at(roughness_mean(self.z0))),
            low=(at(self.low[0]), at(self.low[1])),
            high=(at(self.high[0]), at(self.high[1])),
        )

    @property
    def speed(self) -> Array:
        """Horizontal wind speed [m/s]."""
        return np.hypot(self.u, self.v)

    @property
    def speed_up(self) -> Array:
        """Speed over that of the inflow column at the same height above ground."""
        return self.speed / math.hypot(*self.inflow)

    @property
    def turbulence_intensity(self) -> Array:
        """sqrt(2/3 k) over the speed, a fraction."""
        with np.errstate(divide="ignore", invalid="ignore"):
            return np.sqrt(2 / 3 * np.maximum(self.tke, 0)) / self.speed

    @property
    def flow_angle(self) -> Array:
        """Of the wind against the horizontal, upwards positive [degrees]."""
        return np.degrees(np.arctan2(self.w, self.speed))

    @property
    def turn(self) -> Array:
        """Of the wind against the inflow, clockwise seen from above positive [degrees]."""
        u, v = self.inflow
        # The angle from the inflow to the wind; v points to the left.
        return np.degrees(np.arctan2(v * self.u - u * self.v, u * self.u + v * self.v))

    @property
    def shear(self) -> Array:
        """Exponent of the speed between height/sqrt(2) and height*sqrt(2)."""
        with np.errstate(divide="ignore", invalid="ignore"):
            return np.log(np.hypot(*self.high) / np.hypot(*self.low)) / math.log(2)

    @property
    def wind_east(self) -> Array:
        """Velocity towards true east [m/s]."""
        return np.asarray(mesh_to_east_north(self.angle, self.u, self.v)[0])

    @property
    def wind_north(self) -> Array:
        """Velocity towards true north [m/s]."""
        return np.asarray(mesh_to_east_north(self.angle, self.u, self.v)[1])

    @property
    def wind_up(self) -> Array:
        """Vertical velocity [m/s]."""
        return self.w
