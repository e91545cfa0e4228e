"""Which directions a directory holds, and what the last run there says of them."""

from __future__ import annotations

import math
from pathlib import Path
from typing import NamedTuple

import numpy as np

from torvex.arrays import PathLike
from torvex.tables import read_view


def wd_tag(angle: float) -> str:
    """The direction in names of files: 022_5 for 22.5 degrees. Further digits are cut off."""
    tenths = math.floor(float(np.float32(angle)) * 10 + 0.01)
    return f"{tenths // 10:03d}_{tenths % 10}"


def wd_tags(directory: PathLike, prefix: str = "") -> list[str]:
    """The directions of a run that have a mesh, rising."""
    before, behind = f"{prefix}restart-", "-xyzc.tuf"
    names = (path.name for path in Path(directory).glob(f"{before}*{behind}"))
    return sorted(name.removeprefix(before).removesuffix(behind) for name in names)


STATES = {0: "not finished", 1: "converged", 2: "not converged", 3: "diverged"}


class DirectionState(NamedTuple):
    """What the run's own table says of a direction."""

    tag: str
    angle: float  # as in the table, with one decimal
    state: int  # a key of STATES; 0: entered, the run goes on or was interrupted


def state_table(directory: PathLike, prefix: str) -> Path:
    return Path(directory) / f"{prefix}view-wind_direction.dat"


def direction_states(directory: PathLike, prefix: str = "") -> list[DirectionState]:
    """The directions that the last run in a directory has entered, in its order.

    The table rounds an angle to one decimal where a tag cuts it: 011_2 may stand behind 11.3. Of
    two such tags the one with a mesh is meant; of two meshes the newer one by the later row.
    """
    path = state_table(directory, prefix)
    if not path.exists():
        raise FileNotFoundError(
            f"{path} is missing: no run has begun there; name the directory of a run, and the "
            "prefix of its files if they have one"
        )
    table = read_view(path)

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
