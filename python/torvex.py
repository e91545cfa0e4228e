"""Reads what a run of Torvex leaves behind into numpy arrays.

    import torvex
    d = torvex.Direction("build/demo/big_butte", 240)
    d.speed_at_height(50.0)          # map of the wind speed 50 m above ground [m/s], (ni, nj)
    d.u[i - 1, j - 1, k - 1]         # the u(i,j,k) of the documentation
    d.east, d.north                  # where the mesh columns stand [m], (ni, nj)

Arrays have the shape (ni, nj, nk) in Fortran order. Those of binary files are mapped, not loaded:
they are read-only (take .copy() to change one) and cost no memory until they are touched. A file
that is not what it should be raises FormatError, which names it and says what was expected.
"""

from __future__ import annotations

import functools
import itertools
import math
import os
import re
import warnings
from collections.abc import Iterable, Iterator
from dataclasses import dataclass
from pathlib import Path
from typing import NamedTuple

import numpy as np

PathLike = str | os.PathLike[str]


class FormatError(ValueError):
    """A file is not what its name says: the file, what was expected, and what stands there."""

    def __init__(self, path: PathLike, message: str) -> None:
        super().__init__(f"{path}: {message}")
        self.path = Path(path)


# Binary records --------------------------------------------------------------------------------

# The most data bytes of a subrecord.
MAX_SUBRECORD_BYTES = 2147483639


@dataclass(frozen=True)
class Record:
    """One record of a binary file; in more than one piece where it was cut into subrecords."""

    path: Path
    number: int  # in the file, from 1
    pieces: tuple[np.ndarray, ...]  # views of the mapped file, bytes

    @property
    def nbytes(self) -> int:
        return sum(piece.nbytes for piece in self.pieces)

    def values(self, dtype: str, count: int, what: str) -> np.ndarray:
        """`count` values of four bytes; a view of the file unless the record was cut."""
        if self.nbytes != 4 * count:
            raise FormatError(
                self.path,
                f"record {self.number} has {self.nbytes} bytes, expected {4 * count} ({what})",
            )
        whole = self.pieces[0] if len(self.pieces) == 1 else np.concatenate(self.pieces)
        return whole.view(dtype)


def read_records(path: PathLike) -> list[Record]:
    """All records of a sequential binary file, little-endian.

    A record is one or more subrecords: length, data, length again, the lengths in four bytes. A
    negative length in front says that the record goes on in the next subrecord, a negative length
    behind that a subrecord precedes. Only the lengths are looked at here, all of them.
    """
    path = Path(path)
    if path.stat().st_size == 0:
        raise FormatError(path, "the file is empty, expected binary records")
    data = np.memmap(path, dtype=np.uint8, mode="r").view(np.ndarray)

    records: list[Record] = []
    pieces: list[np.ndarray] = []

    def length_at(at: int) -> int:
        if at + 4 > data.size:
            raise FormatError(path, f"the file ends at byte {data.size} within a length of record "
                                    f"{len(records) + 1}")
        return int(data[at : at + 4].view("<i4")[0])

    at = 0
    while at < data.size or pieces:
        front = length_at(at)
        record = f"record {len(records) + 1}"
        if abs(front) > MAX_SUBRECORD_BYTES:
            raise FormatError(path, f"byte {at}: the length {front} in front of {record} is beyond "
                                    f"{MAX_SUBRECORD_BYTES}")
        end = at + 4 + abs(front)
        if end > data.size:
            raise FormatError(path, f"the file ends at byte {data.size}, but {record} goes on to "
                                    f"byte {end}")
        behind = length_at(end)
        expected = -abs(front) if pieces else abs(front)
        if behind != expected:
            raise FormatError(path, f"byte {end}: the length behind {record} is {behind}, expected "
                                    f"{expected}")
        pieces.append(data[at + 4 : end])
        if front >= 0:
            records.append(Record(path, len(records) + 1, tuple(pieces)))
            pieces = []
        at = end + 4
    return records


# The binary file family --------------------------------------------------------------------------

_START = ("u", "v", "w", "p", "tke", "ted")
_RESULT = (*_START, "flxU", "flxV", "flxW", "vis", "pp")

# What follows the identifier and the extents. "iteration" and "residual" are single numbers.
_RECORDS: dict[int, tuple[str, ...]] = {
    101: ("xn", "yn", "zn"),
    102: ("z0",),
    103: ("xc", "yc", "zc"),
    104: ("gp_cf", "gp_density", "gp_length", "gp_z0"),
    111: _START,
    112: (*_RESULT, "iteration", "residual"),
    122: (*_RESULT, "iteration", "residual", "lm"),
    132: (*_RESULT, "iteration", "residual", "lm", "tkl", "viskl"),
}
_KINDS = {
    "xyz": (101,), "z0": (102,), "xyzc": (103,), "ccd": (104,), "vpkeinp": (111,),
    "vpkeout": (112, 122, 132),
}
_TWO_DIMENSIONAL = ("z0", "gp_z0")


@dataclass(frozen=True)
class TufFile:
    """A binary file: its arrays by name, file["u"]."""

    path: Path
    id: int
    extents: tuple[int, ...]
    arrays: dict[str, np.ndarray]
    iteration: int | None = None  # of results: the count in the name
    residual: float | None = None

    def __getitem__(self, name: str) -> np.ndarray:
        if name not in self.arrays:
            raise KeyError(f"{self.path} has no array {name}, only {', '.join(self.arrays)}")
        return self.arrays[name]


def read_tuf(path: PathLike, kind: str | None = None) -> TufFile:
    """Any of the binary files, told apart by the identifier in the first record:

    xyz      101            xn yn zn             mesh nodes [m]
    z0       102            z0                   roughness length of the ground [m], (ni, nj)
    xyzc     103            xc yc zc             cell centres [m]
    ccd      104            gp_cf gp_density gp_length gp_z0   canopy; the last may be missing
    vpkeinp  111            u v w p tke ted      start fields
    vpkeout  112, 122, 132  u v w p tke ted flxU flxV flxW vis pp, then lm (122),
                            or lm tkl viskl (132)

    `kind` is one of these names, and then no other file is accepted.
    """
    path = Path(path)
    accepted = _RECORDS.keys() if kind is None else _KINDS[kind]
    records = read_records(path)
    file_id = int(records[0].values("<i4", 1, "the identifier of the file")[0])
    if file_id not in accepted:
        expected = " or ".join(map(str, accepted)) + (f" ({kind})" if kind else "")
        raise FormatError(path, f"the identifier is {file_id}, expected {expected}")
    names = _RECORDS[file_id]
    missing_last = file_id == 104 and len(records) == 1 + len(names)
    if len(records) != 2 + len(names) and not missing_last:
        raise FormatError(path, f"{len(records)} records, expected {2 + len(names)} in a file with "
                                f"the identifier {file_id}")

    dimensions = 2 if names == ("z0",) else 3
    extents = tuple(int(n) for n in records[1].values("<i4", dimensions, "the array extents"))
    if min(extents) < 1:
        raise FormatError(path, f"the array extents are {extents}, expected positive numbers")

    arrays: dict[str, np.ndarray] = {}
    numbers: dict[str, int | float] = {}
    for name, record in zip(names, records[2:]):
        if name == "iteration":
            numbers[name] = int(record.values("<i4", 1, name)[0])
        elif name == "residual":
            numbers[name] = float(record.values("<f4", 1, name)[0])
        else:
            shape = extents[:2] if name in _TWO_DIMENSIONAL else extents
            values = record.values("<f4", math.prod(shape), f"{name} of {shape}")
            arrays[name] = values.reshape(shape, order="F")
    return TufFile(path, file_id, extents, arrays, **numbers)


# Texts -------------------------------------------------------------------------------------------

# A real with a D exponent, or one without a letter, as Fortran programs write them.
_FORTRAN_REAL = re.compile(r"([+-]?(?:\d+\.?\d*|\.\d+))(?:[dDqQ]([+-]?\d+)|([+-]\d+))")


def _real(word: str) -> float:
    """Raises ValueError where the word is no number."""
    odd = _FORTRAN_REAL.fullmatch(word)
    if odd:
        return float(f"{odd[1]}e{odd[2] or odd[3]}")
    if "_" in word:
        raise ValueError(word)
    return float(word)


def _free_form(lines: Iterable[str]) -> Iterator[str | None]:
    """The words of free-form input: blanks or a comma between them, 3*0.5 for a repeated word,
    None for one left out between two commas; a slash ends it all."""
    word_open = False  # the last word still owns the comma that may follow
    for line in lines:
        for word in re.findall(r"[^\s,/]+|[,/]", line):
            if word == "/":
                return
            if word == ",":
                if not word_open:
                    yield None
                word_open = False
                continue
            word_open = True
            count, star, value = word.partition("*")
            if star and count.isdecimal() and int(count) > 0:
                yield from itertools.repeat(value or None, int(count))
            else:
                yield word


def _values(path: Path, lines: Iterable[str], count: int, where: str) -> list[float]:
    """`count` reals in free form; `where` says in a message which they are."""
    words = list(itertools.islice(_free_form(lines), count))
    values = []
    for word in words:
        try:
            values.append(_real(word or "nothing"))
        except ValueError:
            raise FormatError(path, f"{where}: {word or 'nothing'}, expected a number") from None
    if len(values) < count:
        raise FormatError(path, f"{where}: {len(values)} values, expected {count}")
    return values


def _counts(path: Path, lines: Iterable[str], count: int, where: str) -> list[int]:
    values = _values(path, lines, count, where)
    if any(value != math.floor(value) for value in values):
        raise FormatError(path, f"{where}: {values}, expected whole numbers")
    return [int(value) for value in values]


def _lines(path: PathLike) -> list[str]:
    text = Path(path).read_text(encoding="utf-8", errors="replace")
    return [line.rstrip("\r") for line in text.split("\n")]


def _line(path: PathLike, lines: list[str], number: int, what: str) -> list[str]:
    if number > len(lines) or not lines[number - 1].strip():
        raise FormatError(path, f"line {number} is missing, expected {what}")
    return lines[number - 1 : number]


@dataclass(frozen=True)
class RestartInfo:
    """Where a resume of a direction begins."""

    outer_count: int
    resid_m: float
    resid_u: float
    resid_v: float
    resid_w: float
    extents: tuple[int, int, int] | None = None  # written by nested runs


def read_restart_info(path: PathLike) -> RestartInfo:
    path = Path(path)
    lines = _lines(path)
    (count,) = _counts(path, _line(path, lines, 1, "the iteration count"), 1, "line 1")
    residuals = _values(path, _line(path, lines, 2, "four residuals"), 4, "line 2")
    extents = None
    if len(lines) > 2 and lines[2].strip():
        extents = tuple(_counts(path, lines[2:3], 3, "line 3"))
    return RestartInfo(count, *residuals, extents)


@dataclass(frozen=True)
class MeshLog:
    """`log-meshnumber`: counts, borders and lines of the mesh, common to all directions."""

    ni: int
    nj: int
    nk: int
    x1: float  # from here to x2 the additional area upwind, before it the buffer zone [m]
    x2: float  # x2, x3, y1, y2: borders of the square round the study area
    x3: float
    y1: float
    y2: float
    x: np.ndarray  # positions of the cell-centred values, mesh axes [m]
    y: np.ndarray
    z: np.ndarray


def read_mesh_log(path: PathLike) -> MeshLog:
    path = Path(path)
    lines = _lines(path)
    heads = {}
    for number, label in enumerate(("ni", "nj", "nk", "x1", "x2", "x3", "y1", "y2"), start=1):
        line = _line(path, lines, number, f"a number and ({label})")[0]
        text, _, found = line.partition("(")
        if found.strip() != label + ")":
            raise FormatError(path, f"line {number}: {line.strip()}, expected a number and "
                                    f"({label})")
        read = _counts if label.startswith("n") else _values
        heads[label] = read(path, [text], 1, f"line {number}")[0]
    at = 8
    blocks = {}
    # The block of z carries the heading of x.
    for name, heading in (("x", "#==x(i)=="), ("y", "#==y(j)=="), ("z", "#==x(i)==")):
        if _line(path, lines, at + 1, heading)[0].strip() != heading:
            raise FormatError(path, f"line {at + 1}: {lines[at].strip()}, expected {heading}")
        count = heads["n" + {"x": "i", "y": "j", "z": "k"}[name]]
        block = lines[at + 1 : at + 1 + count]
        blocks[name] = np.array(_values(path, block, count, f"values of {name}"), np.float32)
        at += 1 + count
    return MeshLog(**heads, **blocks)


_VIEW_COLUMNS = {
    "view-wind_direction": ("angle", "status"),
    "view-convergence": (
        "iteration", "resid_m", "resid_u", "resid_v", "resid_w", "resid_k", "resid_e",
    ),
    "view-monitor": ("iteration", "u", "v", "w", "p", "tke", "ted"),
}
_SLOT_BYTES = 120


def read_view(path: PathLike) -> dict[str, np.ndarray]:
    """The columns of a `view-*` table by name; the file's name says which table it is.

    Velocity of the monitor point is relative to the inflow's at the monitor height, pressure to its
    dynamic pressure. The tables may be read while a run writes them.
    """
    path = Path(path)
    columns = next((c for name, c in _VIEW_COLUMNS.items() if name in path.name), None)
    if columns is None:
        raise FormatError(path, f"expected a name with one of {', '.join(_VIEW_COLUMNS)}")
    data = path.read_bytes()
    slots = [
        data[at : at + _SLOT_BYTES].decode("latin-1").strip()
        for at in range(0, len(data), _SLOT_BYTES)
    ]
    if not slots or not slots[0].isdecimal():
        raise FormatError(path, "slot 1 must hold the number of the last used slot")
    used = int(slots[0])
    if not 1 <= used <= len(slots):
        raise FormatError(path, f"slot 1 says {used} slots, the file holds {len(slots)}")
    rows = [
        _values(path, [slot], len(columns), f"slot {number}")
        for number, slot in enumerate(slots[1:used], start=2)
    ]
    table = np.array(rows, np.float64).reshape(-1, len(columns))
    whole = ("iteration", "status")
    return {
        name: table[:, n].astype(np.int32 if name in whole else np.float32)
        for n, name in enumerate(columns)
    }


class Profile(NamedTuple):
    """A vertical profile, from the ground upwards."""

    z_agl: np.ndarray  # height above ground [m]
    u: np.ndarray  # velocity in the axes of the mesh: downwind, to the left, up [m/s]
    v: np.ndarray
    w: np.ndarray
    p: np.ndarray  # pressure [Pa]
    tke: np.ndarray  # turbulence energy [m2/s2]
    ted: np.ndarray  # its dissipation [m2/s3]
    z_asl: np.ndarray  # height above the datum of the map [m]

    @property
    def speed(self) -> np.ndarray:
        """Horizontal wind speed [m/s]."""
        return np.hypot(self.u, self.v)


def read_profile(path: PathLike) -> Profile:
    """A `.tpd` profile: number of levels, titles, eight columns."""
    path = Path(path)
    lines = _lines(path)
    (levels,) = _counts(path, _line(path, lines, 1, "the number of levels"), 1, "line 1")
    if levels < 1:
        raise FormatError(path, f"line 1: {levels} levels, expected 1 or more")
    titles = _line(path, lines, 2, "column titles")[0].split()
    if titles != list(Profile._fields):
        raise FormatError(path, f"line 2: {' '.join(titles)}, expected {' '.join(Profile._fields)}")
    rows = [
        _values(path, _line(path, lines, number, f"level {number - 2} of {levels}"), 8,
                f"line {number}")
        for number in range(3, levels + 3)
    ]
    return Profile(*np.array(rows, np.float32).T)


class Label(NamedTuple):
    """A site that has a profile."""

    index: int  # in the case file, from 1
    label: str
    position: str  # its place in the names of profiles


LABEL_LIST = "_latlon_label_list.txt"


def read_labels(path: PathLike) -> list[Label]:
    """The label list; labels may hold commas."""
    labels = []
    for number, line in enumerate(_lines(path), start=1):
        if line.strip():
            index, first, rest = line.partition(",")
            label, second, position = rest.rpartition(",")
            if not (first and second and index.strip().isdecimal() and position.strip()):
                raise FormatError(path, f"line {number}: {line.strip()}, expected index, label, "
                                        "position")
            labels.append(Label(int(index), label.strip(), position.strip()))
    return labels


@dataclass(frozen=True)
class TextMap:
    """A map of elevation or roughness: values[i, j] stands at longitude[i], latitude[j]."""

    longitude: np.ndarray  # [degrees], rising eastwards
    latitude: np.ndarray  # [degrees], rising northwards
    values: np.ndarray  # [m]
    geodetic_system: str  # "TKY", "JGD", "WGS", or "" where the map does not say
    header: dict[str, str]  # all items as they stand


_MAP_TAG = "<TORVEX_MAP lon-lat>"


def _map_items(line: str) -> Iterator[tuple[str, str]]:
    for item in line.split(","):
        key, equals, value = item.partition("=")
        if equals:
            yield key.strip(), value.strip()


def _geodetic_system(value: str) -> str:
    value = value[:10].strip().removeprefix("'")
    if value.startswith(("TD", "TKY")):
        return "TKY"
    return next((name for name in ("JGD", "WGS") if value.startswith(name)), "")


def read_map(path: PathLike) -> TextMap:
    """A text map: tag, header of `key = value` items, --DATA--, rows going north."""
    path = Path(path)
    header: dict[str, str] = {}
    geodetic_system = ""
    with path.open(encoding="utf-8", errors="replace") as lines:
        tag = next(lines, "").rstrip()
        if tag != _MAP_TAG:
            raise FormatError(path, f"the first line is {tag[:40]!r}, expected {_MAP_TAG!r}")
        for line in lines:
            if line.startswith("#"):
                continue
            if line.rstrip() == "--DATA--":
                break
            for key, value in _map_items(line):
                header[key] = value
                if key == "geodetic_system":
                    geodetic_system = _geodetic_system(value) or geodetic_system
        else:
            raise FormatError(path, "the file ends before the line '--DATA--'")

        def item(key: str, read, count: int = 1) -> list:
            if key not in header:
                raise FormatError(path, f"the header ends without {key}")
            return read(path, [header[key]], count, key)

        n_lon, n_lat = item("n_lon", _counts)[0], item("n_lat", _counts)[0]
        d_lon, d_lat = item("d_lon", _values)[0], item("d_lat", _values)[0]
        west = item("base_longitude", _values, 2)
        south = item("base_latitude", _values, 2)
        if min(n_lon, n_lat) < 2:
            raise FormatError(path, f"{n_lon} columns and {n_lat} rows, expected 2 or more of both")
        if min(d_lon, d_lat) <= 0:
            raise FormatError(path, f"the spacings are {d_lon} and {d_lat}, expected above 0")
        values = np.empty((n_lon, n_lat), np.float32, order="F")
        for j in range(n_lat):
            # What is left of a row's last line belongs to no row.
            values[:, j] = _values(path, lines, n_lon, f"row {j + 1} of {n_lat}")
            if not np.isfinite(values[:, j]).all():
                raise FormatError(path, f"row {j + 1} of {n_lat} holds a value that is not finite")
    return TextMap(
        longitude=west[0] + (west[1] + d_lon * np.arange(n_lon)) / 60,
        latitude=south[0] + (south[1] + d_lat * np.arange(n_lat)) / 60,
        values=values,
        geodetic_system=geodetic_system,
        header=header,
    )


# One wind direction ------------------------------------------------------------------------------


def wd_tag(angle: float) -> str:
    """The direction in names of files: 022_5 for 22.5 degrees. Further digits are cut off."""
    tenths = math.floor(float(np.float32(angle)) * 10 + 0.01)
    return f"{tenths // 10:03d}_{tenths % 10}"


def wd_tags(directory: PathLike, prefix: str = "") -> list[str]:
    """The directions of a run that have a mesh, rising."""
    before, behind = f"{prefix}restart-", "-xyzc.tuf"
    names = (path.name for path in Path(directory).glob(f"{before}*{behind}"))
    return sorted(name.removeprefix(before).removesuffix(behind) for name in names)


class OldResultWarning(UserWarning):
    """A result is older than the mesh that it is read with."""


STATES = {0: "not finished", 1: "converged", 2: "not converged", 3: "diverged"}


class DirectionState(NamedTuple):
    """What the run's own table says of a direction."""

    tag: str
    angle: float  # as in the table, with one decimal
    state: int  # a key of STATES; 0: entered, the run goes on or was interrupted


def _state_table(directory: PathLike, prefix: str) -> Path:
    return Path(directory) / f"{prefix}view-wind_direction.dat"


def direction_states(directory: PathLike, prefix: str = "") -> list[DirectionState]:
    """The directions that the last run in a directory has entered, in its order.

    The table rounds an angle to one decimal where a tag cuts it: 011_2 may stand behind 11.3. Of
    two such tags the one with a mesh is meant; of two meshes the newer one by the later row.
    """
    table = read_view(_state_table(directory, prefix))

    def entered(tag: str) -> float:
        mesh = Path(directory) / f"{prefix}restart-{tag}-xyzc.tuf"
        return mesh.stat().st_mtime if mesh.exists() else -1.0

    rows: list[DirectionState] = []
    taken: set[str] = set()
    for angle, state in zip(reversed(table["angle"].tolist()), reversed(table["status"].tolist())):
        tenths = round(angle * 10)
        tags = [f"{n // 10:03d}_{n % 10}" for n in (tenths, tenths - 1) if n >= 0]
        tag = max((t for t in tags if t not in taken), key=entered, default=tags[0])
        taken.add(tag)
        rows.append(DirectionState(tag, round(angle, 1), state))
    return rows[::-1]


def usable_directions(
    directory: PathLike, prefix: str = "", tags: Iterable[str] | None = None
) -> tuple[list[Direction], list[str]]:
    """The directions of the last run that can be looked at, converged or not (their `state` tells),
    and a line on each that was left out, with the reason. With `tags` these directions only."""
    usable: list[Direction] = []
    left_out: list[str] = []
    rows = direction_states(directory, prefix)
    asked = {row.tag for row in rows} | set(wd_tags(directory, prefix)) if tags is None else set(tags)
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
    table = _state_table(directory, prefix).name
    left_out += [f"{tag}: left out: {table} does not name it, it is not of the last run"
                 for tag in sorted(asked - {row.tag for row in rows})]
    return usable, left_out


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

    xc: np.ndarray  # cell centres, mesh axes [m], z above the datum of the map
    yc: np.ndarray
    zc: np.ndarray
    z0: np.ndarray  # roughness length of the ground [m], (ni, nj)
    u: np.ndarray  # velocity, mesh axes [m/s]
    v: np.ndarray
    w: np.ndarray
    p: np.ndarray  # pressure [Pa]
    tke: np.ndarray  # turbulence energy [m2/s2]
    ted: np.ndarray  # its dissipation [m2/s3]
    flxU: np.ndarray  # volume flux through the face towards +i, +j, +k [m3/s]
    flxV: np.ndarray
    flxW: np.ndarray
    vis: np.ndarray  # effective viscosity [kg/(m s)]
    pp: np.ndarray  # pressure correction [Pa]
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
        self.stem = f"{prefix}restart-{self.tag}-"
        centres_path = self._path("xyzc.tuf")
        if not centres_path.exists():
            there = ", ".join(wd_tags(directory, prefix)) or "none"
            raise FileNotFoundError(f"{centres_path} is missing; directions there: {there}")

        centres = read_tuf(centres_path, "xyzc")
        self.ni, self.nj, self.nk = centres.extents
        named = self._named_iteration()
        if named is None and iteration is None:
            raise FileNotFoundError(self._without_result())
        self.result = self._fitting(
            self._result_path(named if iteration is None else iteration), "vpkeout"
        )
        self.iteration = self.result.iteration
        if self._path("xyz.tuf").exists():
            self.nodes
        if self._path("vpkeinp.tuf").exists():
            self.start
        self._compare_age(is_named=iteration in (None, named))
        roughness = self._fitting(self._path("z0.tuf"), "z0")
        for file in (centres, roughness, self.result):
            for name, array in file.arrays.items():
                setattr(self, name, array)

    def _path(self, name: str) -> Path:
        return self.directory / (self.stem + name)

    def _fitting(self, path: Path, kind: str) -> TufFile:
        file = read_tuf(path, kind)
        expected = (self.ni, self.nj, self.nk)[: len(file.extents)]
        if file.extents != expected:
            raise FormatError(path, f"the extents are {file.extents}, expected {expected} as in "
                                    "the mesh beside it; run the direction again")
        return file

    def _named_iteration(self) -> int | None:
        path = self._path("restart.info")
        if not path.exists():
            return None
        extents = self.restart_info.extents
        if extents not in (None, (self.ni, self.nj, self.nk)):
            raise FormatError(path, f"line 3: the extents are {extents}, those of the mesh beside it "
                                    f"{(self.ni, self.nj, self.nk)}; run the direction again")
        return self.restart_info.outer_count

    def _without_result(self) -> str:
        numbers = sorted({
            int(found[1])
            for path in self.directory.glob(self.stem + "vpkeout_*.tuf")
            if (found := re.search(r"vpkeout_(\d{5})(?:_r)?\.tuf$", path.name))
        })
        text = (f"{self._path('restart.info')} is missing: the mesh has no finished result; wait for "
                "the run, or run the direction again")
        if numbers:
            text += (f", or ask for a result with iteration=N, if it is of this mesh (there: "
                     f"{', '.join(map(str, numbers))})")
        return text

    def _result_path(self, iteration: int) -> Path:
        corrected = self._path(f"vpkeout_{iteration:05d}_r.tuf")
        return corrected if corrected.exists() else self._path(f"vpkeout_{iteration:05d}.tuf")

    def _compare_age(self, is_named: bool) -> None:
        # A resume renews the cell centres, but not the nodes that they are means of.
        nodes = self._path("xyz.tuf")
        mesh = nodes if nodes.exists() else self._path("xyzc.tuf")
        if self.result.path.stat().st_mtime_ns >= mesh.stat().st_mtime_ns:
            return
        text = (f"older than the mesh, {mesh.name}: it may be the result of an earlier case. Run the "
                "direction again; if only a copy has lost the times of files, copy with cp -a")
        if not is_named:
            raise FormatError(self.result.path, text)
        warnings.warn(f"{self.result.path}: {text}", OldResultWarning, stacklevel=3)

    @functools.cached_property
    def state(self) -> int | None:
        """State of the direction in the run's table, a key of STATES; None where the table is
        missing or does not name the direction."""
        if not _state_table(self.directory, self.prefix).exists():
            return None
        rows = direction_states(self.directory, self.prefix)
        return next((row.state for row in rows if row.tag == self.tag), None)

    # Files that are read when they are asked for.

    @functools.cached_property
    def nodes(self) -> TufFile:
        """Mesh nodes xn, yn, zn, one less than cells in each direction."""
        file = read_tuf(self._path("xyz.tuf"), "xyz")
        expected = (self.ni - 1, self.nj - 1, self.nk - 1)
        if file.extents != expected:
            raise FormatError(file.path, f"the extents are {file.extents}, expected {expected}")
        return file

    @functools.cached_property
    def start(self) -> TufFile:
        """The fields that the iteration began with."""
        return self._fitting(self._path("vpkeinp.tuf"), "vpkeinp")

    @functools.cached_property
    def canopy(self) -> TufFile:
        return self._fitting(self._path("ccd.tuf"), "ccd")

    @functools.cached_property
    def restart_info(self) -> RestartInfo:
        return read_restart_info(self._path("restart.info"))

    def _profile_path(self, position: str) -> Path:
        return self.directory / f"{self.prefix}sites-{self.tag}-{position}.tpd"

    def sites(self) -> list[tuple[str, Profile]]:
        """Label and profile of the sites in the label list. The list is that of the direction
        solved last; a site outside the mesh of this one has no profile and is left out."""
        labels = read_labels(self.directory / LABEL_LIST)
        paths = ((site.label, self._profile_path(site.position)) for site in labels)
        return [(label, read_profile(path)) for label, path in paths if path.exists()]

    def inflow_profile(self) -> Profile:
        return read_profile(self._profile_path("_INFLOW_PROFILE"))

    # Places: a position or a horizontal vector in the axes of the mesh and in east and north.

    def _turn(self) -> tuple[float, float]:
        # At 270 degrees x points east and y north; at 0 degrees x = -north, y = east.
        r = math.radians(self.angle - 270)
        return math.cos(r), math.sin(r)

    def to_east_north(self, x, y):
        """East and north of the case centre [m] of a mesh position; or parts of a velocity."""
        c, s = self._turn()
        return x * c + y * s, y * c - x * s

    def to_mesh(self, east, north):
        """The inverse of to_east_north."""
        c, s = self._turn()
        return east * c - north * s, east * s + north * c

    @functools.cached_property
    def east(self) -> np.ndarray:
        return self.to_east_north(self.xc[:, :, 0], self.yc[:, :, 0])[0]

    @functools.cached_property
    def north(self) -> np.ndarray:
        return self.to_east_north(self.xc[:, :, 0], self.yc[:, :, 0])[1]

    def nearest_column(self, east: float, north: float) -> tuple[int, int]:
        """The array indices of the mesh column nearest to a position."""
        distance = np.hypot(self.east - east, self.north - north)
        i, j = np.unravel_index(np.argmin(distance), distance.shape)
        return int(i), int(j)

    # Heights.

    @property
    def ground(self) -> np.ndarray:
        """Height of the ground [m], (ni, nj)."""
        return self.zc[:, :, 0]

    @functools.cached_property
    def z_agl(self) -> np.ndarray:
        """Height of the cell centres above ground [m]; an array of its own."""
        return self.zc - self.zc[:, :, :1]

    def at_height(self, field: np.ndarray, height: float) -> np.ndarray:
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

    def speed_at_height(self, height: float) -> np.ndarray:
        """Horizontal wind speed [m/s] `height` metres above ground, (ni, nj)."""
        return np.hypot(self.at_height(self.u, height), self.at_height(self.v, height))

    def speed_up(self, height: float) -> np.ndarray:
        """The speed divided by that of the inflow column at the same height above ground."""
        speed = self.speed_at_height(height)
        return speed / speed[0, 0]

    def profile(self, i: int, j: int) -> Profile:
        """The profile of a mesh column; i and j are indices of the arrays, d.u[i, j]."""
        columns = {name: getattr(self, name)[i, j] for name in _START}
        z = self.zc[i, j]
        return Profile(z_agl=z - z[0], z_asl=z, **columns)
