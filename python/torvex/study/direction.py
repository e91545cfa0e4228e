"""One direction of a study to its end: prepared, run, resumed, tried again, gathered, thinned.

Whether a direction is done is told by its record: what counts in its case and the content of the
files that it names. Where these have changed, torvex itself decides by its fingerprint whether the
saved state may be gone on from; where the mesh has changed, it says so by a stop, and the direction
begins anew. MAXIT is the number of iterations of a direction in all, however often it is broken
off.
"""

from __future__ import annotations

import errno
import fcntl
import math
import os
import re
import shutil
from collections.abc import Callable, Iterator
from contextlib import contextmanager, suppress
from dataclasses import dataclass
from pathlib import Path

from torvex.results import DirectionFiles
from torvex.states import STATES, direction_states
from torvex.study.case_text import LAND_USE_TABLES, StudyCase, direction_text, what_counts
from torvex.study.child import CONSOLE, Control, Ended, last_words, run_child, warnings
from torvex.study.gather import gather
from torvex.study.keep import thin
from torvex.study.ladder import Step, ladder, next_step
from torvex.study.layout import Study
from torvex.study.record import (
    BEAT,
    ENDED,
    NAME,
    Record,
    changed_files,
    is_alive,
    read_record,
    sign,
    states_of_files,
    write_record,
)
from torvex.study.provenance import checksum_of_text
from torvex.tables import read_restart_info

# Stops of a resume that the saved state does not fit: another mesh, or files that are gone.
_NO_RESUME = (210, 211, 212, 221, 222, 231, 232)


@dataclass(frozen=True)
class Job:
    """A direction, and how it is to be run."""

    study: Study
    case: StudyCase
    number: int  # of the direction in the case, from 0
    program: Path
    prep: Path | None  # where canopies must be prepared
    height: float  # of the speed-ups that are told [m]
    threads: int = 1
    keep: str = "fields"
    retry: bool = False
    save_every: int = 0  # iterations after which the state is saved; 0: at the end only

    @property
    def tag(self) -> str:
        return self.case.tags[self.number]

    @property
    def folder(self) -> Path:
        return self.study.direction(self.tag)

    @property
    def files(self) -> DirectionFiles:
        return DirectionFiles(self.folder, self.case.prefix, self.tag)

    def text(self, resume: bool, changes: dict[str, str]) -> str:
        up = os.path.relpath(self.study.root, self.folder) + "/"
        return direction_text(self.case, self.number, up, resume, changes)

    def key(self) -> str:
        """Of what counts in the case of this direction."""
        return checksum_of_text(what_counts(self.text(False, {})))


@dataclass(frozen=True)
class Plan:
    """What is to be done about a direction."""

    action: str  # done, busy, new, resume, anew, retry
    why: str = ""


def plan_of(job: Job) -> Plan:
    record = read_record(job.folder, job.case.prefix)
    if record is None:
        return Plan("new")
    if is_alive(job.folder, record, job.case.prefix):
        return Plan("busy", f"process {record.pid} on {record.host} is at it")
    changed = []
    if record.case != job.key():
        changed.append("the case")
    changed += changed_files(record, job.case.inputs, job.study.root)
    if changed:
        why = f"{', '.join(changed)} changed"
        return Plan("resume" if _can_resume(job, record) else "anew", why)
    if record.state == "converged":
        return Plan("done")
    if record.state in ENDED:
        step = next_step(ladder(job.case), record.tried, record.state == "diverged")
        if job.retry and step is not None:
            return Plan("retry")
        return Plan("done", "no step of the ladder is left" if job.retry else "")
    if _can_resume(job, record) and _iterations(job) > 0:
        return Plan("resume", "it was broken off")
    return Plan("anew", "it was broken off" if record.state != "failed" else "it failed")


def _can_resume(job: Job, record: Record) -> bool:
    files = job.files
    there = all(files.path(name).exists() for name in ("restart.info", "xyz.tuf", "z0.tuf"))
    return there and record.state != "diverged"


def _iterations(job: Job) -> int:
    try:
        return read_restart_info(job.files.path("restart.info")).outer_count
    except (OSError, ValueError):
        return 0


@contextmanager
def _held(job: Job) -> Iterator[bool]:
    """Whether this process alone works on the direction from now on. The lock goes with the
    process, however that ends."""
    job.folder.mkdir(parents=True, exist_ok=True)
    with (job.folder / f"{job.case.prefix}direction.lock").open("a") as file:
        try:
            fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError as problem:
            if problem.errno in (errno.EWOULDBLOCK, errno.EACCES):
                yield False
                return
            # A file system without locks: torvex has one of its own.
        yield True


def run_direction(job: Job, plan: Plan, control: Control, tell: Callable[[str], None]) -> Record:
    """Runs it to its end, and up the ladder where that is asked for. What goes wrong with this
    direction is told in its record, so that others go on."""
    with _held(job) as alone:
        if alone:
            return _run_held(job, plan, control, tell)
    record = read_record(job.folder, job.case.prefix) or Record(job.tag, math.nan)
    tell(f"{job.tag}: left alone, somebody else is at it")
    return record


def _run_held(job: Job, plan: Plan, control: Control, tell: Callable[[str], None]) -> Record:
    before = read_record(job.folder, job.case.prefix)
    record = Record(job.tag, job.case.angles[job.number])
    same_case = before is not None and plan.action in ("resume", "anew", "retry")
    changed = plan.why.endswith("changed")
    if before is not None and same_case and not changed:
        record.tried, record.step = before.tried, before.step
        record.seconds, record.peak_memory = before.seconds, before.peak_memory
        record.target = before.target
        record.state = before.state
    record.case, record.threads = job.key(), job.threads
    record.inputs = states_of_files(job.case.inputs, job.study.root)
    record.begun = plan.why
    steps = ladder(job.case)
    resume = plan.action == "resume"
    if plan.action == "retry":
        resume = _climb(job, record, steps, tell)
    elif resume and changed:
        record.target = _iterations(job) + job.case.maxit
    elif not resume or record.target <= 0:
        record.target = _allowed(job, record, steps)
    try:
        while True:
            _run_step(job, record, steps, resume, control, tell)
            if record.state not in ("not converged", "diverged") or not job.retry:
                break
            if next_step(steps, record.tried, record.state == "diverged") is None:
                break
            resume = _climb(job, record, steps, tell)
        _finish(job, record)
    except BaseException as problem:
        record.state = "failed" if isinstance(problem, Exception) else "interrupted"
        record.message = str(problem) or type(problem).__name__
        with suppress(OSError):
            write_record(job.folder, record, job.case.prefix)
        if not isinstance(problem, (OSError, ValueError)):
            raise
    return record


def _allowed(job: Job, record: Record, steps: tuple[Step, ...]) -> int:
    """Iterations of a direction that begins anew."""
    return job.case.maxit * (steps[record.tried].factor if record.tried >= 0 else 1)


def _climb(job: Job, record: Record, steps: tuple[Step, ...], tell: Callable[[str], None]) -> bool:
    """To the next step of the ladder; whether the saved state is gone on from."""
    diverged = record.state == "diverged"
    number = next_step(steps, record.tried, diverged)
    assert number is not None
    record.tried, record.step = number, steps[number].name
    resume = not diverged and not steps[number].anew and _can_resume(job, record)
    # What was done before this step does not count against its iterations.
    done = _iterations(job) if resume else 0
    record.target = done + job.case.maxit * steps[number].factor
    tell(f"{record.tag}: next step: {record.step}")
    return resume


def _run_step(
    job: Job,
    record: Record,
    steps: tuple[Step, ...],
    resume: bool,
    control: Control,
    tell: Callable[[str], None],
) -> None:
    changes = dict(steps[record.tried].changes) if record.tried >= 0 else {}
    if job.case.canopy:
        _prepare_canopy(job, record, control)
        if record.state == "failed":
            return
    while True:
        done = _iterations(job) if resume else 0
        left = max(0, record.target - done)
        changes["MAXIT"] = str(_portion(job, left))
        ended = _run_once(job, record, resume, changes, control)
        if resume and ended.status in _NO_RESUME:
            resume = False
            record.target = _allowed(job, record, steps)
            tell(f"{record.tag}: begun anew: {last_words(job.folder, 1)}")
            continue
        for line in warnings(job.folder) + [last_words(job.folder)]:
            if "begins anew" in line:
                tell(f"{record.tag}: {line}")
        _read_outcome(job, record, ended, control)
        now = _iterations(job)
        if record.state != "not converged" or now >= record.target or now <= done:
            return
        resume = True


def _portion(job: Job, left: int) -> int:
    """Iterations until the state is saved. A run that is resumed where it ended goes on to the bit;
    with BOOSTCAL its factors would begin from those of the case again."""
    if job.save_every <= 0 or job.case.boost:
        return left
    step = max(1, job.case.monitor_step)
    return min(left, math.ceil(job.save_every / step) * step)


def _run_once(
    job: Job, record: Record, resume: bool, changes: dict[str, str], control: Control
) -> Ended:
    folder, prefix = job.folder, job.case.prefix
    for name in LAND_USE_TABLES:
        if (job.study.root / name).is_file():
            shutil.copyfile(job.study.root / name, folder / name)
    if not resume:
        job.files.path("restart.info").unlink(missing_ok=True)
    (folder / "torvex.tin").write_text(job.text(resume, changes), encoding="utf-8")
    record.state, record.message = "running", ""
    sign(record)
    write_record(folder, record, prefix)
    record_path = folder / (prefix + NAME)
    ended = run_child(
        [str(job.program), "/f", "torvex.tin"],
        folder,
        job.threads,
        control,
        lambda: os.utime(record_path),
    )
    record.seconds += ended.seconds
    record.peak_memory = max(record.peak_memory, ended.peak_memory)
    return ended


assert BEAT < 100  # the signs of life must come oftener than a worker is taken for dead


def _prepare_canopy(job: Job, record: Record, control: Control) -> None:
    assert job.prep is not None
    (job.folder / "torvex.tin").write_text(job.text(False, {}), encoding="utf-8")
    record.state = "running"
    sign(record)
    write_record(job.folder, record, job.case.prefix)
    ended = run_child(
        [str(job.prep), "canopy", "/f", "torvex.tin"],
        job.folder,
        job.threads,
        control,
        lambda: None,
    )
    record.seconds += ended.seconds
    if ended.status != 0:
        record.state = "failed"
        record.message = f"torvex-prep canopy: {_reason(ended, job.folder)}"


def _reason(ended: Ended, folder: Path) -> str:
    if ended.status < 0:
        return f"ended by signal {-ended.status}"
    return f"stop {ended.status}: {last_words(folder)}"


def _read_outcome(job: Job, record: Record, ended: Ended, control: Control) -> None:
    folder = job.folder
    record.iterations = _iterations(job)
    with suppress(OSError, ValueError):
        info = read_restart_info(job.files.path("restart.info"))
        record.resid_m, record.resid_u = info.resid_m, info.resid_u
        record.resid_v, record.resid_w = info.resid_v, info.resid_w
    record.flow_in, record.flow_out = _flows(folder)
    if control.kill.is_set() and ended.status != 0:
        record.state, record.message = "interrupted", "ended on request"
    elif ended.status == 2:
        record.state, record.message = "interrupted", "stopped on request; its state is saved"
    elif ended.status < 0:
        record.state, record.message = "killed", _reason(ended, folder)
    elif ended.status > 0:
        record.state, record.message = "failed", _reason(ended, folder)
    else:
        rows = direction_states(folder, job.case.prefix)
        state = rows[-1].state if rows else 0
        record.state = STATES[state] if state else "failed"
        record.message = "" if state else "the run ended without an outcome"
    record.remarks = [line for line in warnings(folder) if "begins anew" not in line]


_FLOWS = re.compile(rb"flowin\s+(\S+)\s+flowout\s+(\S+)")


def _flows(folder: Path) -> tuple[float | None, float | None]:
    """Volume flows of the last iteration that told them [m3/s]."""
    try:
        with (folder / CONSOLE).open("rb") as file:
            file.seek(0, os.SEEK_END)
            file.seek(max(0, file.tell() - 8192))
            found = _FLOWS.findall(file.read())
        return (float(found[-1][0]), float(found[-1][1])) if found else (None, None)
    except (OSError, ValueError):
        return None, None


def _finish(job: Job, record: Record) -> None:
    """Values at the sites, then what need not remain goes."""
    if record.state in ("converged", "not converged"):
        try:
            record.sites, remarks = gather(job.folder, job.case, job.number, job.height)
            record.remarks += remarks
        except (OSError, ValueError) as problem:
            record.remarks.append(f"nothing gathered: {problem}")
    record.kept = "all"
    if record.state == "converged":
        thin(job.files, job.keep)
        record.kept = job.keep
    write_record(job.folder, record, job.case.prefix)
