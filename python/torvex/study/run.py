"""All directions of a study, side by side as processes of their own."""

from __future__ import annotations

import concurrent.futures
import signal
import threading
import time
from collections.abc import Callable, Iterator, Sequence
from contextlib import contextmanager
from dataclasses import dataclass, replace
from typing import Any

from torvex.packages import MissingPackage, need
from torvex.study.case_text import StudyCase, read_study_case
from torvex.study.child import Control
from torvex.study.direction import Job, Plan, plan_of, run_direction
from torvex.study.errors import StudyError
from torvex.study.layout import Study
from torvex.study.machine import cores, prep_program, torvex_program
from torvex.study.prep_check import Check, check_case
from torvex.study.progress import NAMES, Clock, Progress, duration, line_of, progress_of
from torvex.study.record import Record
from torvex.study.summary import INTERRUPTED, exit_status, summary_lines, write_summary

Say = Callable[[str], None]
_SHARE = 0.8  # of the memory that there is
_PLAIN_EVERY = 60.0  # seconds between lines where there is no terminal


@dataclass(frozen=True)
class RunOptions:
    jobs: int | None = None  # directions side by side
    threads: int | None = None  # of each
    keep: str = "fields"
    retry: bool = False
    save_every: int = 0
    live: bool = False  # a table that is renewed, on a terminal


def jobs_of(study: Study, case: StudyCase, options: RunOptions, threads: int = 1) -> list[Job]:
    program = torvex_program()
    prep = prep_program() if case.canopy else None
    return [
        Job(
            study,
            case,
            number,
            program,
            prep,
            study.height(),
            threads,
            options.keep,
            options.retry,
            options.save_every,
        )
        for number in range(len(case.angles))
    ]


def side_by_side(check: Check, directions: int, options: RunOptions) -> tuple[int, int]:
    """How many directions at a time, and threads for each."""
    there = cores()
    if options.jobs is not None:
        jobs = options.jobs
    else:
        jobs = max(1, min(there, int(_SHARE * check.limit / max(check.memory, 1))))
    jobs = max(1, min(jobs, directions))
    return jobs, options.threads or max(1, there // jobs)


def run_study(study: Study, options: RunOptions, say: Say) -> int:
    """The exit status."""
    case = read_study_case(study.case)
    jobs = jobs_of(study, case, options)
    plans = [plan_of(job) for job in jobs]
    to_do = [(job, plan) for job, plan in zip(jobs, plans) if plan.action not in ("done", "busy")]
    for job, plan in zip(jobs, plans):
        if plan.action in ("busy", "anew", "resume") or plan.why:
            words = {"busy": "left alone", "anew": "begins anew", "resume": "is gone on with"}
            say(f"{job.tag}: {words.get(plan.action, plan.action)}: {plan.why}")
    finished = sum(plan.action == "done" for plan in plans)
    if finished:
        say(_done_already(finished, len(jobs)))
    control = Control()
    if to_do:
        check = check_case(case)
        _tell_check(check, say)
        at_once, threads = side_by_side(check, len(to_do), options)
        if at_once * check.memory > check.limit:
            say(
                f"warning: {at_once} directions need {at_once * check.memory / 1e9:.2f} GB, "
                f"{check.limit / 1e9:.2f} GB may be taken"
            )
        say(f"{at_once} at a time, threads of each: {threads}")
        ready = [(_with_threads(job, threads), plan) for job, plan in to_do]
        with _interrupts(control, say):
            _work(study, case, ready, at_once, control, options.live, say)
    records = write_summary(study, case, study.height())
    for line in summary_lines(records, study.height()):
        say(line)
    say(f"written: {study.out / 'summary.csv'}, summary.json, sites.csv")
    if control.stop.is_set():
        return INTERRUPTED
    return exit_status(records)


def _done_already(finished: int, of: int) -> str:
    if finished < of:
        return f"{finished} of {of} directions are done already"
    return f"all {of} directions are done already" if of > 1 else "the direction is done already"


def _with_threads(job: Job, threads: int) -> Job:
    return replace(job, threads=threads)


def _tell_check(check: Check, say: Say) -> None:
    say(
        f"{check.cells} cells, {check.memory / 1e6:.0f} MB of memory and {check.disk / 1e6:.0f} MB "
        "of disk a direction" + (f" (an estimate: {check.estimate})" if check.estimate else "")
    )
    for warning in check.warnings:
        say(f"warning: {warning.removeprefix('Warning: ')}")


@contextmanager
def _interrupts(control: Control, say: Say) -> Iterator[None]:
    """The first Ctrl-C lets the directions in hand come to an end that can be gone on from, the
    second ends them."""

    def handler(_number: int, _frame: Any) -> None:
        if control.stop.is_set():
            control.kill.set()
        else:
            control.stop.set()
            say("stopping behind the iterations in hand; once more ends at once")

    if threading.current_thread() is not threading.main_thread():
        yield
        return
    before = {number: signal.signal(number, handler) for number in (signal.SIGINT, signal.SIGTERM)}
    try:
        yield
    finally:
        for number, old in before.items():
            signal.signal(number, old)


def _work(
    study: Study,
    case: StudyCase,
    ready: Sequence[tuple[Job, Plan]],
    at_once: int,
    control: Control,
    live: bool,
    say: Say,
) -> None:
    clock = Clock(case)
    with _screen(live) as screen:
        tell: Say = screen.say if screen else say

        def one(job: Job, plan: Plan) -> None:
            if control.stop.is_set():
                return
            # Some time may have passed, and somebody else may have come.
            now = plan_of(job)
            if now.action in ("done", "busy"):
                tell(f"{job.tag}: {now.action} {now.why}")
                return
            tell(f"{job.tag}: begun")
            tell(_outcome(run_direction(job, plan, control, tell)))

        with concurrent.futures.ThreadPoolExecutor(at_once) as pool:
            waiting = {pool.submit(one, job, plan) for job, plan in ready}
            last = time.monotonic()
            problems = []
            while waiting:
                done, waiting = concurrent.futures.wait(waiting, timeout=0.5)
                problems += [task.exception() for task in done if task.exception() is not None]
                now = progress_of(study, case)
                if screen:
                    screen.show(now, clock.left(now))
                elif waiting and time.monotonic() - last > _PLAIN_EVERY:
                    last = time.monotonic()
                    for each in now:
                        if each.record.state == "running":
                            say(line_of(each))
                    left = clock.left(now)
                    if left is not None:
                        say(f"about {duration(left)} left")
    for problem in problems:
        raise StudyError(f"a direction could not be worked on: {problem!r}") from problem


def _outcome(record: Record) -> str:
    text = f"{record.tag}: {record.state}, {record.iterations} iterations, {record.seconds:.1f} s"
    return text + (f": {record.message}" if record.message else "")


class _Screen:
    """A table that is renewed in its place, and lines above it."""

    def __init__(self, live: Any) -> None:
        self._live = live

    def say(self, line: str) -> None:
        self._live.console.print(line, markup=False, highlight=False)

    def show(self, all_of_it: Sequence[Progress], left: float | None) -> None:
        table = need("rich.table").Table(box=None, padding=(0, 2, 0, 0))
        for title in ("direction", "state", "iteration", *NAMES):
            table.add_column(title, justify="left" if title == "state" else "right")
        rows = [p for p in all_of_it if p.record.state == "running"]
        waiting = sum(p.record.state == "waiting" for p in all_of_it)
        for each in rows:
            values = [f"{value:.2g}" for value in each.of_criteria] or ["-"] * len(NAMES)
            table.add_row(each.record.tag, each.record.state, str(each.iteration), *values)
        ended = len(all_of_it) - len(rows) - waiting
        told = f"{ended} of {len(all_of_it)} ended; residuals over their criteria"
        told += f"; about {duration(left)} left" if left is not None else ""
        self._live.update(need("rich.console").Group(table, told))


@contextmanager
def _screen(live: bool) -> Iterator[_Screen | None]:
    if not live:
        yield None
        return
    try:
        rich_live = need("rich.live")
    except MissingPackage:
        yield None
        return
    with rich_live.Live(refresh_per_second=4, transient=True) as display:
        yield _Screen(display)
