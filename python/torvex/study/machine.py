"""The machine that a run is on: cores, memory, and where the programs stand."""

from __future__ import annotations

import os
import shutil
import sys
from pathlib import Path

from torvex.study.errors import StudyError


def cores() -> int:
    return len(os.sched_getaffinity(0))


def memory_limit() -> int:
    """Bytes that may be taken now: what is free, and what the control groups of this process,
    version 1 or 2, allow."""
    limits = [_free_memory()]
    for path in _group_limits():
        try:
            word = path.read_text().strip()
        except OSError:
            continue
        if word.isdecimal() and int(word) < 2**60:
            limits.append(int(word))
    return min(limits)


def _free_memory() -> int:
    try:
        for line in Path("/proc/meminfo").read_text().splitlines():
            if line.startswith("MemAvailable:"):
                return int(line.split()[1]) * 1024
    except OSError:
        pass
    return 2**60


def _group_limits() -> list[Path]:
    """The files that may hold a limit: those of this process's group and of all above it."""
    found = []
    try:
        lines = Path("/proc/self/cgroup").read_text().splitlines()
    except OSError:
        return []
    for line in lines:
        _, controllers, group = line.split(":", 2)
        if controllers == "":
            root, name = Path("/sys/fs/cgroup"), "memory.max"
        elif "memory" in controllers.split(","):
            root, name = Path("/sys/fs/cgroup/memory"), "memory.limit_in_bytes"
        else:
            continue
        path = root / group.lstrip("/")
        while path != root.parent:
            found.append(path / name)
            path = path.parent
    return found


def find_program(name: str, variable: str) -> Path:
    """From the environment, else beside this program, else on the path."""
    given = os.environ.get(variable)
    if given:
        path = shutil.which(given)
        if path is None:
            raise StudyError(f"{variable} is {given}: there is no such program")
        return Path(path).resolve()
    beside = Path(sys.argv[0]).resolve().parent / name
    if os.access(beside, os.X_OK) and beside.is_file():
        return beside
    found = shutil.which(name)
    if found is None:
        raise StudyError(
            f"{name} is found neither beside torvex-study nor on the path; build it with "
            f"scripts/build {name}, or name it in the variable {variable}"
        )
    return Path(found).resolve()


def torvex_program() -> Path:
    return find_program("torvex", "TORVEX")


def prep_program() -> Path:
    """torvex-prep: beside the torvex that TORVEX names, where it is not named itself."""
    if "TORVEX_PREP" not in os.environ and "TORVEX" in os.environ:
        beside = torvex_program().parent / "torvex-prep"
        if beside.is_file():
            return beside
    return find_program("torvex-prep", "TORVEX_PREP")
