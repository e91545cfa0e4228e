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


@main.command()
@click.argument("study", type=_FILE)
@click.option("-j", "--jobs", type=click.IntRange(1), help="Directions side by side.")
@click.option("--threads", type=click.IntRange(1), help="Threads of each direction.")
@click.option(
    "--keep",
    type=click.Choice(CHOICES),
    default="fields",
    show_default=True,
    help="What remains of a converged direction.",
)
@click.option("--retry", is_flag=True, help="Other settings, step by step, where one has not.")
@click.option("--save-every", type=click.IntRange(0), default=0, help="Iterations between saves.")
def run(
    study: Path, jobs: int | None, threads: int | None, keep: str, retry: bool, save_every: int
) -> int:
    """Run all directions that are not done; 0 all converged, 3 some did not, 1 one was stopped."""
    from torvex.study.run import RunOptions, run_study

    live = sys.stdout.isatty()
    options = RunOptions(jobs, threads, keep, retry, save_every, live)
    return run_study(existing_study(study), options, click.echo)


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
