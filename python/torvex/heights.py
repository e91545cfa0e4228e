"""Columns of cells at a height above ground.

From the second cell centre on, values are linear in the logarithm of the height. Below it they are
those of this centre, but velocity falls with the logarithmic law over the roughness of the column,

    S(h) = S(z2) ln(h/z0) / ln(z2/z0),

since the first cell holds what the wall formula needs rather than what the wind is. Nothing is said
of velocity up to twice the roughness length, and of anything above the column.
"""

from __future__ import annotations

import math
from dataclasses import dataclass

import numpy as np

from torvex.arrays import Array

SECOND_CENTRE = 2  # index of k = 3


@dataclass(frozen=True)
class AtHeight:
    """Where a height lies in each of some columns."""

    lower: Array  # level below, or the second centre where the height is lower
    weight: Array  # of the next level
    slowing: Array  # of velocity, 1 from the second centre on, nan where nothing is said

    @classmethod
    def of_columns(cls, z: Array, z0: Array | float, height: float) -> AtHeight:
        """z (..., nk): heights of the levels, the first being the ground; z0 (...): roughness."""
        if not (math.isfinite(height) and height >= 0):
            raise ValueError(f"the height above ground is {height}, expected 0 or more")
        levels = z.shape[-1]
        if levels <= SECOND_CENTRE:
            raise ValueError(f"columns of {levels} levels, expected {SECOND_CENTRE + 1} or more")
        ground = np.asarray(z[..., 0], np.float64)

        lower = np.full(ground.shape, SECOND_CENTRE)
        weight = np.full(ground.shape, np.nan)
        second = above = np.asarray(z[..., SECOND_CENTRE] - ground)
        low = np.asarray(height < second)
        weight[low] = 0.0
        # One level after the other, so that no array of all cells is formed.
        for k in range(SECOND_CENTRE, levels - 1):
            under, above = above, np.asarray(z[..., k + 1] - ground)
            here = np.asarray((under <= height) & (height <= above) & (under < above))
            lower[here] = k
            weight[here] = np.log(height / under[here]) / np.log(above[here] / under[here])
        if np.isnan(weight).all():
            raise ValueError(f"no column reaches {height} m above ground")

        z0 = np.asarray(z0, np.float64)
        with np.errstate(divide="ignore", invalid="ignore"):
            law = np.log(height / z0) / np.log(second / z0)
        slowing = np.where(height <= 2 * z0, np.nan, np.where(low, law, 1.0))
        return cls(lower, weight, slowing)

    def value(self, field: Array) -> Array:
        """What does not fall towards the ground: pressure, turbulence energy."""
        levels = field.shape[-1]
        upper = np.minimum(self.lower + 1, levels - 1)
        low = np.take_along_axis(field, self.lower[..., None], -1)[..., 0].astype(np.float64)
        high = np.take_along_axis(field, upper[..., None], -1)[..., 0].astype(np.float64)
        return low + self.weight * (high - low)

    def velocity(self, field: Array) -> Array:
        """A part of the velocity."""
        return self.value(field) * self.slowing
