"""Which result belongs to the mesh of a direction."""

from __future__ import annotations

import re
import warnings
from dataclasses import dataclass
from pathlib import Path

from torvex.records import FormatError
from torvex.tables import read_restart_info
from torvex.tuf import TufFile, read_tuf


class OldResultWarning(UserWarning):
    """A result is older than the mesh that it is read with."""


@dataclass(frozen=True)
class DirectionFiles:
    """The names of a direction's files."""

    directory: Path
    prefix: str
    tag: str

    @property
    def stem(self) -> str:
        return f"{self.prefix}restart-{self.tag}-"

    def path(self, name: str) -> Path:
        return self.directory / (self.stem + name)

    def profile(self, position: str) -> Path:
        return self.directory / f"{self.prefix}sites-{self.tag}-{position}.tpd"

    def result(self, iteration: int) -> Path:
        """A corrected result comes before the plain one."""
        corrected = self.path(f"vpkeout_{iteration:05d}_r.tuf")
        return corrected if corrected.exists() else self.path(f"vpkeout_{iteration:05d}.tuf")

    def results(self) -> list[int]:
        """The iterations of which there are results, rising."""
        names = (path.name for path in self.directory.glob(self.stem + "vpkeout_*.tuf"))
        found = (re.search(r"vpkeout_(\d{5})(?:_r)?\.tuf$", name) for name in names)
        return sorted({int(match[1]) for match in found if match})

    def mesh(self) -> Path:
        """The nodes where they are there: a resume renews the cell centres, their means."""
        nodes = self.path("xyz.tuf")
        return nodes if nodes.exists() else self.path("xyzc.tuf")


def read_fitting(path: Path, kind: str, expected: tuple[int, ...]) -> TufFile:
    """A file whose extents are those of the mesh."""
    file = read_tuf(path, kind)
    if file.extents != expected[: len(file.extents)]:
        raise FormatError(
            path,
            f"the extents are {file.extents}, expected {expected[: len(file.extents)]} as in the "
            "mesh beside it; run the direction again",
        )
    return file


def read_result(
    files: DirectionFiles, extents: tuple[int, ...], iteration: int | None = None
) -> TufFile:
    """The result that restart.info names, or that of an iteration.

    A fresh run deletes restart.info before it writes a new mesh, so that what is named belongs to
    the mesh. Without it FileNotFoundError says that there is no result. A result older than the
    mesh is told by OldResultWarning where it is named, and refused where it is not.
    """
    named = _named_iteration(files, extents)
    chosen = named if iteration is None else iteration
    if chosen is None:
        raise FileNotFoundError(_without_result(files))
    result = read_fitting(files.result(chosen), "vpkeout", extents)
    _compare_age(result.path, files.mesh(), is_named=chosen == named)
    return result


def _named_iteration(files: DirectionFiles, extents: tuple[int, ...]) -> int | None:
    path = files.path("restart.info")
    if not path.exists():
        return None
    info = read_restart_info(path)
    if info.extents not in (None, extents):
        raise FormatError(
            path,
            f"line 3: the extents are {info.extents}, those of the mesh beside it {extents}; "
            "run the direction again",
        )
    return info.outer_count


def _without_result(files: DirectionFiles) -> str:
    text = (
        f"{files.path('restart.info')} is missing: the mesh has no finished result; wait for the "
        "run, or run the direction again"
    )
    there = ", ".join(map(str, files.results()))
    if there:
        text += f", or ask for a result with iteration=N, if it is of this mesh (there: {there})"
    return text


def _compare_age(result: Path, mesh: Path, is_named: bool) -> None:
    if result.stat().st_mtime_ns >= mesh.stat().st_mtime_ns:
        return
    text = (
        f"older than the mesh, {mesh.name}: it may be the result of an earlier case. Run the "
        "direction again; if only a copy has lost the times of files, copy with cp -a"
    )
    if not is_named:
        raise FormatError(result, text)
    # Told where the direction was asked for: behind read_result and Direction.
    warnings.warn(f"{result}: {text}", OldResultWarning, stacklevel=4)
