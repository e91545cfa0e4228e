"""Directions as tasks of a job array, and a job behind it that gathers.

What a task has done is told by the records in the directions' own folders, so that nothing is asked
of the scheduler but to run scripts. A task saves its state every so many iterations and is gone on
with from there, to the bit, when it is put into the queue again or submitted once more.
"""

from __future__ import annotations

import math
import os
import re
import shutil
import signal
import subprocess
import sys
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import torvex
from torvex.packages import need
from torvex.study.case_text import read_study_case
from torvex.study.child import Control
from torvex.study.direction import Job, plan_of, run_direction
from torvex.study.errors import StudyError
from torvex.study.ladder import ladder
from torvex.study.layout import Study, existing_study
from torvex.study.map_file import write_whole
from torvex.study.prep_check import Check, check_case
from torvex.study.record import ENDED
from torvex.study.run import RunOptions, jobs_of
from torvex.study.summary import exit_status, number_of, summary_lines, write_summary

Say = Callable[[str], None]
SAVE_EVERY, SAVE_EVERY_ACCELERATED = 100, 20  # iterations, of which the latter take longer
_OWN_MEMORY = 150_000_000  # of the process that watches a direction
_TEMPLATES = Path(__file__).parent / "templates"


@dataclass(frozen=True)
class SlurmOptions:
    run: RunOptions
    dry_run: bool = False
    partition: str | None = None
    account: str | None = None
    memory: str | None = None  # as sbatch takes it: 800M, 2G
    time: str | None = None  # as sbatch takes it: 30, 02:00:00
    at_most: int | None = None  # tasks at a time
    wait: bool = False


def submit(studies: Sequence[Study], options: SlurmOptions, say: Say) -> int:
    """One array for what is to be done in all studies, or more where the scheduler takes none so
    large; the exit status."""
    if not options.dry_run and shutil.which("sbatch") is None:
        raise StudyError("sbatch is not on the path; run this where Slurm's commands are installed")
    to_do: list[Job] = []
    memory = seconds = 0.0
    for study in studies:
        case = read_study_case(study.case)
        jobs = [job for job in jobs_of(study, case, options.run) if _is_open(job, say)]
        if jobs:
            check = check_case(case)
            memory = max(memory, check.memory)
            seconds = max(seconds, _longest(jobs[0], check))
        to_do += jobs
    if not to_do:
        say("all directions are done; gathering")
        return gather_studies(studies, say)
    folder = _new_folder(studies[0])
    most = _largest_array()
    parts = [to_do[first : first + most] for first in range(0, len(to_do), most)]
    scripts = scripts_of(studies, parts, folder, options, memory, seconds)
    if options.dry_run:
        for name, text in scripts.items():
            say(f"--- {folder / name}\n{text}")
        return 0
    folder.mkdir(parents=True)
    for name, text in scripts.items():
        write_whole(folder / name, [text])
    arrays = [_sbatch([str(folder / f"array{n}.sh")]) for n in range(1, len(parts) + 1)]
    behind = _sbatch([f"--dependency=afterany:{':'.join(arrays)}", str(folder / "gather.sh")])
    write_whole(folder / "jobs.txt", [f"array {' '.join(arrays)}\ngather {behind}\n"])
    told = number_of(len(to_do), "direction")
    say(f"{told} submitted as array {', '.join(arrays)}, gathering as job {behind}")
    say(f"scripts and output: {folder}; torvex-study status tells how far they are")
    return 0


def _largest_array() -> int:
    """Tasks that the scheduler takes as one array; where it does not say, what it takes if nobody
    has set anything else."""
    try:
        told = subprocess.run(
            ["scontrol", "show", "config"], capture_output=True, text=True, check=False
        ).stdout
    except OSError:
        told = ""
    found = re.search(r"MaxArraySize\s*=\s*(\d+)", told)
    return max(1, int(found[1]) - 1 if found else 1000)


def _is_open(job: Job, say: Say) -> bool:
    plan = plan_of(job)
    if plan.action == "busy":
        say(f"{job.study.name} {job.tag}: left alone: {plan.why}")
    return plan.action not in ("done", "busy")


def _longest(job: Job, check: Check) -> float:
    """Seconds that a direction may take: all iterations that it is allowed, on a machine half as
    fast, and the time to begin; the check measures on one core."""
    iterations = job.case.maxit
    if job.retry:
        iterations += sum(step.factor * job.case.maxit for step in ladder(job.case))
    return 600 + 2 * check.s_per_iteration * iterations


def _new_folder(study: Study) -> Path:
    """Scripts of an array stay as they are, since its tasks may be begun once more at any time."""
    root = (study.root / "slurm").resolve()
    number = 1
    while (root / f"{number:03d}").exists():
        number += 1
    return root / f"{number:03d}"


def scripts_of(
    studies: Sequence[Study],
    parts: Sequence[Sequence[Job]],
    folder: Path,
    options: SlurmOptions,
    memory: float,
    seconds: float,
) -> dict[str, str]:
    """Names and texts: for each array the list of its tasks and its script, and the job behind."""
    jobs = [job for part in parts for job in part]
    jinja2 = need("jinja2")
    environment = jinja2.Environment(
        loader=jinja2.FileSystemLoader(_TEMPLATES),
        trim_blocks=True,
        lstrip_blocks=True,
        undefined=jinja2.StrictUndefined,
    )
    environment.filters["quoted"] = _quoted
    environment.filters["output"] = lambda path: path.replace("%", "%%")  # where %a is a task
    run = options.run
    given: dict[str, Any] = {
        "name": studies[0].name + (f"+{len(studies) - 1}" if len(studies) > 1 else ""),
        "folder": str(folder),
        "at_most": options.at_most,
        "threads": run.threads or 1,
        "memory": options.memory or f"{math.ceil((1.25 * memory + _OWN_MEMORY) / 1e6)}M",
        "time": options.time or str(math.ceil(seconds / 60)),
        "partition": options.partition,
        "account": options.account,
        "torvex": str(jobs[0].program),
        "prep": next((str(job.prep) for job in jobs if job.prep), None),
        "packages": str(Path(torvex.__file__).resolve().parents[1]),
        "python": sys.executable,
        "keep": run.keep,
        "retry": run.retry,
        "save_every": run.save_every or _save_every(jobs),
        "studies": [str(study.root.resolve()) for study in studies],
    }
    scripts = {}
    for number, part in enumerate(parts, start=1):
        lines = [f"{job.study.root.resolve()}\t{job.tag}\n" for job in part]
        here = given | {"number": number, "tasks": len(part)}
        scripts[f"tasks{number}.txt"] = "".join(lines)
        scripts[f"array{number}.sh"] = environment.get_template("array.sh.j2").render(here)
    scripts["gather.sh"] = environment.get_template("gather.sh.j2").render(given)
    return scripts


def _save_every(jobs: Sequence[Job]) -> int:
    accelerated = any(job.case.accelerated for job in jobs)
    return SAVE_EVERY_ACCELERATED if accelerated else SAVE_EVERY


def _quoted(text: str) -> str:
    return "'" + text.replace("'", "'\\''") + "'"


def _sbatch(words: Sequence[str]) -> str:
    done = subprocess.run(
        ["sbatch", "--parsable", *words], capture_output=True, text=True, check=False
    )
    if done.returncode != 0:
        raise StudyError(f"sbatch: {done.stderr.strip()}")
    return done.stdout.strip().split(";")[0]


# What the jobs call.


def run_task(tasks: Path, number: int, options: RunOptions, say: Say) -> int:
    """One line of a list of tasks. TERM, which a scheduler sends before it ends a task, leaves the
    state as it was saved last, so that going on from it gives the same bits."""
    lines = tasks.read_text(encoding="utf-8").splitlines()
    if not 1 <= number <= len(lines):
        raise StudyError(f"{tasks}: there is no task {number}, it has {len(lines)}")
    root, tag = lines[number - 1].split("\t")
    study = existing_study(Path(root))
    case = read_study_case(study.case)
    if tag not in case.tags:
        raise StudyError(f"{study.case}: wind direction {tag} is not in the case any more")
    job = jobs_of(study, case, options, options.threads or 1)[case.tags.index(tag)]
    plan = plan_of(job)
    if plan.action in ("done", "busy"):
        say(f"{tag}: {plan.action} {plan.why}")
        return 0
    control = Control()

    def handler(_number: int, _frame: Any) -> None:
        control.stop.set()
        control.kill.set()

    for each in (signal.SIGTERM, signal.SIGINT):
        signal.signal(each, handler)
    say(f"{tag}: {plan.action}{': ' if plan.why else ''}{plan.why}, process {os.getpid()}")
    record = run_direction(job, plan, control, say)
    say(f"{tag}: {record.state}, {record.iterations} iterations; {record.message}")
    if control.kill.is_set():
        return 128 + signal.SIGTERM
    return 0 if record.state in ENDED else 1


def gather_studies(studies: Sequence[Study], say: Say, ended: bool = False) -> int:
    """The tables of studies from the records of their directions; the worst of their statuses.
    `ended`: nobody works on them any more, whatever the records say."""
    statuses = []
    for study in studies:
        case = read_study_case(study.case)
        records = write_summary(study, case, study.height(), ended)
        say(f"{study.name}:")
        for line in summary_lines(records, study.height()):
            say(line)
        statuses.append(exit_status(records))
    order = (0, 3, 1, 130)
    return max(statuses, key=order.index)
