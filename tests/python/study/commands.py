"""torvex-study as a user calls it, and small studies to call it for."""

from __future__ import annotations

import os
import re
import subprocess
import sys
from pathlib import Path

import numpy as np

from study.made_rasters import geotiff, positions, to_crs

ROOT = Path(__file__).resolve().parents[3]
PROGRAM = os.environ.get("TORVEX_PROGRAM", str(ROOT / "build/bin/torvex"))
COMMAND = [
    sys.executable,
    "-B",
    "-c",
    "import sys; from torvex.study.command import run_command; sys.exit(run_command())",
]
CENTRE = (10.9, 47.0)


def environment(**more):
    return dict(os.environ, PYTHONPATH=str(ROOT / "python"), TORVEX=PROGRAM, **more)


def torvex_study(*words, folder, timeout=120, **more):
    return subprocess.run(
        [*COMMAND, *map(str, words)],
        cwd=folder,
        env=environment(**more),
        capture_output=True,
        text=True,
        timeout=timeout,
    )


def hill(folder, height=60.0, radius=400.0, half=3500.0, step=50.0, base=100.0):
    """A round hill of plane coordinates, as a GeoTIFF."""
    e0, n0 = to_crs(32632, *CENTRE)
    count = round(2 * half / step)
    corner = (e0 - half, n0 + half)
    e, n = positions((count, count), *corner, (step, step))
    values = base + height * np.exp(-((e - e0) ** 2 + (n - n0) ** 2) / (2 * radius**2))
    return geotiff(Path(folder) / "dem.tif", values, 32632, *corner, (step, step))


def turbines(folder):
    path = Path(folder) / "turbines.csv"
    path.write_text("name,lon,lat\nTOP,10.9,47.0\nWEST,10.897,47.0\n")
    return path


def small_study(folder, name="hill", *more):
    """A study of some seventeen thousand cells, which takes a second to run."""
    hill(folder)
    turbines(folder)
    words = ["new", name, "--dem", "dem.tif", "--roughness", "0.03", "--sites", "turbines.csv"]
    words += ["--height", "100", "--size", "1000,1000", "--cells", "18000"]
    if not {"--sectors", "--directions"} & set(more):
        words += ["--sectors", "4"]
    done = torvex_study(*words, *more, folder=folder)
    assert done.returncode == 0, done.stderr
    study = Path(folder) / name
    pin(study)
    return study


def pin(study):
    """The keys that the tests rely on, whatever a new case is given by itself."""
    text = (study / "torvex.tin").read_text()
    for key, value in (("MONITOR_STEP", "10"), ("MAXIT", "1000"), ("MESH_VRATIO", "1.15")):
        text = re.sub(rf"( {key} =) \S+.*", rf"\1 {value}", text)
    for key in ("ACCEL", "EQUILIBRIUM_INFLOW", "WALL_DISSIPATION_AT_CENTRE"):
        text = re.sub(rf"\n +{key} =.*", "", text)
    (study / "torvex.tin").write_text(text)
