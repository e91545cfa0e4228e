"""Where a study came from: files with their checksums, versions, options; written as TOML."""

from __future__ import annotations

import hashlib
import json
import math
import subprocess
from collections.abc import Mapping, Sequence
from pathlib import Path
from typing import Any

_PACKAGES = (
    "python3",
    "python3-numpy",
    "python3-gdal",
    "libgdal32",
    "python3-pyproj",
    "libproj25",
    "python3-scipy",
)


def checksum(path: Path) -> str:
    """SHA-256 of a file; of a folder that a driver reads as one, of its files in their order."""
    digest = hashlib.sha256()
    paths = sorted(p for p in path.rglob("*") if p.is_file()) if path.is_dir() else [path]
    for each in paths:
        with each.open("rb") as file:
            while block := file.read(1 << 20):
                digest.update(block)
    return digest.hexdigest()


def versions() -> dict[str, str]:
    """Of what maps are made with, as the distribution names them. Some packages misreport their
    own version, so that the package manager is asked."""
    try:
        told = subprocess.run(
            ["dpkg-query", "-W", "-f=${Package} ${Version}\n", *_PACKAGES],
            capture_output=True,
            text=True,
            check=False,
        ).stdout
    except OSError:
        return {}
    return dict(line.split(maxsplit=1) for line in told.splitlines() if len(line.split()) == 2)


def inputs(files: Sequence[tuple[str, Path]]) -> list[dict[str, Any]]:
    """A table for each file: what it served for, its name and checksum."""
    tables = []
    for role, path in files:
        if path.exists():
            size = path.stat().st_size
            tables.append(
                {"role": role, "file": str(path), "bytes": size, "sha256": checksum(path)}
            )
    return tables


def toml_text(head: Sequence[str], tables: Mapping[str, Any]) -> str:
    """Tables of plain values, and lists of such tables."""
    lines = [f"# {line}" for line in head]
    for name, content in tables.items():
        for table in content if isinstance(content, list) else [content]:
            bracket = f"[[{name}]]" if isinstance(content, list) else f"[{name}]"
            lines += ["", bracket]
            lines += [
                f"{_key(key)} = {_value(value)}"
                for key, value in table.items()
                if value is not None
            ]
    return "\n".join(lines) + "\n"


def _key(key: str) -> str:
    plain = key.replace("-", "").replace("_", "").isalnum() and key.isascii()
    return key if plain else json.dumps(key)


def _value(value: Any) -> str:
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, float):
        return repr(value) if math.isfinite(value) else "nan"
    if isinstance(value, int):
        return str(value)
    if isinstance(value, (list, tuple)):
        return "[" + ", ".join(_value(each) for each in value) + "]"
    # Strings of JSON are basic strings of TOML but for one character.
    return json.dumps(str(value)).replace("\x7f", "\\u007f")


def checksum_of_text(text: str) -> str:
    return hashlib.sha256(text.encode()).hexdigest()
