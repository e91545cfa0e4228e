"""What a study knows of each direction: a small file in the direction's own folder.

Nothing else tells a state, so that a status can be had from another terminal or machine, and no
accounting of a cluster is needed. The file is written whole; who works on a direction touches it
every few seconds.
"""

from __future__ import annotations

import dataclasses
import functools
import json
import os
import socket
import time
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any

from torvex.study.map_file import write_whole
from torvex.study.provenance import checksum

NAME = "direction.json"
ENDED = ("converged", "not converged", "diverged")  # by itself
STATES = ("waiting", "running", "interrupted", "failed", "killed", *ENDED)
BEAT = 5.0  # seconds between two signs of life
_SILENT = 120.0  # after which a worker on another machine is taken for dead


@dataclass
class Record:
    tag: str
    angle: float
    state: str = "waiting"
    case: str = ""  # checksum of what counts in the case
    inputs: dict[str, list[Any]] = field(default_factory=dict)  # size, time, checksum
    target: int = 0  # iterations that it may take in all
    tried: int = -1  # number of the last step of the ladder, -1: the case as it stands
    step: str = ""  # its name
    iterations: int = 0
    resid_m: float | None = None
    resid_u: float | None = None
    resid_v: float | None = None
    resid_w: float | None = None
    flow_in: float | None = None  # [m3/s]
    flow_out: float | None = None
    sites: list[dict[str, Any]] = field(default_factory=list)
    remarks: list[str] = field(default_factory=list)
    begun: str = ""  # why it was begun as it was
    message: str = ""  # why it ended, where not by itself
    kept: str = ""  # what of it remains: all, fields, sites
    seconds: float = 0.0
    peak_memory: int = 0  # bytes
    threads: int = 0
    host: str = ""
    pid: int = 0
    pid_start: str = ""


def read_record(folder: Path, prefix: str = "") -> Record | None:
    """None where there is none that can be read: a direction without one begins anew."""
    try:
        told = json.loads((folder / (prefix + NAME)).read_text(encoding="utf-8"))
        known = {each.name for each in dataclasses.fields(Record)}
        return Record(**{key: value for key, value in told.items() if key in known})
    except (OSError, ValueError, TypeError, AttributeError):
        return None


def write_record(folder: Path, record: Record, prefix: str = "") -> None:
    text = json.dumps(dataclasses.asdict(record), indent=1, allow_nan=True)
    write_whole(folder / (prefix + NAME), [text, "\n"])


def _start_of(pid: int) -> str:
    """When a process began, which tells it from a later one of its number."""
    try:
        return Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[19]
    except (OSError, IndexError):
        return ""


def sign(record: Record) -> None:
    """The record is that of this process from now on."""
    record.host, record.pid = socket.gethostname(), os.getpid()
    record.pid_start = _start_of(record.pid)


def is_alive(folder: Path, record: Record, prefix: str = "") -> bool:
    """Whether somebody works on a direction that is told to be running."""
    if record.state != "running":
        return False
    if record.host == socket.gethostname():
        return record.pid_start != "" and _start_of(record.pid) == record.pid_start
    try:
        return time.time() - (folder / (prefix + NAME)).stat().st_mtime < _SILENT
    except OSError:
        return False


def states_of_files(paths: tuple[Path, ...], root: Path) -> dict[str, list[Any]]:
    """Size, time and checksum of the files that a case names."""
    return {_name(path, root): [*_stat(path), _checksum(path, *_stat(path))] for path in paths}


def changed_files(record: Record, paths: tuple[Path, ...], root: Path) -> list[str]:
    """Those whose content is not what it was. Their checksums are formed only where size or time
    differ."""
    changed = [name for name in record.inputs if name not in {_name(p, root) for p in paths}]
    for path in paths:
        name = _name(path, root)
        before = record.inputs.get(name)
        if before is None or before[0] != _stat(path)[0]:
            changed.append(name)
        elif before[1] != _stat(path)[1] and before[2] != _checksum(path, *_stat(path)):
            changed.append(name)
    return changed


def _name(path: Path, root: Path) -> str:
    return os.path.relpath(path, root)


@functools.lru_cache(maxsize=64)
def _checksum(path: Path, _size: int, _time: int) -> str:
    """Formed once for all directions, as long as the file stays as it is."""
    return checksum(path)


def _stat(path: Path) -> list[int]:
    told = path.stat()
    return [told.st_size, told.st_mtime_ns]
