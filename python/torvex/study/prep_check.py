"""What `torvex-prep check` says of a case before it is run; an estimate where it is not there."""

from __future__ import annotations

import json
import math
import os
import subprocess
import tempfile
from collections.abc import Iterator, Mapping
from contextlib import contextmanager
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any

from torvex.study.case_text import StudyCase, direction_text, without_canopy
from torvex.study.errors import StudyError
from torvex.study.machine import memory_limit, prep_program, torvex_program
from torvex.tables import read_mesh_log

# Of a run without measured values: bytes a cell, bytes of the program itself, seconds per cell and
# iteration on one core, and bytes a cell on the disk while a direction runs.
_CELL_BYTES, _PROGRAM_BYTES, _CELL_SECONDS, _CELL_DISK = 400, 20_000_000, 5e-7, 140


@dataclass(frozen=True)
class Check:
    """What a direction needs, and what there is for it."""

    cells: int
    memory: int  # bytes of a direction
    limit: int  # bytes that may be taken
    disk: int  # bytes of a direction
    s_per_iteration: float  # on one core
    warnings: tuple[str, ...] = ()
    estimate: str = ""  # why it is one; blank where the program measured
    told: Mapping[str, Any] = field(default_factory=dict)  # all that the program said


def check_case(case: StudyCase) -> Check:
    """Raises StudyError where a run would end with a stop."""
    try:
        prep = prep_program()
    except StudyError as problem:
        return _estimate(case, str(problem))
    with _to_be_checked(case) as path:
        done = subprocess.run(
            [str(prep), "check", "/f", str(path), "--json"],
            capture_output=True,
            text=True,
            check=False,
            env=dict(os.environ, OMP_NUM_THREADS="1"),
        )
    # An older program does not know the entry and ends as with any wrong word.
    if done.returncode == 102:
        return _estimate(case, f"{prep} has no entry check")
    if done.returncode != 0:
        reason = (done.stderr or done.stdout).strip()
        raise StudyError(f"a run would end with status {done.returncode}:\n{reason}")
    try:
        return check_of(json.loads(done.stdout[done.stdout.index("{") :]))
    except (ValueError, KeyError, TypeError) as problem:
        raise StudyError(f"{prep} check --json: not as expected: {problem!r}") from None


@contextmanager
def _to_be_checked(case: StudyCase) -> Iterator[Path]:
    """The case; of one with forests a copy without, since canopies are prepared for each direction
    in its own folder, when its turn comes."""
    if not case.canopy:
        yield case.path
        return
    path = case.path.with_name(f".check.{os.getpid()}.tin")
    try:
        path.write_text(without_canopy(case.text), encoding="utf-8")
        yield path
    finally:
        path.unlink(missing_ok=True)


def check_of(told: Mapping[str, Any]) -> Check:
    """From what `torvex-prep check --json` prints."""
    memory = told["memory"]
    limits = [memory.get(name) for name in ("limit_bytes", "group_limit_bytes")]
    cells = int(told["mesh"]["cells"])
    # Nothing is tried where memory is short, or where all directions would be resumed.
    tried = told["time"]["s_per_iteration"]
    return Check(
        cells=cells,
        memory=int(memory["bytes"]),
        limit=int(min([limit for limit in limits if limit], default=memory_limit())),
        disk=int(told["disk"]["bytes"]),
        s_per_iteration=_CELL_SECONDS * cells if tried is None else float(tried),
        warnings=tuple(str(warning) for warning in told.get("warnings", [])),
        told=told,
    )


def _estimate(case: StudyCase, why: str) -> Check:
    """From the number of cells alone, which a run without directions tells."""
    if case.prefix == "flat-":
        raise StudyError(f"the need of a flat run cannot be estimated: {why}")
    with tempfile.TemporaryDirectory() as folder:
        up = f"{case.path.parent.resolve()}/"
        text = without_canopy(direction_text(case, 0, up, False, {}))
        # The last of two equal keys counts.
        text = text.replace("N_WIND_DIRECTION = 1", "N_WIND_DIRECTION = 0", 1)
        (Path(folder) / "torvex.tin").write_text(text)
        done = subprocess.run(
            [str(torvex_program())], cwd=folder, capture_output=True, text=True, check=False
        )
        if done.returncode != 0:
            raise StudyError(
                f"a run would end with status {done.returncode}:\n"
                f"{done.stderr.strip().replace(folder, str(case.path.parent))}"
            )
        mesh = read_mesh_log(Path(folder) / f"{case.prefix}log-meshnumber")
        own = ("N_WIND_DIRECTION is 0", "no direction was begun")
        warnings = [
            line for line in done.stderr.splitlines() if not any(text in line for text in own)
        ]
    cells = mesh.ni * mesh.nj * mesh.nk
    return Check(
        cells=cells,
        memory=_PROGRAM_BYTES + _CELL_BYTES * cells + _map_bytes(case),
        limit=memory_limit(),
        disk=_CELL_DISK * cells,
        s_per_iteration=_CELL_SECONDS * cells,
        warnings=tuple(line for line in warnings if line.strip()),
        estimate=why,
    )


def _map_bytes(case: StudyCase) -> int:
    """Four bytes a point, of which the text takes six or more."""
    return math.ceil(sum(path.stat().st_size for path in case.inputs) * 0.7)
