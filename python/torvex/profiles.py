"""Vertical profiles of sites, and the list of their labels."""

from __future__ import annotations

import math
from pathlib import Path
from typing import NamedTuple

import numpy as np

from torvex.arrays import Array, PathLike
from torvex.flow import Columns, Flow
from torvex.free_form import line_at, lines_of, read_counts, read_reals
from torvex.records import FormatError


class Profile(NamedTuple):
    """A vertical profile, from the ground upwards."""

    z_agl: Array  # height above ground [m]
    u: Array  # velocity in the axes of the mesh: downwind, to the left, up [m/s]
    v: Array
    w: Array
    p: Array  # pressure [Pa]
    tke: Array  # turbulence energy [m2/s2]
    ted: Array  # its dissipation [m2/s3]
    z_asl: Array  # height above the datum of the map [m]
    z0: float = math.nan  # roughness length of the ground [m]; a .tpd file does not tell it

    @property
    def speed(self) -> Array:
        """Horizontal wind speed [m/s]."""
        return np.hypot(self.u, self.v)

    def flow(self, height: float, inflow: Profile | None = None, angle: float = math.nan) -> Flow:
        """The wind at a height above ground; without z0 there is none below the second cell
        centre. Speed-up and turn are against `inflow`; east and north need the direction's angle.
        """
        z = np.asarray(self.z_agl, np.float64) + (self.z_asl[0] - self.z_agl[0])
        columns = Columns(z, self.u, self.v, self.w, self.p, self.tke, self.z0)
        if inflow is None:
            return Flow.of_columns(columns, height, angle)
        free = inflow.flow(height)
        return Flow.of_columns(columns, height, angle, (float(free.u), float(free.v)))


_TITLES = Profile._fields[:8]


def read_profile(path: PathLike) -> Profile:
    """A `.tpd` profile: number of levels, titles, eight columns."""
    path = Path(path)
    lines = lines_of(path)
    (levels,) = read_counts(path, line_at(path, lines, 1, "the number of levels"), 1, "line 1")
    if levels < 1:
        raise FormatError(path, f"line 1: {levels} levels, expected 1 or more")
    titles = line_at(path, lines, 2, "column titles")[0].split()
    if titles != list(_TITLES):
        raise FormatError(path, f"line 2: {' '.join(titles)}, expected {' '.join(_TITLES)}")
    rows = [
        read_reals(
            path,
            line_at(path, lines, number, f"level {number - 2} of {levels}"),
            8,
            f"line {number}",
        )
        for number in range(3, levels + 3)
    ]
    return Profile(*np.array(rows, np.float32).T)


class Label(NamedTuple):
    """A site that has a profile."""

    index: int  # type: ignore[assignment]  # in the case file, from 1
    label: str
    position: str  # its place in the names of profiles


class Site(NamedTuple):
    """A site in the mesh of a direction; places are nan where no case file tells the centre."""

    label: str
    profile: Profile
    longitude: float  # [degrees]
    latitude: float
    east: float  # of the case centre [m]
    north: float


LABEL_LIST = "_latlon_label_list.txt"


def read_labels(path: PathLike) -> list[Label]:
    """The label list; labels may hold commas."""
    labels = []
    for number, line in enumerate(lines_of(path), start=1):
        if line.strip():
            index, first, rest = line.partition(",")
            label, second, position = rest.rpartition(",")
            if not (first and second and index.strip().isdecimal() and position.strip()):
                raise FormatError(
                    path, f"line {number}: {line.strip()}, expected index, label, " "position"
                )
            labels.append(Label(int(index), label.strip(), position.strip()))
    return labels
