"""A case that the program solves in a second: a hill east of the centre, three wind directions."""

import math
import os
import subprocess
from pathlib import Path

import numpy as np

ANGLES = (0.0, 22.5, 270.0)
TAGS = ("000_0", "022_5", "270_0")
ITERATIONS = 2
Z0 = 0.03  # roughness length of the whole map [m]
HILL_EAST, HILL_NORTH = 140.0, -90.0  # of the top [m]
GROUND, HILL_HEIGHT, HILL_LENGTH = 100.0, 40.0, 120.0
CENTRE = (139 + 45 / 60, 35.5)  # [degrees]
SITES = {"CENTRE": (0.0, 0.0), "OFF THE TOP": (100.0, -60.0)}  # east and north [m]


def metres_per_degree():
    """East and north on a sphere: good to half a per cent, far below the mesh's spacing."""
    north = 6371000 * math.pi / 180
    return north * math.cos(math.radians(CENTRE[1])), north


def site_lines():
    """The sites and one far outside the mesh."""
    per_lon, per_lat = metres_per_degree()
    places = [
        (label, east / per_lon * 3600, north / per_lat * 3600)
        for label, (east, north) in SITES.items()
    ]
    places.append(("FAR AWAY", 3600.0, 0.0))
    return "\n".join(
        f"  SITE({n})%LABEL = '{label}', SITE({n})%LON = 139, 45, {east:.4f}, "
        f"SITE({n})%LAT = 35, 30, {north:.4f}"
        for n, (label, east, north) in enumerate(places, 1)
    )


CASE = f"""A small hill.
&NML_RUN /
&NML_CASEFILE
  CENT_LON = 139, 45, 0
  CENT_LAT = 35, 30, 0
  WE_LENGTH = 400, NS_LENGTH = 400
  WD_TYPE = 1
  N_WIND_DIRECTION = 3
  WIND_DIRECTION_ANGLE = {", ".join(map(str, ANGLES))}
  MIN_DXY = 40, MAX_DXY = 50, MIN_DXY_RAD = 200
  MESH_HRATIO = 1.2
  MIN_DZ = 20, MESH_VRATIO = 1.3
  BASIC_H_FILE = 'h.map', BASIC_Z0_FILE = 'z0.map'
/
&NML_MONITOR
  MONITOR_STEP = 1
/
&NML_ER /
&NML_BOUNDARY_TREATMENT /
&NML_NAVIER_STOKES /
&NML_NUMERICAL_SOLVER
  MAXIT = {ITERATIONS}
/
&NML_SITE
  N_SITE = {len(SITES) + 1}
{site_lines()}
/
"""

# Columns and rows of the elevation map, 30 m by 37 m apart.
COUNT, STEP = 301, 0.02
HEADER = """<TORVEX_MAP lon-lat>
# round 139 45 E, 35 30 N
n_lon = {n}, n_lat = {n}, d_lon = {step}, d_lat = {step},
base_longitude = 139 {west}
base_latitude = 35 {south}
--DATA--
"""


def elevation(east, north):
    r2 = (east - HILL_EAST) ** 2 + (north - HILL_NORTH) ** 2
    return GROUND + HILL_HEIGHT * np.exp(-r2 / HILL_LENGTH**2)


def write_maps(directory):
    half = STEP * (COUNT - 1) / 2
    text = HEADER.format(n=COUNT, step=STEP, west=45 - half, south=30 - half)
    per_lon, per_lat = metres_per_degree()
    for row in range(COUNT):
        north = (row * STEP - half) / 60 * per_lat
        heights = elevation((np.arange(COUNT) * STEP - half) / 60 * per_lon, north)
        text += " ".join(f"{h:.4f}" for h in heights) + "\n"
    (directory / "h.map").write_text(text)
    rows = f"5*{Z0}\n" * 5
    (directory / "z0.map").write_text(HEADER.format(n=5, step=10, west=25, south=10) + rows)


def start(directory, case=CASE, **streams):
    """The program on a case in a directory that holds its maps."""
    directory = Path(directory)
    (directory / "torvex.tin").write_text(case)
    program = os.environ.get(
        "TORVEX_PROGRAM", Path(__file__).resolve().parents[2] / "build" / "bin" / "torvex"
    )
    return subprocess.Popen(
        [program],
        cwd=directory,
        env={**os.environ, "OMP_NUM_THREADS": "1"},
        stderr=subprocess.STDOUT,
        stdin=subprocess.DEVNULL,
        text=True,
        **streams,
    )


def run(directory):
    """Runs the program in a directory; its console where it fails."""
    write_maps(Path(directory))
    with start(directory, stdout=subprocess.PIPE) as running:
        try:
            console, _ = running.communicate(timeout=240)
        except subprocess.TimeoutExpired:
            running.kill()
            raise
    if running.returncode != 0:
        raise RuntimeError(f"{running.args} ended with {running.returncode}:\n{console[-2000:]}")
