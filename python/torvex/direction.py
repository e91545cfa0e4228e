"""Mesh and flow of one wind direction."""

from __future__ import annotations

import functools
import warnings
from collections.abc import Iterable
from dataclasses import replace
from pathlib import Path
from typing import Any

import numpy as np

from torvex.arrays import Array, PathLike
from torvex.case import Case, find_case, read_case
from torvex.flow import Cells, Columns, Flow, roughness_mean, roughness_of_mean
from torvex.geodesy import east_north_to_mesh, mesh_to_east_north
from torvex.heights import AtHeight
from torvex.profiles import LABEL_LIST, Profile, Site, read_labels, read_profile
from torvex.records import FormatError
from torvex.results import DirectionFiles, OldResultWarning, read_fitting, read_result
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

    case       the case file, or what read_case gave of it; by default that of the last run in the
               directory. Longitude, latitude and the places of sites need it, nothing else does

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
        case: PathLike | Case | None = None,
    ) -> None:
        self._case = case
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
        # Files of another mesh show by their extents and lengths.
        if self.files.path("xyz.tuf").exists():
            self.nodes
        if self.files.path("vpkeinp.tuf").exists():
            self.start
        self.result = read_result(self.files, centres.extents, iteration)
        self.iteration = self.result.iteration
        roughness = self._fitting("z0")
        for file in (centres, roughness, self.result):
            for name, array in file.arrays.items():
                setattr(self, name, array)

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

    @functools.cached_property
    def case(self) -> Case:
        """Centre and sites of the case."""
        if isinstance(self._case, Case):
            return self._case
        return read_case(find_case(self.directory) if self._case is None else self._case)

    # Sites.

    def sites(self) -> list[tuple[str, Profile]]:
        """Label and profile of the sites in the label list. The list is that of the direction
        solved last; a site outside the mesh of this one has no profile and is left out."""
        labels = read_labels(self.directory / LABEL_LIST)
        paths = ((site.label, self.files.profile(site.position)) for site in labels)
        return [(label, read_profile(path)) for label, path in paths if path.exists()]

    def placed_sites(self) -> list[Site]:
        """The same sites with their places, and the roughness there in their profiles. That the
        case is the one of the run shows where the profiles stand on the ground of the mesh."""
        labels = read_labels(self.directory / LABEL_LIST)
        placed = []
        for label in labels:
            path = self.files.profile(label.position)
            if not path.exists():
                continue
            if not 1 <= label.index <= len(self.case.sites):
                raise FormatError(
                    self.case.path,
                    f"{len(self.case.sites)} sites, but {LABEL_LIST} has site {label.index}; name "
                    "the case file of the run",
                )
            site = self.case.sites[label.index - 1]
            east, north = self.case.east_north(site.longitude, site.latitude)
            cells = self._cells(east, north)
            profile = read_profile(path)
            ground = float(cells.bilinear(self.ground))
            if not abs(ground - profile.z_asl[0]) <= 0.1 + 0.01 * float(np.ptp(self.ground)):
                raise FormatError(
                    path,
                    f"its ground is at {profile.z_asl[0]:.1f} m, that of the mesh there at "
                    f"{ground:.1f} m: the profile is of another run, or {self.case.path.name} is "
                    "not the case of this one",
                )
            z0 = float(roughness_of_mean(cells.bilinear(roughness_mean(self.z0))))
            placed.append(
                Site(
                    label.label,
                    profile._replace(z0=z0),
                    site.longitude,
                    site.latitude,
                    float(east),
                    float(north),
                )
            )
        return placed

    def inflow_profile(self) -> Profile:
        profile = read_profile(self.files.profile("_INFLOW_PROFILE"))
        return profile._replace(z0=float(self.z0[0, 0]))

    # Places: a position or a horizontal vector in the axes of the mesh and in east and north.

    def to_east_north(self, x: Any, y: Any) -> tuple[Any, Any]:
        """East and north of the case centre [m] of a mesh position; or parts of a velocity."""
        return mesh_to_east_north(self.angle, x, y)

    def to_mesh(self, east: Any, north: Any) -> tuple[Any, Any]:
        """The inverse of to_east_north."""
        return east_north_to_mesh(self.angle, east, north)

    @functools.cached_property
    def east(self) -> Array:
        """Of the case centre [m], (ni, nj)."""
        return self._east_north()[0]

    @functools.cached_property
    def north(self) -> Array:
        """Of the case centre [m], (ni, nj)."""
        return self._east_north()[1]

    def _east_north(self) -> tuple[Array, Array]:
        # In 64 bits: a longitude in 32 bits is good to a metre only.
        x, y = (np.asarray(c[:, :, 0], np.float64) for c in (self.xc, self.yc))
        east, north = self.to_east_north(x, y)
        return east, north

    @functools.cached_property
    def longitude(self) -> Array:
        """Of the columns [degrees], (ni, nj)."""
        return np.asarray(self.case.longitude_latitude(self.east, self.north)[0])

    @functools.cached_property
    def latitude(self) -> Array:
        """Of the columns [degrees], (ni, nj)."""
        return np.asarray(self.case.longitude_latitude(self.east, self.north)[1])

    def nearest_column(self, east: float, north: float) -> tuple[int, int]:
        """The array indices of the mesh column nearest to a position."""
        distance = np.hypot(self.east - east, self.north - north)
        i, j = np.unravel_index(np.argmin(distance), distance.shape)
        return int(i), int(j)

    def _cells(self, east: Any, north: Any) -> Cells:
        east, north = np.broadcast_arrays(np.float64(east), np.float64(north))
        x, y = self.to_mesh(east, north)
        return Cells.of_points(self.xc[:, 0, 0], self.yc[0, :, 0], x, y)

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
        """A field `height` metres above ground, (ni, nj): linear in the logarithm of the height,
        below the second cell centre as it is there; nan where a column ends below. For the wind,
        which falls towards the ground, see flow."""
        return AtHeight.of_columns(self.zc, self.z0, height).value(field)

    def flow(self, height: float) -> Flow:
        """The wind `height` metres above ground over all columns, (ni, nj)."""
        columns = Columns(self.zc, self.u, self.v, self.w, self.p, self.tke, self.z0)
        flow = Flow.of_columns(columns, height, self.angle)
        return replace(flow, inflow=(float(flow.u[0, 0]), float(flow.v[0, 0])))

    def flow_at(
        self,
        height: float,
        *,
        east: Any = None,
        north: Any = None,
        longitude: Any = None,
        latitude: Any = None,
    ) -> Flow:
        """The wind `height` metres above ground at points, given in metres from the case centre or
        in degrees; bilinear between the columns, nan outside the mesh."""
        given = tuple(n is not None for n in (east, north, longitude, latitude))
        if given == (False, False, True, True):
            east, north = self.case.east_north(np.float64(longitude), np.float64(latitude))
        elif given != (True, True, False, False):
            raise TypeError("give the points as east and north, or as longitude and latitude")
        return self.flow(height).at(self._cells(east, north))

    def speed_at_height(self, height: float) -> Array:
        """Horizontal wind speed [m/s] `height` metres above ground, (ni, nj)."""
        return self.flow(height).speed

    def speed_up(self, height: float) -> Array:
        """The speed divided by that of the inflow column at the same height above ground."""
        return self.flow(height).speed_up

    def turbulence_intensity(self, height: float) -> Array:
        """sqrt(2/3 k) over the speed, a fraction."""
        return self.flow(height).turbulence_intensity

    def flow_angle(self, height: float) -> Array:
        """Of the wind against the horizontal, upwards positive [degrees]."""
        return self.flow(height).flow_angle

    def turn(self, height: float) -> Array:
        """Of the wind against the inflow, clockwise positive [degrees]."""
        return self.flow(height).turn

    def shear(self, height: float) -> Array:
        """Exponent of the speed between height/sqrt(2) and height*sqrt(2)."""
        return self.flow(height).shear

    def profile(self, i: int, j: int) -> Profile:
        """The profile of a mesh column; i and j are indices of the arrays, d.u[i, j]."""
        columns = {name: getattr(self, name)[i, j] for name in START_FIELDS}
        z = self.zc[i, j]
        return Profile(z_agl=z - z[0], z_asl=z, z0=float(self.z0[i, j]), **columns)


def usable_directions(
    directory: PathLike,
    prefix: str = "",
    tags: Iterable[str] | None = None,
    case: PathLike | Case | None = None,
) -> tuple[list[Direction], list[str]]:
    """The directions of the last run that can be looked at, converged or not (their `state` tells),
    and a line on each that was left out, with the reason, or that is doubtful. With `tags` these
    directions only."""
    usable: list[Direction] = []
    remarks: list[str] = []
    rows = direction_states(directory, prefix)
    angles = _case_angles(directory, case)
    asked = set(tags or [row.tag for row in rows] + wd_tags(directory, prefix))
    for tag, angle, state in rows:
        if tag not in asked:
            continue
        wind = f"wind from {angle:.1f} degrees"
        if state == 3:
            remarks.append(f"{wind}: left out: diverged")
            continue
        with warnings.catch_warnings(record=True) as doubts:
            warnings.simplefilter("always", OldResultWarning)
            try:
                usable.append(Direction(directory, angles.get(tag, tag), prefix=prefix, case=case))
            except (OSError, FormatError) as problem:
                remarks.append(f"{wind}: left out: {problem}")
        remarks += [
            f"{wind}: {doubt.message}"
            for doubt in doubts
            if issubclass(doubt.category, OldResultWarning)
        ]
    table = state_table(directory, prefix).name
    remarks += [
        f"{tag}: left out: {table} does not name it, it is not of the last run"
        for tag in sorted(asked - {row.tag for row in rows})
    ]
    return usable, remarks


def _case_angles(directory: PathLike, case: PathLike | Case | None) -> dict[str, float]:
    """The angles of the case by their tags, which cut them; none where there is no case to read."""
    try:
        if not isinstance(case, Case):
            case = read_case(find_case(directory) if case is None else case)
    except (OSError, FormatError):
        return {}
    return {wd_tag(angle): angle for angle in case.angles}
