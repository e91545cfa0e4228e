"""Text maps of elevation and roughness."""

from __future__ import annotations

from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from torvex.arrays import Array, PathLike
from torvex.free_form import read_counts, read_reals
from torvex.records import FormatError


@dataclass(frozen=True)
class TextMap:
    """A map of elevation or roughness: values[i, j] stands at longitude[i], latitude[j]."""

    longitude: Array  # [degrees], rising eastwards
    latitude: Array  # [degrees], rising northwards
    values: Array  # [m]
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

        def item(key: str) -> list[str]:
            if key not in header:
                raise FormatError(path, f"the header ends without {key}")
            return [header[key]]

        n_lon, n_lat = (read_counts(path, item(key), 1, key)[0] for key in ("n_lon", "n_lat"))
        d_lon, d_lat = (read_reals(path, item(key), 1, key)[0] for key in ("d_lon", "d_lat"))
        west, south = (
            read_reals(path, item(key), 2, key) for key in ("base_longitude", "base_latitude")
        )
        if min(n_lon, n_lat) < 2:
            raise FormatError(path, f"{n_lon} columns and {n_lat} rows, expected 2 or more of both")
        if min(d_lon, d_lat) <= 0:
            raise FormatError(path, f"the spacings are {d_lon} and {d_lat}, expected above 0")
        values = np.empty((n_lon, n_lat), np.float32, order="F")
        for j in range(n_lat):
            # What is left of a row's last line belongs to no row.
            values[:, j] = read_reals(path, lines, n_lon, f"row {j + 1} of {n_lat}")
            if not np.isfinite(values[:, j]).all():
                raise FormatError(path, f"row {j + 1} of {n_lat} holds a value that is not finite")
    return TextMap(
        longitude=west[0] + (west[1] + d_lon * np.arange(n_lon)) / 60,
        latitude=south[0] + (south[1] + d_lat * np.arange(n_lat)) / 60,
        values=values,
        geodetic_system=geodetic_system,
        header=header,
    )
