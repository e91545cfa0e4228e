"""The short cases of scripts/same-bytes: runs that between them take most paths through the program.

A case is a function that is given a Case: it writes input files, and runs the program once or a few
times. What it is for is said by the exit status and the words of the log that it expects. A new case
goes to its section; it should take no more than a second or two.
"""

import math
import os
import pathlib
import shutil
import subprocess
import sys
import time

import numpy as np

TOP = pathlib.Path(__file__).resolve().parent.parent
ROOM = TOP / "build" / "same-bytes"
EXAMPLES = os.path.relpath(TOP / "examples", ROOM / "runs" / "case")  # from the directory of a case

sys.path.insert(0, str(TOP / "python"))
import torvex  # noqa: E402  the readers of result files

TIME_LIMIT = 120  # of one run [s]


# --- what the cases are made of ------------------------------------------------------------------

GROUPS = {
    "run": "NML_RUN", "casefile": "NML_CASEFILE", "monitor": "NML_MONITOR", "er": "NML_ER",
    "boundary": "NML_BOUNDARY_TREATMENT", "flow": "NML_NAVIER_STOKES",
    "solver": "NML_NUMERICAL_SOLVER", "site": "NML_SITE",
}

# A hill in a roughness that rises eastwards, one direction, 12 iterations.
HILL = {
    "casefile": """BASIC_H_FILE = 'h.map', BASIC_Z0_FILE = 'z0.map'
  CENT_LON = 139, 45, 0, CENT_LAT = 35, 30, 0
  WE_LENGTH = 600, NS_LENGTH = 600, MIN_DXY = 60, MAX_DXY = 100, MIN_DXY_RAD = 200
  MESH_HRATIO = 1.3, MIN_DZ = 8, MESH_VRATIO = 1.4
  WD_TYPE = 1, N_WIND_DIRECTION = 1, WIND_DIRECTION_ANGLE = 270, 22.5, 135""",
    "monitor": "MONITOR_STEP = 5",
    "solver": "MAXIT = 12",
}

# Real terrain, coarsely: two directions, three sites, a monitor point of its own.
BUTTE = {
    "casefile": f"""BASIC_H_FILE = '{EXAMPLES}/big_butte/elevation.map'
  BASIC_Z0_FILE = '{EXAMPLES}/big_butte/roughness.map'
  CENT_LON = -113, -1, -30, CENT_LAT = 43, 24, 0, GS = 3
  WE_LENGTH = 1600, NS_LENGTH = 1600, MIN_DXY = 120, MAX_DXY = 300, MIN_DXY_RAD = 400
  MESH_HRATIO = 1.25, MIN_DZ = 8, MESH_VRATIO = 1.35
  WD_TYPE = 1, N_WIND_DIRECTION = 2, WIND_DIRECTION_ANGLE = 240, 22.5""",
    "monitor": """MONITOR_POSITION = 1, MONITOR_LON = -113, -1, -18.8148, MONITOR_LAT = 43, 23, 46.6764
  MONITOR_HEIGHT = 50, MONITOR_STEP = 5""",
    "solver": "MAXIT = 12",
    "site": """N_SITE = 3
  SITE(1)%LABEL = 'SUMMIT', SITE(1)%LON = -113, -1, -18.8148, SITE(1)%LAT = 43, 23, 46.6764
  SITE(2)%LABEL = 'NORTH_TOP', SITE(2)%LON = -113, -1, -26.1588, SITE(2)%LAT = 43, 24, 6.966
  SITE(3)%LABEL = 'FAR', SITE(3)%LON = -112, 0, 0, SITE(3)%LAT = 43, 24, 0""",
}

# Askervein hill at a coarse mesh, wind from 210 degrees.
ASKERVEIN = {
    "casefile": f"""BASIC_H_FILE = '{EXAMPLES}/askervein/elevation.map'
  BASIC_Z0_FILE = '{EXAMPLES}/askervein/roughness.map'
  CENT_LON = -7, -22, -32.46, CENT_LAT = 57, 11, 20.65
  WE_LENGTH = 1400, NS_LENGTH = 1400, MIN_DXY = 80, MAX_DXY = 200, MIN_DXY_RAD = 300
  MESH_HRATIO = 1.25, MIN_DZ = 5, MESH_VRATIO = 1.35
  WD_TYPE = 1, N_WIND_DIRECTION = 1, WIND_DIRECTION_ANGLE = 210""",
    "boundary": "ADD_R = 0.7",
    "monitor": "MONITOR_STEP = 5",
    "solver": "MAXIT = 12",
}


def case_text(base, blocks="", **more):
    """A case file: the groups of `base`, more lines at the end of some, keyed blocks behind. Of two
    values of a key the last counts."""
    lines = []
    for group, name in GROUPS.items():
        lines += [f"&{name}", "  " + base.get(group, ""), "  " + more.pop(group, ""), "/"]
    if more:
        raise KeyError(f"no such group: {', '.join(more)}")
    return "\n".join(lines) + "\n" + blocks


def map_text(value, points=71, spacing=60.0, header=""):
    """A map round the centre of the hill case; value(x, y) at metres east and north of it."""
    per_lon, per_lat = 1511.6, 1849.2  # metres of a minute, near enough
    reach = spacing * (points - 1) / 2
    rows = [" ".join(f"{value(spacing * i - reach, spacing * j - reach):.3f}" for i in range(points))
            for j in range(points)]
    return (f"<TORVEX_MAP lon-lat>\n{header}n_lon = {points}, n_lat = {points}\n"
            f"d_lon = {spacing / per_lon:.9f}, d_lat = {spacing / per_lat:.9f}\n"
            f"base_longitude = 139 {45 - reach / per_lon:.8f}\n"
            f"base_latitude = 35 {30 - reach / per_lat:.8f}\n--DATA--\n" + "\n".join(rows) + "\n")


def hill(x, y):
    return 60 * math.exp(-((x - 50) ** 2 + (y + 30) ** 2) / 300**2) + 0.005 * x


def roughness(x, y):
    return 0.03 if x < 200 else 0.3 + 0.1 * math.sin(y / 300)


H_MAP = map_text(hill)
Z0_MAP = map_text(roughness, 48, 90.0)


def write_tuf(path, file_id, extents, *arrays):
    """Binary records, each between its length in front and behind."""
    with open(path, "wb") as file:
        records = [([file_id], "<i4"), (extents, "<i4"), *((array, "<f4") for array in arrays)]
        for values, kind in records:
            data = np.asarray(values, kind).tobytes(order="F")
            length = np.int32(len(data)).tobytes()
            file.write(length + data + length)


PROFILE = "height u tke\n5 4.9 0.60\n10 5.6 0.58\n50 7.4 0.50\n200 9.2 0.35\n500 10.0 0.20\n"
CANOPY = "&canopy_parameters\ncanopy_mode = 1\n{}/\n"


class NotAsMeant(Exception):
    """A run that does not do what its case is there for."""


class Case:
    """A case while it runs: its directory, and the program that runs in it."""

    def __init__(self, directory, program, store):
        self.directory, self.program, self.store = directory, program, store
        self.runs = 0

    def write(self, name, text):
        (self.directory / name).write_text(text)

    def case(self, base, blocks="", **more):
        if base is HILL and not (self.directory / "h.map").exists():
            self.write("h.map", H_MAP)
            self.write("z0.map", Z0_MAP)
        self.write("torvex.tin", case_text(base, blocks, **more))

    def run(self, *arguments, status=0, log="", threads=1, meanwhile=None):
        """Runs the program and stores what it leaves. `status` and words of the log say what the run
        is for; `meanwhile` is called with the process."""
        self.runs += 1
        store = self.store / f"run-{self.runs}"
        store.mkdir(parents=True)
        environment = {**os.environ, "OMP_NUM_THREADS": str(threads)}
        with open(store / "stdout", "wb") as out, open(store / "stderr", "wb") as err:
            process = subprocess.Popen([self.program, *arguments], cwd=self.directory,
                                       env=environment, stdin=subprocess.DEVNULL, stdout=out, stderr=err)
            if meanwhile:
                meanwhile(process)
            try:
                ended = process.wait(TIME_LIMIT)
            except subprocess.TimeoutExpired:
                process.kill()
                ended = process.wait()
        (store / "status").write_text(f"{ended}\n")
        shutil.copytree(self.directory, store / "files")
        if ended != status:
            told = (store / "stderr").read_text(errors="replace").strip().replace("\n", " | ")
            raise NotAsMeant(f"run {self.runs} ended with {ended}, not with {status}: {told}")
        if log and log not in (self.directory / "torvex.log").read_text(errors="replace"):
            raise NotAsMeant(f"run {self.runs}: the log does not say {log!r}")

    def forget_last_run(self):
        shutil.rmtree(self.store / f"run-{self.runs}")
        self.runs -= 1

    def lay_wood(self, tag, file=None):
        """The canopy file of a direction, a wood round the centre, on the mesh of a run before."""
        d = torvex.Direction(self.directory, tag)
        h = d.z_agl
        ground = (np.abs(d.east - 100) < 250) & (np.abs(d.north) < 250)
        wood = ground[:, :, None] & (h > 0) & (h < 20)
        write_tuf(file or self.directory / f"restart-{tag}-ccd.tuf", 104, h.shape,
                  np.where(wood, 0.4, 0), np.where(wood, 0.2, 0), np.ones(h.shape),
                  np.where(ground, 0.5, d.z0))


CASES = {}


def case(function):
    """Registers a case under the name of its function, with dashes."""
    CASES[function.__name__.replace("_", "-")] = function
    return function


def cases(names_and_values):
    """Registers a function of a case and a value once for each name in a dictionary."""
    def register(function):
        for name, value in names_and_values.items():
            CASES[name] = lambda c, value=value: function(c, value)
        return function
    return register


# --- cases: models and numerics ------------------------------------------------------------------

@cases({f"butte-model-{n}": n for n in (1, 2, 3, 4)})
def butte(c, model):
    c.case(BUTTE, flow=f"TURBULENCE_MODEL = {model}, RATIO_KL = 0.3")
    c.run(log="Finished without converging.    12 it.", threads=2)


@cases({f"hill-model-{n}": n for n in (1, 2, 3, 4)})
def to_convergence(c, model):
    c.case(HILL, flow=f"TURBULENCE_MODEL = {model}", casefile="N_WIND_DIRECTION = 2",
           solver="MAXIT = 150, CC_OUT_U = 0.01, CC_OUT_V = 0.01, CC_OUT_W = 0.01, CC_OUT_M = 0.01",
           monitor="MONITOR_STEP = 3")
    c.run(log="WD  22.5: Converged.")


@case
def askervein(c):
    c.case(ASKERVEIN)
    c.run(log="Finished without converging.    12 it.")


@cases({"double-correction": "DOUBLE_CORRECTION = T", "upwind": "RATIO = 0", "blended": "ETA = 0.8, RATIO = 0.7",
        "relaxation": "URFU = 0.7, URFV = 0.65, URFW = 0.6, URFP = 0.3, URFK = 0.4, URFE = 0.3, URFVIS = 0.8",
        "sweeps": "NSWPU = 2, NSWPV = 3, NSWPW = 1, NSWPP = 2, NSWPK = 4, NSWPE = 5",
        "without-iterations": "MAXIT = 0"})
def numerics(c, keys):
    c.case(HILL, solver=keys)
    c.run()


@case
def boostcal(c):
    c.case(HILL, casefile="N_WIND_DIRECTION = 2", monitor="MONITOR_STEP = 20",
           solver="""MAXIT = 105, BOOSTCAL = T, CC_OUT_U = 0
  URFU = 0.2, URFV = 0.2, URFW = 0.2, URFP = 0.1, URFK = 0.2, URFE = 0.2
  URFU_MAX = 0.6, URFV_MAX = 0.5, URFW_MAX = 0.7, URFP_MAX = 0.3, URFK_MAX = 0.45, URFE_MAX = 0.5""")
    c.run(log="Finished without converging.   105 it.")


@case
def diverging_direction(c):
    roughness = "USE_EQUIVALENT_ROUGHNESS = T, EQUIVALENT_ROUGHNESS = 0.03, 1.0E30, 0.05"
    c.case(HILL, casefile="N_WIND_DIRECTION = 3", er=roughness)
    c.run(log="WD  22.5: Diverged.")
    c.case(HILL, casefile="N_WIND_DIRECTION = 3", er=roughness, run="RESTART_FLAG = 1")
    c.run(log="WD 270.0: Finished without converging.    24 it.")


# --- cases: boundaries and inflow ----------------------------------------------------------------

@cases({f"tunnel-{mode}-model-{model}": (mode, model) for mode in (1, 2) for model in (1, 4)})
def tunnel(c, mode_and_model):
    mode, model = mode_and_model
    c.case(HILL, flow=f"TURBULENCE_MODEL = {model}", boundary=f"""USE_DEFAULT_MAX_Z = F, MAX_Z = 700
  WIND_TUNNEL_MODE = {mode}, WIND_TUNNEL_Z0 = 0.001""")
    c.run()


@case
def profile_file(c):
    c.write("inflow.txt", PROFILE)
    c.case(HILL, boundary="SPECIFY_INFLOW_PROFILE = T, INFLOW_PROFILE_FILE = 'inflow.txt'")
    c.run(log="Inflow profile was specified.")
    shutil.copy(c.directory / "sites-270_0-_INFLOW_PROFILE.tpd", c.directory / "other.tpd")
    c.case(HILL, boundary="SPECIFY_INFLOW_PROFILE = T, INFLOW_PROFILE_TABLE = F\n"
                          "INFLOW_PROFILE_FILE = 'other.tpd'")
    c.run(log="Inflow profile was specified.")


@case
def alpha_table(c):
    c.write("alpha.txt", "3\n  0.0  0.16\n120.0  0.20\n240.0  0.14\n")
    c.case(HILL, casefile="N_WIND_DIRECTION = 3",
           er="USE_DIRECTIONAL_ALPHA = T, DIRECTIONAL_ALPHA_FILE_NAME = 'alpha.txt'\n"
              "DIRECTIONAL_ALPHA_APPLICABLE_WDS = 1, 2")
    c.run(log="Interpolated directional alpha")


@cases({"equivalent-roughness": "USE_EQUIVALENT_ROUGHNESS = T, EQUIVALENT_ROUGHNESS = 0.1, 0.02",
        "roughness-of-additional-domain": "USE_CONSTANT_ROUGHNESS_IN_ADDITIONAL_DOMAIN = T",
        "roughness-of-all": "USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN = T",
        "inflow-elevation": "SPECIFY_INFLOW_ELEVATION = T, INFLOW_ELEVATION = 10",
        "slope-limit": "SPECIFY_INFLOW_ELEVATION = T, INFLOW_ELEVATION = 10, BOUNDARY_HEIGHT_MODE = 1\n"
                       "BUFFER_ZONE_SLOPE_GRADIENT = 15"})
def edges(c, keys):
    c.case(HILL, casefile="N_WIND_DIRECTION = 2", er=keys)
    c.run()


@case
def atlas_and_its_heirs(c):
    c.case(HILL)
    c.run()
    c.case(HILL, run="ATLAS_FLAG = 1")
    c.run()
    c.case(HILL, run="MESO_DWS_MODE = T")
    c.run()


# --- cases: mesh and maps ------------------------------------------------------------------------

@cases({"flat": "flat", "flat2": "flat2"})
def flat_terrain(c, mode):
    c.case(HILL, casefile="N_WIND_DIRECTION = 2", solver="MAXIT = 0")
    c.run()
    c.case(HILL, run=f"TERRAIN_MODE = '{mode}'", casefile="N_WIND_DIRECTION = 2, FLAT_ROUGHNESS = 0.05",
           solver="DOUBLE_CORRECTION = T")
    c.run()


@case
def sixteen_sectors(c):
    c.case(HILL, casefile="WD_TYPE = 0, N_WIND_DIRECTION = 16", solver="MAXIT = 0")
    c.run()


@case
def detailed_maps(c):
    c.write("fine-h.map", map_text(lambda x, y: hill(x, y) + 5 * math.sin(x / 80), 41, 20.0))
    c.write("fine-z0.map", map_text(lambda x, y: 0.8, 25, 30.0, "geodetic_system = 'WGS'\n"))
    c.case(HILL, casefile="""DETAILED_H_FILE = 'fine-h.map', DETAILED_Z0_FILE = 'fine-z0.map', GS = 3
  SPECIFY_ELEVATION_CORRECTION_FACTOR = T, ELEVATION_CORRECTION_FACTOR = 0.8""")
    c.run()


@cases({"top-of-the-user": "USE_DEFAULT_MAX_Z = F, MAX_Z = 800", "top-follows-terrain": "USE_TFTB = T",
        "even-layers": "CONSTANT_DZ_HEIGHT = 60, MIN_DZ_HEIGHT = 40",
        "buffers": "SIDE_BR = 0.4, UP_BR = 0.5, DOWN_BR = 0.2, ADD_R = 0.6"})
def heights(c, keys):
    c.case(HILL, boundary=keys, solver="MAXIT = 6")
    c.run()


@case
def mesh_lines_of_a_file(c):
    x = range(-1360, 961, 80)
    y = range(-960, 961, 80)
    places = [len(x) + 1, len(y) + 1, -800, -400, 0, 400, "", 0, 400, ""]
    c.write("lines.txt", "".join(f"{v}\n" for v in (*places, *x, "", *y)))
    c.case(HILL, casefile="XYCONF = 'lines.txt'")
    c.run()
    c.case(HILL, casefile="XYCONF = 'lines.txt'",
           er="SPECIFY_INFLOW_ELEVATION = T, INFLOW_ELEVATION = 10, BOUNDARY_HEIGHT_MODE = 2")
    c.run()


# --- cases: results on the way, resuming ---------------------------------------------------------

@case
def intermediate_results(c):
    c.write("#OutputIntermediateCount", "5\n")
    c.case(HILL, casefile="N_WIND_DIRECTION = 2", site="N_SITE = 1, SITE(1)%LABEL = 'top'\n"
           "SITE(1)%LON = 139, 45, 1, SITE(1)%LAT = 35, 30, 1")
    c.run()


@case
def debug_mode(c):
    c.case(BUTTE, run="DEBUG_MODE = 4", casefile="N_WIND_DIRECTION = 1", solver="MAXIT = 10")
    c.run()


@cases({f"resume-model-{n}": n for n in (1, 2, 4)})
def resume(c, model):
    model_key = f"TURBULENCE_MODEL = {model}, RATIO_KL = 0.2"
    c.case(HILL, casefile="N_WIND_DIRECTION = 2", flow=model_key, solver="MAXIT = 7")
    c.run(log="Finished without converging.     7 it.")
    c.case(HILL, casefile="N_WIND_DIRECTION = 3", flow=model_key, run="RESTART_FLAG = 1", solver="MAXIT = 6")
    c.run(log="Finished without converging.    13 it.")
    c.case(HILL, casefile="N_WIND_DIRECTION = 3", flow="TURBULENCE_MODEL = 3", run="RESTART_FLAG = 1",
           solver="MAXIT = 2")
    c.run(log="Finished without converging.    15 it.")


@case
def resume_of_real_terrain(c):
    c.case(BUTTE, solver="MAXIT = 8, DOUBLE_CORRECTION = T")
    c.run(log="Finished without converging.     8 it.")
    c.case(BUTTE, run="RESTART_FLAG = 1", solver="MAXIT = 6, DOUBLE_CORRECTION = T")
    c.run(log="Finished without converging.    14 it.")


@case
def resume_of_finished_directions(c):
    c.case(BUTTE, solver="MAXIT = 5")
    c.run()
    wide = "OUT_CC_LIMIT = 0, CC_OUT_U = 1, CC_OUT_V = 1, CC_OUT_W = 1, CC_OUT_M = 1"
    c.case(BUTTE, run="RESTART_FLAG = 1", solver=wide)
    c.run()
    c.case(BUTTE, run="RESTART_FLAG = 2", solver="MAXIT = 5", casefile="N_WIND_DIRECTION = 1")
    c.run()


@case
def resume_of_a_corrected_result(c):
    c.case(HILL, solver="MAXIT = 5")
    c.run()
    result = torvex.Direction(c.directory, "270_0").result
    fields = [result[name] for name in "u v w p tke ted flxU flxV flxW vis pp".split()]
    fields[0] = 1.01 * fields[0]
    write_tuf(c.directory / "restart-270_0-vpkeout_00005_r.tuf", 112, result.extents, *fields,
              np.int32(5).view("<f4"), 0.0)
    c.case(HILL, run="RESTART_FLAG = 1", solver="MAXIT = 4")
    c.run(log="Finished without converging.     9 it.")


@case
def user_stop(c):
    """The file that stops a run is laid as soon as the log tells of a direction: it acts in the first
    iteration."""
    def lay_stop(process):
        log = c.directory / "torvex.log"
        while process.poll() is None and not (log.exists() and b"Entered" in log.read_bytes()):
            time.sleep(0.001)
        c.write("#stop_message", "")

    c.case(ASKERVEIN, casefile="N_WIND_DIRECTION = 2, WIND_DIRECTION_ANGLE = 210, 30")
    for tries_left in range(9, -1, -1):  # on a busy machine a run may get further
        try:
            c.run(status=2, log="WD 210.0: Finished without converging.     0 it.",
                  meanwhile=lay_stop)
            break
        except NotAsMeant:
            if not tries_left:
                raise
            c.forget_last_run()
            for left in c.directory.iterdir():
                if left.name != "torvex.tin":
                    left.unlink()
    c.case(ASKERVEIN, run="RESTART_FLAG = 1", solver="MAXIT = 2")
    c.run()


# --- cases: canopy, user's domain ----------------------------------------------------------------

def wooded(c, block="", **more):
    c.case(HILL, solver="MAXIT = 0")
    c.run()
    c.lay_wood("270_0")
    c.case(HILL, CANOPY.format(block), **more)
    c.run()


@cases({"canopy-model-1": "", "canopy-model-3": "TURBULENCE_MODEL = 3"})
def canopy(c, model):
    wooded(c, flow=model)


@case
def canopy_constants(c):
    wooded(c, "start_cal_src = 5\nbeta_p = 1.2\nbeta_d = 4\ncpe1 = 1.1\ncpe2 = 0.8\ncfp1 = 0.9\n")


@case
def canopy_resumed(c):
    wooded(c)
    c.case(HILL, CANOPY.format(""), run="RESTART_FLAG = 1", solver="MAXIT = 5")
    c.run(log="Finished without converging.    17 it.")


def given_domain(c):
    """Nodes over a ridge, roughness and tables of inflow."""
    s, t, q = np.meshgrid(*(np.linspace(0, 1, n) for n in (16, 12, 11)), indexing="ij")
    ground = 25 * np.exp(-((s - 0.4) / 0.15) ** 2)
    z = ground + (400 - ground) * q**1.7
    write_tuf(c.directory / "my-xyz.tuf", 101, s.shape, 900 * s - 300, 500 * t - 250, z)
    counts = [n + 1 for n in s.shape]
    write_tuf(c.directory / "my-z0.tuf", 102, counts[:2], np.full(counts[:2], 0.04))
    c.write("counts.txt", "".join(f"{n}\n" for n in counts))
    c.write("sigma.txt", "height u sigma\n5 4.9 1.10\n50 7.4 1.00\n200 9.2 0.85\n500 10.0 0.60\n")
    c.write("precise.txt", "height u tke ted\n5 4.9 1.14 0.1\n50 7.4 0.95 0.01\n500 10.0 0.34 5e-4\n")


DOMAIN = {
    "run": "TORVEX_MODE = 1", "casefile": "CENT_LON = 139, 45, 0, CENT_LAT = 35, 30, 0",
    "monitor": "MONITOR_STEP = 5", "solver": "MAXIT = 12",
}


def domain_block(more):
    return ("&user_domain\nmesh_n_file = counts.txt\nxyz_file = my-xyz.tuf\n"
            f"roughness_file = my-z0.tuf\n{more}/\n")


@cases({"domain-inlet-0": "inlet = 0\n", "domain-inlet-2": "inlet = 2\n",
        "domain-sigma": "inlet = 1\ninflow_profile_file = sigma.txt\n",
        "domain-precise": "inlet = 1\ninflow_profile_file = precise.txt\nspecify_turbulence = T\n"})
def user_domain(c, block):
    given_domain(c)
    c.case(DOMAIN, domain_block(block))
    c.run(log="WD   0.0: Finished without converging.    12 it.")


@case
def domain_with_canopy_resumed(c):
    given_domain(c)
    c.case(DOMAIN, domain_block(""), solver="MAXIT = 0")
    c.run()
    c.lay_wood("000_0", c.directory / "my-ccd.tuf")
    blocks = domain_block("ccd_file = my-ccd.tuf\n") + CANOPY.format("")
    c.case(DOMAIN, blocks)
    c.run()
    shutil.copy(c.directory / "my-ccd.tuf", c.directory / "restart-000_0-ccd.tuf")
    c.case(DOMAIN, blocks, run="RESTART_FLAG = 1", solver="MAXIT = 4")
    c.run(log="WD   0.0: Finished without converging.    16 it.")


# --- cases: what ends in a stop ------------------------------------------------------------------

# Name: exit status, and the keys by group or the arguments that lead to it.
STOPS = {
    "unknown-argument": (102, ["/F"]),
    "no-case-file": (1, ["/f", "none.tin"]),
    "unknown-key": (1, {"run": "BOGUS = 1"}),
    "map-missing": (111, {"casefile": "BASIC_H_FILE = 'none.map'"}),
    "map-cut": (113, {"casefile": "BASIC_H_FILE = 'cut.map'"}),
    "header-cut": (112, {"casefile": "BASIC_H_FILE = 'header.map'"}),
    "no-map": (113, {"casefile": "BASIC_H_FILE = 'torvex.tin'"}),
    "no-roughness": (134, {"casefile": "BASIC_Z0_FILE = 'h.map'"}),
    "detailed-map-missing": (141, {"casefile": "DETAILED_Z0_FILE = 'none.map'"}),
    "outside-the-map": (151, {"casefile": "CENT_LON = 139, 44, 10"}),
    "layers": (152, {"boundary": "CONSTANT_DZ_HEIGHT = 5000"}),
    "side-buffer": (153, {"casefile": "MIN_DXY = 300, MAX_DXY = 600"}),
    "upwind-buffer": (154, {"boundary": "UP_BR = 0.001, BZ_LIMIT = 1"}),
    "cell-sizes": (156, {"casefile": "MIN_DXY = 151"}),
    "mesh-ratio": (157, {"casefile": "MESH_HRATIO = 0.99"}),
    "equivalent-roughness-of-0": (158, {"er": "USE_EQUIVALENT_ROUGHNESS = T"}),
    "monitor-outside": (161, {"monitor": "MONITOR_POSITION = 1, MONITOR_HEIGHT = 10"}),
    "monitor-too-high": (162, {"boundary": "CONSTANT_DZ_HEIGHT = 20"}),
    "monitor-in-the-ground": (163, {"monitor": "MONITOR_POSITION = 1, MONITOR_LON = 139 45 0\n"
                                               "MONITOR_LAT = 35 30 0"}),
    "no-upwind-roughness": (186, {"run": "ATLAS_FLAG = 1"}),
    "atlas-over-flat": (191, {"run": "ATLAS_FLAG = 1, TERRAIN_MODE = 'flat'"}),
    "turbulence-model-5": (1, {"flow": "TURBULENCE_MODEL = 5"}),
    "nested": (0, {"blocks": """&nest_points
nest_mode = 1
nest_site%label = child
nest_site%lon = 139, 45, 0
nest_site%lat = 35, 30, 0
nest_site%n_x_div = 2
nest_site%n_y_div = 2
nest_site%c2xmax = 100
nest_site%c2ymax = 100
/
"""}),
    "canopy-missing": (1, {"blocks": CANOPY.format("")}),
}


@cases({"stop-" + name: what for name, what in STOPS.items()})
def stops(c, what):
    status, cause = what
    c.write("cut.map", "".join(H_MAP.splitlines(keepends=True)[:40]))
    c.write("header.map", "<TORVEX_MAP lon-lat>\nn_lon = 5\n--DATA--\n")
    c.case(HILL, **(cause if isinstance(cause, dict) else {}))
    c.run(*(cause if isinstance(cause, list) else []), status=status)


@case
def stop_in_the_second_direction(c):
    """The saved mesh of the second direction is gone when the run is resumed."""
    c.case(HILL, casefile="N_WIND_DIRECTION = 2", solver="MAXIT = 2")
    c.run()
    (c.directory / "restart-022_5-xyz.tuf").unlink()
    c.case(HILL, casefile="N_WIND_DIRECTION = 2", solver="MAXIT = 2", run="RESTART_FLAG = 1")
    c.run(status=210)


@case
def stop_on_a_resume(c):
    c.case(HILL, solver="MAXIT = 2")
    c.run()
    c.case(HILL, solver="MAXIT = 2", run="RESTART_FLAG = 1")
    result = c.directory / "restart-270_0-vpkeout_00002.tuf"
    write_tuf(result, 112, [3, 3, 3])
    c.run(status=232)
    result.unlink()
    c.run(status=231)
    write_tuf(c.directory / "restart-270_0-z0.tuf", 101, [3, 3])
    c.run(status=221)
    write_tuf(c.directory / "restart-270_0-xyz.tuf", 101, [3, 3, 3])
    c.run(status=212)


@cases({"stop-domain-inlet": "inlet = 3\n",
        "stop-domain-profile": "inlet = 1\ninflow_profile_file = counts.txt\n"})
def domain_stops(c, block):
    given_domain(c)
    c.case(DOMAIN, domain_block(block))
    c.run(status=1)
