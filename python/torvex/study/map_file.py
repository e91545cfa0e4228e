"""Text maps as a run reads them."""

from __future__ import annotations

import os
from collections.abc import Iterable
from contextlib import suppress
from pathlib import Path

from torvex.arrays import Array
from torvex.study.map_grid import MapGrid

_PER_LINE = 25


def write_whole(path: Path, parts: Iterable[str]) -> None:
    """A file that appears under its name when it is complete."""
    beside = path.with_name(f"{path.name}.{os.getpid()}.tmp")
    try:
        with beside.open("w", encoding="utf-8") as file:
            file.writelines(parts)
        beside.replace(path)
    except BaseException:
        with suppress(OSError):
            beside.unlink()
        raise


def map_lines(grid: MapGrid, values: Array, form: str, remarks: Iterable[str]) -> Iterable[str]:
    """The lines of a map; `values` has rows going north and columns going east, `form` is that of
    a number, such as %.2f."""
    yield "<TORVEX_MAP lon-lat>\n"
    for remark in remarks:
        yield f"# {remark[:240]}\n"
    yield f"n_lon = {grid.n_lon}, n_lat = {grid.n_lat}\n"
    yield f"d_lon = {grid.d_lon}, d_lat = {grid.d_lat}\n"
    for key in ("base_longitude", "base_latitude"):
        degrees, minutes = getattr(grid, key)
        yield f"{key} = {degrees} {minutes}\n"
    yield "geodetic_system = 'WGS'\n--DATA--\n"
    for row in values:
        words = [form % value for value in row.tolist()]
        for first in range(0, len(words), _PER_LINE):
            yield " ".join(words[first : first + _PER_LINE]) + "\n"


def write_map(
    path: Path, grid: MapGrid, values: Array, form: str, remarks: Iterable[str] = ()
) -> None:
    write_whole(path, map_lines(grid, values, form, remarks))
