"""What a run tells in small text files: restart.info, log-meshnumber and the view tables."""

from __future__ import annotations

from dataclasses import dataclass
from pathlib import Path

import numpy as np

from torvex.arrays import Array, PathLike
from torvex.free_form import line_at, lines_of, read_counts, read_reals
from torvex.records import FormatError


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
    lines = lines_of(path)
    (count,) = read_counts(path, line_at(path, lines, 1, "the iteration count"), 1, "line 1")
    residuals = read_reals(path, line_at(path, lines, 2, "four residuals"), 4, "line 2")
    extents = None
    if len(lines) > 2 and lines[2].strip():
        ni, nj, nk = read_counts(path, lines[2:3], 3, "line 3")
        extents = (ni, nj, nk)
    m, u, v, w = residuals
    return RestartInfo(count, m, u, v, w, extents)


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
    x: Array  # positions of the cell-centred values, mesh axes [m]
    y: Array
    z: Array


def read_mesh_log(path: PathLike) -> MeshLog:
    path = Path(path)
    lines = lines_of(path)
    heads: list[float] = []
    for number, label in enumerate(("ni", "nj", "nk", "x1", "x2", "x3", "y1", "y2"), start=1):
        line = line_at(path, lines, number, f"a number and ({label})")[0]
        text, _, found = line.partition("(")
        if found.strip() != label + ")":
            raise FormatError(
                path, f"line {number}: {line.strip()}, expected a number and " f"({label})"
            )
        where = f"line {number}"
        if label.startswith("n"):
            heads += read_counts(path, [text], 1, where)
        else:
            heads += read_reals(path, [text], 1, where)
    ni, nj, nk = (int(count) for count in heads[:3])
    at = 8
    blocks = []
    # The block of z carries the heading of x.
    titles = ("#==x(i)==", "#==y(j)==", "#==x(i)==")
    for name, heading, count in zip("xyz", titles, (ni, nj, nk)):
        if line_at(path, lines, at + 1, heading)[0].strip() != heading:
            raise FormatError(path, f"line {at + 1}: {lines[at].strip()}, expected {heading}")
        block = lines[at + 1 : at + 1 + count]
        blocks.append(np.array(read_reals(path, block, count, f"values of {name}"), np.float32))
        at += 1 + count
    x1, x2, x3, y1, y2 = heads[3:]
    return MeshLog(ni, nj, nk, x1, x2, x3, y1, y2, *blocks)


_VIEW_COLUMNS = {
    "view-wind_direction": ("angle", "status"),
    "view-convergence": (
        "iteration",
        "resid_m",
        "resid_u",
        "resid_v",
        "resid_w",
        "resid_k",
        "resid_e",
    ),
    "view-monitor": ("iteration", "u", "v", "w", "p", "tke", "ted"),
}
_SLOT_BYTES = 120


def read_view(path: PathLike) -> dict[str, Array]:
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
        read_reals(path, [slot], len(columns), f"slot {number}")
        for number, slot in enumerate(slots[1:used], start=2)
    ]
    table = np.array(rows, np.float64).reshape(-1, len(columns))
    whole = ("iteration", "status")
    return {
        name: table[:, n].astype(np.int32 if name in whole else np.float32)
        for n, name in enumerate(columns)
    }
