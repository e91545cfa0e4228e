"""How far each direction has come, by its own files."""

from __future__ import annotations

import re
import time
from collections.abc import Sequence
from dataclasses import dataclass

from torvex.study.case_text import StudyCase
from torvex.study.layout import Study
from torvex.study.record import Record, is_alive, read_record
from torvex.tables import read_view

NAMES = ("m", "u", "v", "w")
_CRITERIA = re.compile(r"M:\s*(\S+), U:\s*(\S+), V:\s*(\S+), W:\s*(\S+)")


@dataclass(frozen=True)
class Progress:
    record: Record
    iteration: int
    of_criteria: tuple[float, ...]  # residuals of m, u, v, w over what they must fall to


def progress_of(study: Study, case: StudyCase) -> list[Progress]:
    """Of all directions of a case, without touching a file."""
    found = []
    for tag, angle in zip(case.tags, case.angles):
        folder = study.direction(tag)
        record = read_record(folder, case.prefix) or Record(tag, angle)
        iteration = record.iterations
        residuals: tuple[float, ...] = ()
        if record.state == "running" and not is_alive(folder, record, case.prefix):
            record.state, record.message = "killed", "ended from outside while it ran"
        if record.state == "running":
            iteration, residuals = _live(study, case, tag)
        found.append(Progress(record, iteration, residuals))
    return found


def _live(study: Study, case: StudyCase, tag: str) -> tuple[int, tuple[float, ...]]:
    folder = study.direction(tag)
    try:
        table = read_view(folder / f"{case.prefix}view-convergence-{tag}.dat")
        if not table["iteration"].size:
            return 0, ()
        criteria = _criteria(study, tag)
        residuals = [float(table[f"resid_{name}"][-1]) for name in NAMES]
        return int(table["iteration"][-1]), tuple(r / c for r, c in zip(residuals, criteria))
    except (OSError, ValueError, ZeroDivisionError):
        return 0, ()


def _criteria(study: Study, tag: str) -> tuple[float, ...]:
    """As the run has scaled them with the mesh; from the end of its log."""
    text = (study.direction(tag) / "torvex.log").read_text(encoding="utf-8", errors="replace")
    found = _CRITERIA.findall(text)
    return tuple(map(float, found[-1])) if found else (1e-3,) * 4


class Clock:
    """The time that is left, from iterations seen since it was made."""

    def __init__(self, case: StudyCase) -> None:
        self._case = case
        self._began = time.monotonic()
        self._first: int | None = None

    def left(self, all_of_it: Sequence[Progress]) -> float | None:
        """Seconds, or None as long as nothing can be said. Directions that have converged tell how
        many iterations the others may take."""
        done = sum(each.iteration for each in all_of_it)
        if self._first is None:
            self._first = done
        passed = time.monotonic() - self._began
        gained = done - self._first
        if gained <= 0 or passed < 1:
            return None
        ended = [p.iteration for p in all_of_it if p.record.state == "converged"]
        usual = sum(ended) / len(ended) if ended else self._case.maxit
        going = [p for p in all_of_it if p.record.state in ("running", "waiting")]
        rest = sum(max(usual - p.iteration, 0.05 * usual) for p in going)
        return rest * passed / gained


def line_of(progress: Progress) -> str:
    record = progress.record
    text = f"{record.tag}  {record.state:<14}"
    if record.state == "running":
        residuals = " ".join(f"{n} {v:.2g}" for n, v in zip(NAMES, progress.of_criteria))
        text += f" iteration {progress.iteration}"
        text += f"; {residuals} of the criteria" if residuals else ""
    elif progress.iteration:
        text += f" {progress.iteration} iterations"
    if record.step:
        text += f" ({record.step})"
    return text + (f"; {record.message}" if record.message else "")


def duration(seconds: float) -> str:
    if seconds < 90:
        return f"{seconds:.0f} s"
    if seconds < 5400:
        return f"{seconds / 60:.0f} min"
    return f"{seconds / 3600:.1f} h"
