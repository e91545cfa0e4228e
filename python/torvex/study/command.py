"""torvex-study on the command line: reads options, calls what does the work, tells what came."""

from __future__ import annotations

import os
import sys
from pathlib import Path
from typing import Any

import click

from torvex.packages import MissingPackage
from torvex.records import FormatError
from torvex.study.errors import StudyError
from torvex.study.keep import CHOICES
from torvex.study.layout import existing_study

_FILE = click.Path(path_type=Path)


class _Pair(click.ParamType):
    name = "a,b"

    def convert(self, value: Any, param: Any, ctx: Any) -> tuple[float, float]:
        if isinstance(value, tuple):
            return float(value[0]), float(value[1])
        try:
            first, second = map(float, str(value).split(","))
        except ValueError:
            self.fail(f"{value!r}: expected two numbers with a comma between them", param, ctx)
        return first, second


class _Angles(click.ParamType):
    name = "degrees"

    def convert(self, value: Any, param: Any, ctx: Any) -> tuple[float, ...]:
        if isinstance(value, tuple):
            return value
        try:
            return tuple(float(word) for word in value.split(","))
        except ValueError:
            self.fail(f"{value!r}: expected degrees with commas between them", param, ctx)


@click.group(context_settings={"help_option_names": ["-h", "--help"], "max_content_width": 100})
def main() -> None:
    """From rasters and turbine points to a finished, checked set of wind directions.

    \b
    torvex-study new ridge --dem dem.tif --landcover worldcover.tif --sites turbines.csv
                     --height 100 --sectors 12
    torvex-study check ridge
    torvex-study run ridge
    torvex-study status ridge
    """


@main.command()
@click.argument("study", type=_FILE)
@click.option(
    "--dem", type=_FILE, multiple=True, required=True, help="Elevations; may be repeated."
)
@click.option(
    "--dem-unit", help="Unit of the elevations, where the file says nothing: m, ft, us-ft."
)
@click.option("--sea-level", type=float, help="Height of what has no data, in metres.")
@click.option("--landcover", type=_FILE, multiple=True, help="Classes of land cover.")
@click.option("--table", help="Table of roughness: worldcover, corine, corine44 or a CSV file.")
@click.option("--roughness", help="Raster of roughness lengths, or one length, in metres.")
@click.option("--sites", type=_FILE, help="CSV, GeoPackage, shapefile ... of points.")
@click.option("--sites-crs", help="Reference system of the sites, such as EPSG:25832.")
@click.option("--sites-layer", help="Layer of a file that has several.")
@click.option("--decimal", type=click.Choice([".", ","]), default=".", help="In a CSV file.")
@click.option("--centre", type=_Pair(), help="Longitude,latitude; default: middle of the sites.")
@click.option("--size", type=_Pair(), help="Study area in metres: west-east,south-north.")
@click.option("--height", type=float, default=100.0, show_default=True, help="Of interest, in m.")
@click.option(
    "--sectors", type=click.IntRange(1, 360), help="So many equal sectors from 0 degrees."
)
@click.option("--directions", type=_Angles(), help="Wind directions: 22.5,140.")
@click.option("--cells", type=int, default=250_000, show_default=True, help="Cells of the mesh.")
@click.option("--canopy", is_flag=True, help="Forests as cells with drag, not as roughness.")
@click.option("--canopy-height", type=_FILE, help="Raster of the heights of trees, in metres.")
@click.option("--force", is_flag=True, help="Replace the maps and the case of a study.")
def new(
    study: Path,
    sectors: int | None,
    directions: tuple[float, ...] | None,
    force: bool,
    **options: Any,
) -> None:
    """Make a study: maps, a case with reasons, and where it all came from."""
    from torvex.study.new import NewStudy, make_study

    if (sectors is None) == (directions is None):
        raise StudyError("give --sectors or --directions")
    angles = directions or tuple(360.0 * n / (sectors or 1) for n in range(sectors or 1))
    command = " ".join(["torvex-study", *sys.argv[1:]])
    asked = NewStudy(directions=angles, sectors=sectors is not None, command=command, **options)
    made = make_study(study, asked, click.echo, force)
    click.echo(f"{made.root}: ready; look at {made.case}, then: torvex-study check {study}")


@main.command()
@click.argument("study", type=_FILE)
def check(study: Path) -> None:
    """What a study needs and what speaks against it, and a picture: STUDY/out/check.png."""
    from torvex.study.check import check_study

    check_study(existing_study(study), click.echo)


_KEEP = click.option(
    "--keep",
    type=click.Choice(CHOICES),
    default="fields",
    show_default=True,
    help="What remains of a converged direction.",
)
_RETRY = click.option(
    "--retry", is_flag=True, help="Steps of a ladder where one has not converged."
)
_SAVE = click.option(
    "--save-every", type=click.IntRange(0), default=0, help="Iterations between two saved states."
)
_THREADS = click.option("--threads", type=click.IntRange(1), help="Threads of each direction.")


@main.command()
@click.argument("studies", type=_FILE, nargs=-1, required=True)
@click.option("-j", "--jobs", type=click.IntRange(1), help="Directions side by side.")
@_THREADS
@_KEEP
@_RETRY
@_SAVE
@click.option("--slurm", is_flag=True, help="As an array of jobs, one direction a task.")
@click.option("--dry-run", is_flag=True, help="With --slurm: show the scripts, submit nothing.")
@click.option("--partition", help="With --slurm.")
@click.option("--account", help="With --slurm.")
@click.option("--mem", help="With --slurm: memory of a task, such as 800M; default: as needed.")
@click.option("--time", help="With --slurm: time of a task, such as 02:00:00.")
@click.option("--at-most", type=click.IntRange(1), help="With --slurm: tasks at a time.")
def run(
    studies: tuple[Path, ...],
    jobs: int | None,
    threads: int | None,
    keep: str,
    retry: bool,
    save_every: int,
    slurm: bool,
    **cluster: Any,
) -> int:
    """Run all directions that are not done; 0 all converged, 3 some did not, 1 one was stopped."""
    from torvex.study.run import RunOptions, run_study

    there = [existing_study(study) for study in studies]
    options = RunOptions(jobs, threads, keep, retry, save_every, sys.stdout.isatty())
    if slurm:
        from torvex.study.slurm import SlurmOptions, submit

        memory = cluster.pop("mem")
        return submit(there, SlurmOptions(options, memory=memory, **cluster), click.echo)
    if any(cluster.values()):
        raise StudyError("--dry-run, --partition, --account, --mem, --time, --at-most need --slurm")
    worst = 0
    for study in there:
        if len(there) > 1:
            click.echo(f"{study.name}:")
        found = run_study(study, options, click.echo)
        worst = max(worst, found, key=(0, 3, 1, 130).index)
        if found == 130:
            break
    return worst


@main.command(hidden=True)
@click.argument("tasks", type=_FILE)
@click.argument("number", type=int)
@_THREADS
@_KEEP
@_RETRY
@_SAVE
def task(
    tasks: Path, number: int, threads: int | None, keep: str, retry: bool, save_every: int
) -> int:
    """One line of a list of tasks, as a job of an array calls it."""
    from torvex.study.run import RunOptions
    from torvex.study.slurm import run_task

    return run_task(tasks, number, RunOptions(1, threads, keep, retry, save_every), click.echo)


@main.command()
@click.argument("studies", type=_FILE, nargs=-1, required=True)
@click.option("--ended", is_flag=True, help="Take for killed what is told to be running.")
def gather(studies: tuple[Path, ...], ended: bool) -> int:
    """Write the tables of studies from what their directions have left."""
    from torvex.study.slurm import gather_studies

    return gather_studies([existing_study(study) for study in studies], click.echo, ended)


@main.command()
@click.argument("study", type=_FILE)
def status(study: Path) -> None:
    """What is done, running or failed; reads only files."""
    from torvex.study.case_text import read_study_case
    from torvex.study.progress import line_of, progress_of
    from torvex.study.summary import number_of

    there = existing_study(study)
    all_of_it = progress_of(there, read_study_case(there.case))
    for each in all_of_it:
        click.echo(line_of(each))
    states = [each.record.state for each in all_of_it]
    told = ", ".join(f"{states.count(state)} {state}" for state in dict.fromkeys(states))
    click.echo(f"{number_of(len(states), 'direction')}: {told}")


def run_command() -> int:
    """The exit status; whatever a user can do something about is one sentence, and no traceback."""
    try:
        status = main.main(prog_name="torvex-study", standalone_mode=False)
        return status if isinstance(status, int) else 0
    except click.ClickException as problem:
        problem.show()
        return problem.exit_code
    except click.Abort:
        return 130
    except (StudyError, MissingPackage, FormatError, ValueError) as problem:
        return _told(str(problem))
    except MemoryError:
        return _told("out of memory; ask for a smaller area or fewer cells")
    except BrokenPipeError:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        return 141
    except OSError as problem:
        names = [str(name) for name in (problem.filename, problem.filename2) if name]
        return _told(": ".join([*names[:1], problem.strerror or str(problem)]))
    except KeyboardInterrupt:
        return 130


def _told(problem: str) -> int:
    print(f"torvex-study: {problem}", file=sys.stderr)
    return 1
