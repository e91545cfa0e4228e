"""Mesh and flow of one wind direction."""

from __future__ import annotations

import functools
import math
from collections.abc import Iterable
from pathlib import Path
from typing import Any

import numpy as np

from torvex.arrays import Array, PathLike
from torvex.profiles import LABEL_LIST, Profile, read_labels, read_profile
from torvex.records import FormatError
from torvex.results import DirectionFiles, read_fitting, read_result
from torvex.states import direction_states, state_table, wd_tag, wd_tags
from torvex.tables import RestartInfo, read_restart_info
from torvex.tuf import START_FIELDS, TufFile, read_tuf


class Direction:
    """Mesh and flow of one wind direction of a run.

    tag        the angle in degrees, or the text that stands for it in names of files. A tag has one
               decimal: give the angle where the direction has more, as in sectors of 11.25 degrees
    prefix     before all names: "atlas-", "flat-", "flat2-" or "nest-"
    iteration  the result to read; by default the one that restart.info names, which a resume would
               take. Without restart.info no result is known to be that of the mesh beside it

    A result is told to be older than the mesh by an OldResultWarning where restart.info names it,
    and refused where nothing does.

    Index 1 and ni, nj, nk of the documentation (0 and -1 here) are values on the faces of the
    domain: zc[:, :, 0] is the ground. The mesh is turned, so that the wind blows along x.
    """

    xc: Array  # cell centres, mesh axes [m], z above the datum of the map
    yc: Array
    zc: Array
    z0: Array  # roughness length of the ground [m], (ni, nj)
    u: Array  # velocity, mesh axes [m/s]
    v: Array
    w: Array
    p: Array  # pressure [Pa]
    tke: Array  # turbulence energy [m2/s2]
    ted: Array  # its dissipation [m2/s3]
    flxU: Array  # volume flux through the face towards +i, +j, +k [m3/s]
    flxV: Array
    flxW: Array
    vis: Array  # effective viscosity [kg/(m s)]
    pp: Array  # pressure correction [Pa]
    # With the k-l model lm, mixing length [m]; with the hybrid model also tkl [m2/s2] and viskl.

    def __init__(
        self,
        directory: PathLike,
        tag: str | float,
        *,
        prefix: str = "",
        iteration: int | None = None,
    ) -> None:
        self.directory = Path(directory)
        self.tag = tag if isinstance(tag, str) else wd_tag(tag)
        self.angle = float(self.tag.replace("_", ".")) if isinstance(tag, str) else float(tag)
        self.prefix = prefix
        self.files = DirectionFiles(self.directory, prefix, self.tag)
        self.stem = self.files.stem
        centres_path = self.files.path("xyzc.tuf")
        if not centres_path.exists():
            there = ", ".join(wd_tags(directory, prefix)) or "none"
            raise FileNotFoundError(f"{centres_path} is missing; directions there: {there}")

        centres = read_tuf(centres_path, "xyzc")
        self.ni, self.nj, self.nk = centres.extents
        self.result = read_result(self.files, centres.extents, iteration)
        self.iteration = self.result.iteration
        roughness = self._fitting("z0")
        for file in (centres, roughness, self.result):
            for name, array in file.arrays.items():
                setattr(self, name, array)
        # The lengths of all records are looked at, so that no file of another mesh stands beside.
        if self.files.path("xyz.tuf").exists():
            self.nodes
        if self.files.path("vpkeinp.tuf").exists():
            self.start

    def _fitting(self, kind: str, fewer: int = 0) -> TufFile:
        extents = (self.ni - fewer, self.nj - fewer, self.nk - fewer)
        return read_fitting(self.files.path(f"{kind}.tuf"), kind, extents)

    @functools.cached_property
    def state(self) -> int | None:
        """State of the direction in the run's table, a key of STATES; None where the table is
        missing or does not name the direction."""
        if not state_table(self.directory, self.prefix).exists():
            return None
        rows = direction_states(self.directory, self.prefix)
        return next((row.state for row in rows if row.tag == self.tag), None)

    # Files that are read when they are asked for.

    @functools.cached_property
    def nodes(self) -> TufFile:
        """Mesh nodes xn, yn, zn, one less than cells in each direction."""
        return self._fitting("xyz", fewer=1)

    @functools.cached_property
    def start(self) -> TufFile:
        """The fields that the iteration began with."""
        return self._fitting("vpkeinp")

    @functools.cached_property
    def canopy(self) -> TufFile:
        return self._fitting("ccd")

    @functools.cached_property
    def restart_info(self) -> RestartInfo:
        return read_restart_info(self.files.path("restart.info"))

    def sites(self) -> list[tuple[str, Profile]]:
        """Label and profile of the sites in the label list. The list is that of the direction
        solved last; a site outside the mesh of this one has no profile and is left out."""
        labels = read_labels(self.directory / LABEL_LIST)
        paths = ((site.label, self.files.profile(site.position)) for site in labels)
        return [(label, read_profile(path)) for label, path in paths if path.exists()]

    def inflow_profile(self) -> Profile:
        return read_profile(self.files.profile("_INFLOW_PROFILE"))

    # Places: a position or a horizontal vector in the axes of the mesh and in east and north.

    def _turn(self) -> tuple[float, float]:
        # At 270 degrees x points east and y north; at 0 degrees x = -north, y = east.
        r = math.radians(self.angle - 270)
        return math.cos(r), math.sin(r)

    def to_east_north(self, x: Any, y: Any) -> tuple[Any, Any]:
        """East and north of the case centre [m] of a mesh position; or parts of a velocity."""
        c, s = self._turn()
        return x * c + y * s, y * c - x * s

    def to_mesh(self, east: Any, north: Any) -> tuple[Any, Any]:
        """The inverse of to_east_north."""
        c, s = self._turn()
        return east * c - north * s, east * s + north * c

    @functools.cached_property
    def east(self) -> Array:
        return self.to_east_north(self.xc[:, :, 0], self.yc[:, :, 0])[0]

    @functools.cached_property
    def north(self) -> Array:
        return self.to_east_north(self.xc[:, :, 0], self.yc[:, :, 0])[1]

    def nearest_column(self, east: float, north: float) -> tuple[int, int]:
        """The array indices of the mesh column nearest to a position."""
        distance = np.hypot(self.east - east, self.north - north)
        i, j = np.unravel_index(np.argmin(distance), distance.shape)
        return int(i), int(j)

    # Heights.

    @property
    def ground(self) -> Array:
        """Height of the ground [m], (ni, nj)."""
        return self.zc[:, :, 0]

    @functools.cached_property
    def z_agl(self) -> Array:
        """Height of the cell centres above ground [m]; an array of its own."""
        return self.zc - self.zc[:, :, :1]

    def at_height(self, field: Array, height: float) -> Array:
        """A field `height` metres above ground, linear between the levels of each column; nan where
        a column ends below. One level after the other, so that no 3-D array is formed."""
        if height < 0:
            raise ValueError(f"the height above ground is {height}, expected 0 or more")
        values = np.full((self.ni, self.nj), np.nan, np.float32)
        above = self.zc[:, :, 0] - self.ground
        for k in range(1, self.nk):
            below, above = above, self.zc[:, :, k] - self.ground
            here = (below <= height) & (height <= above) & (below < above)
            weight = (height - below[here]) / (above - below)[here]
            values[here] = (1 - weight) * field[:, :, k - 1][here] + weight * field[:, :, k][here]
        if np.isnan(values).all():
            raise ValueError(f"no column reaches {height} m above ground")
        return values

    def speed_at_height(self, height: float) -> Array:
        """Horizontal wind speed [m/s] `height` metres above ground, (ni, nj)."""
        return np.hypot(self.at_height(self.u, height), self.at_height(self.v, height))

    def speed_up(self, height: float) -> Array:
        """The speed divided by that of the inflow column at the same height above ground."""
        speed = self.speed_at_height(height)
        return speed / speed[0, 0]

    def profile(self, i: int, j: int) -> Profile:
        """The profile of a mesh column; i and j are indices of the arrays, d.u[i, j]."""
        columns = {name: getattr(self, name)[i, j] for name in START_FIELDS}
        z = self.zc[i, j]
        return Profile(z_agl=z - z[0], z_asl=z, **columns)


def usable_directions(
    directory: PathLike, prefix: str = "", tags: Iterable[str] | None = None
) -> tuple[list[Direction], list[str]]:
    """The directions of the last run that can be looked at, converged or not (their `state` tells),
    and a line on each that was left out, with the reason. With `tags` these directions only."""
    usable: list[Direction] = []
    left_out: list[str] = []
    rows = direction_states(directory, prefix)
    asked = (
        {row.tag for row in rows} | set(wd_tags(directory, prefix)) if tags is None else set(tags)
    )
    for tag, angle, state in rows:
        if tag not in asked:
            continue
        if state == 3:
            left_out.append(f"wind from {angle:.1f} degrees: left out: diverged")
            continue
        try:
            usable.append(Direction(directory, tag, prefix=prefix))
        except (OSError, FormatError) as problem:
            left_out.append(f"wind from {angle:.1f} degrees: left out: {problem}")
    table = state_table(directory, prefix).name
    left_out += [
        f"{tag}: left out: {table} does not name it, it is not of the last run"
        for tag in sorted(asked - {row.tag for row in rows})
    ]
    return usable, left_out
