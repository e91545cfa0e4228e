"""What remains of a direction that has converged."""

from __future__ import annotations

from torvex.results import DirectionFiles
from torvex.study.child import CONSOLE, ERRORS

CHOICES = ("sites", "fields", "all")


def thin(files: DirectionFiles, keep: str) -> None:
    """all: every file; fields: cell centres, roughness and the last result, so that any height and
    place can still be asked for; sites: profiles and logs only. A direction cannot be resumed
    without its nodes: it begins anew where its case changes."""
    if keep == "all":
        return
    folder, iterations = files.directory, files.results()
    gone = [files.path(name) for name in ("xyz.tuf", "vpkeinp.tuf", "ccd.tuf")]
    gone += [files.path(name) for name in ("torvex.conv.log", "iteration.info")]
    gone += [files.result(n) for n in iterations[:-1]]
    gone += sorted(folder.glob(f"{files.stem}restart-*.info"))
    gone += sorted(folder.glob("calc_*.tdt"))
    gone += [folder / name for name in (CONSOLE, ERRORS)]
    gone += [folder / f"{files.prefix}view-{name}.dat" for name in ("convergence", "monitor")]
    if keep == "sites":
        gone += [files.path(name) for name in ("xyzc.tuf", "z0.tuf", "restart.info")]
        gone += [files.result(n) for n in iterations[-1:]]
    for path in gone:
        path.unlink(missing_ok=True)
