"""Measures the equilibrium surface layer and prints the tables that docs/validation.md shows of it.

    /usr/bin/python3 scripts/validate-surface-layer.py level       level ground, minutes
    /usr/bin/python3 scripts/validate-surface-layer.py change      a change of roughness
    /usr/bin/python3 scripts/validate-surface-layer.py order       a hill on three meshes
    /usr/bin/python3 scripts/validate-surface-layer.py askervein   Askervein, hours
    /usr/bin/python3 scripts/validate-surface-layer.py askervein 50,25 2,3     these meshes, first cells

Run it from the top directory after scripts/build. Cases are left under build/surface-layer.
"""

import math
import pathlib
import re
import shutil
import subprocess
import sys

import numpy as np

TOP = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(TOP / "python"))
from torvex.geodesy import metres_per_degree  # noqa: E402
from torvex.tuf import read_tuf  # noqa: E402

ROOM = TOP / "build" / "surface-layer"
PROGRAM = TOP / "build" / "bin" / "torvex"
EXAMPLE = TOP / "examples" / "askervein"
KAPPA = 0.41
LATITUDE = 35.5


# --- cases and what they leave -------------------------------------------------------------------

def case_text(keys):
    groups = {
        "RUN": "", "CASEFILE": "", "MONITOR": "MONITOR_STEP = 10", "ER": "",
        "BOUNDARY_TREATMENT": "", "NAVIER_STOKES": "", "SITE": "N_SITE = 0",
        "NUMERICAL_SOLVER": "URFU = 0.7, URFV = 0.7, URFW = 0.7, URFP = 0.3, URFK = 0.7, "
                            "URFE = 0.7, URFVIS = 0.7",
    }
    for group, text in keys:
        groups[group] += ("\n  " if groups[group] else "") + text
    return "".join(f"&NML_{g}\n  {text}\n/\n" for g, text in groups.items())


def both(on):
    t = "T" if on else "F"
    return [("BOUNDARY_TREATMENT", f"EQUILIBRIUM_INFLOW = {t}"),
            ("NAVIER_STOKES", f"WALL_DISSIPATION_AT_CENTRE = {t}")]


def criteria(value, most):
    return [("NUMERICAL_SOLVER",
             f"MAXIT = {most}, OUT_CC_LIMIT = {value}, "
             + ", ".join(f"CC_OUT_{q} = {value}" for q in "UVWM"))]


def empty(name):
    directory = ROOM / name
    shutil.rmtree(directory, ignore_errors=True)
    directory.mkdir(parents=True)
    return directory


def solve(directory, text):
    """Iterations, and how the only direction ended."""
    (directory / "torvex.tin").write_text(text)
    print(f"  {directory.name}", file=sys.stderr, flush=True)
    with open(directory / "console.txt", "w") as console:
        subprocess.run([PROGRAM], cwd=directory, stdout=console, check=True)
    log = (directory / "torvex.log").read_text()
    end = re.search(r"WD .*: ((?:Converged|Diverged|Finished)[^.]*)\.\s+(\d+) it", log)
    return int(end.group(2)), end.group(1).lower()


class Middle:
    """The middle row of a result along the wind: u and tke by column and level, heights, x."""

    def __init__(self, directory, stem):
        result = read_tuf(sorted(directory.glob(f"{stem}*vpkeout*"))[-1])
        centres = read_tuf(next(directory.glob(f"{stem}*xyzc*")))
        j = result["u"].shape[1] // 2
        z = np.asarray(centres["zc"][:, j, :], float)
        self.z = (z - z[:, :1])[:, 1:]
        self.x = np.asarray(centres["xc"][:, j, 1], float)
        self.u = np.asarray(result["u"][:, j, 1:], float)
        self.tke = np.asarray(result["tke"][:, j, 1:], float)

    def at(self, field, x, height):
        """Linear in the logarithm of height, then along the wind."""
        column = [np.interp(math.log(height), np.log(z), q) for z, q in zip(self.z, field)]
        return float(np.interp(x, self.x, column))


def table(head, rows):
    lines = [head, ["---"] + ["---:"] * (len(head) - 1)] + rows
    print("\n".join("| " + " | ".join(line) + " |" for line in lines) + "\n", flush=True)


# --- level ground --------------------------------------------------------------------------------

def level_case(z0, first, ratio, model, on):
    return case_text([
        ("RUN", "TERRAIN_MODE = 'flat'"),
        ("CASEFILE", f"CENT_LON = 139, 45, 0, CENT_LAT = 35, 30, 0, FLAT_ROUGHNESS = {z0}"),
        ("CASEFILE", "WE_LENGTH = 280, NS_LENGTH = 280, WD_TYPE = 1, N_WIND_DIRECTION = 1"),
        ("CASEFILE", "MIN_DXY = 200, MAX_DXY = 200, MIN_DXY_RAD = 200, MESH_HRATIO = 1"),
        ("CASEFILE", f"MIN_DZ = {first}, MESH_VRATIO = {ratio}"),
        ("BOUNDARY_TREATMENT", "ADD_R = 0, ADD_LIMIT = 9000, UP_BR = 1.5, DOWN_BR = 1.5"),
        ("BOUNDARY_TREATMENT", "SIDE_BR = 1.1"),
        ("NAVIER_STOKES", f"TURBULENCE_MODEL = {model}")]
        + both(on) + criteria(1e-4, 1000))


def level_row(z0, first, ratio, model, on):
    directory = empty(f"level-{z0}-{first}-{ratio}-{model}-{on}")
    iterations, _ = solve(directory, level_case(z0, first, ratio, model, on))
    m = Middle(directory, "flat-restart")
    end = len(m.x) - 2
    change = lambda q, h: 100 * (m.at(q, m.x[end], h) / m.at(q, m.x[0], h) - 1)
    u_star = KAPPA * m.u[end, 0] / math.log(m.z[end, 0] / z0)
    law = u_star / KAPPA * np.log(m.z[end, 1:5] / z0)
    off = 100 * np.max(np.abs(m.u[end, 1:5] / law - 1))
    heights = (10, 50, 100, 200)
    wind = [change(m.u, h) for h in heights] + [100 * (m.u[end, 0] / m.u[0, 0] - 1)]
    turbulence = max((change(m.tke, h) for h in heights), key=abs)
    return ([f"{z0:g}", f"{first:g}", f"{ratio:g}"] + [f"{w:+.1f}" for w in wind]
            + [f"{turbulence:+.1f}", f"{off:.1f}", str(iterations)])


def level():
    head = ["z0 (m)", "first cell (m)", "growth", "10 m", "50 m", "100 m", "200 m", "ground cell",
            "tke, worst", "cells 2-5", "iterations"]
    for title, on, ratios in (("Both keys on, model 1", True, (1.1, 1.2, 1.35)),
                              ("Both keys off, model 1", False, (1.2,))):
        print(title + "\n")
        table(head, [level_row(z0, first, ratio, 1, on)
                     for z0 in (0.0002, 0.03, 0.3, 1.0) for first in (1, 2, 5)
                     if first / 2 > 2 * z0 for ratio in ratios])


# --- meshes along a line -------------------------------------------------------------------------

def write_map(path, value, west, east, step):
    """value(x), the same from south to north."""
    lon, lat = (m / 60 for m in metres_per_degree(LATITUDE))
    columns, south, rows = round((east - west) / step) + 1, -2000, 3
    row = " ".join(f"{value(west + step * i):.4f}" for i in range(columns))
    path.write_text(
        f"<TORVEX_MAP lon-lat>\nn_lon = {columns}, n_lat = {rows}\n"
        f"d_lon = {step / lon:.9f}, d_lat = {-south / lat:.9f}\n"
        f"base_longitude = 139 {45 + west / lon:.8f}\nbase_latitude = 35 {30 + south / lat:.8f}\n"
        "--DATA--\n" + (row + "\n") * rows)


def write_lines(path, x, zone_ends, y, side):
    add, up, down = zone_ends
    numbers = lambda values: [repr(float(v)) for v in values]
    path.write_text("\n".join(
        [str(len(x) + 1), str(len(y) + 1)] + numbers([add, up, 0, down]) + ["--"]
        + numbers([0, side]) + ["--"] + numbers(x) + ["--"] + numbers(y)) + "\n")


def line_case(first, ratio, on, limits):
    return case_text([
        ("RUN", "TERRAIN_MODE = 'normal'"),
        ("CASEFILE", "BASIC_H_FILE = 'h.map', BASIC_Z0_FILE = 'z0.map', XYCONF = 'lines.txt'"),
        ("CASEFILE", "CENT_LON = 139, 45, 0, CENT_LAT = 35, 30, 0, WE_LENGTH = 800"),
        ("CASEFILE", "NS_LENGTH = 80, WD_TYPE = 1, N_WIND_DIRECTION = 1"),
        ("CASEFILE", "WIND_DIRECTION_ANGLE = 270, MIN_DXY = 25, MAX_DXY = 100"),
        ("CASEFILE", f"MIN_DXY_RAD = 100, MESH_HRATIO = 1.1, MIN_DZ = {first!r}"),
        ("CASEFILE", f"MESH_VRATIO = {ratio!r}"),
        ("BOUNDARY_TREATMENT", "USE_DEFAULT_MAX_Z = F, MAX_Z = 1500")] + both(on) + limits)


# --- a change of roughness -----------------------------------------------------------------------

SMOOTH, ROUGH, STEP = 0.03, 0.3, -1000.0


def growing(length, first):
    """Distances from the change on."""
    at, width = [0.0], first
    while at[-1] + width < length:
        at.append(at[-1] + width)
        width = min(1.1 * width, 100.0)
    return at


def change_case(name, dx, on):
    directory = empty(name)
    write_map(directory / "h.map", lambda x: 0.0, -4000, 4500, 500)
    write_map(directory / "z0.map", lambda x: SMOOTH if x < STEP else ROUGH, -4000, 4500, 5)
    x = sorted({STEP - d for d in growing(700, dx)} | {STEP + d for d in growing(1900, dx)})
    x = [x[0] - 100 * n for n in range(14, 0, -1)] + x + [x[-1] + 100 * n for n in range(1, 22)]
    x.remove(min(x, key=abs))
    x = sorted(x + [0.0])
    write_lines(directory / "lines.txt", x, (x[6], x[12], x[-10]), range(-300, 301, 100), 100)
    solve(directory, line_case(2.0, 1.1, on, criteria(1e-4, 1500)))
    return Middle(directory, "restart")


def elliott(fetch):
    return ROUGH * (0.75 - 0.03 * math.log(ROUGH / SMOOTH)) * (fetch / ROUGH) ** 0.8


def diffused(fetch):
    """dh/dx = 1.25 u*/u(h): Panofsky and Dutton."""
    low, high = math.log(1.01 * ROUGH), math.log(1e4)
    for _ in range(100):
        middle = (low + high) / 2
        r = math.exp(middle) / ROUGH
        if ROUGH * (r * (math.log(r) - 1) + 1) / (1.25 * KAPPA) < fetch:
            low = middle
        else:
            high = middle
    return math.exp(low)


def change():
    log_ratio = lambda h: math.log(h / SMOOTH) * math.log(10 / ROUGH) / (
        math.log(h / ROUGH) * math.log(10 / SMOOTH))
    runs = [("25 m, on", change_case("change-25-on", 25, True)),
            ("10 m, on", change_case("change-10-on", 10, True)),
            ("25 m, off", change_case("change-25-off", 25, False))]
    rows = []
    for fetch in (100, 500, 2000):
        row = [f"{fetch}"]
        for formula in (elliott, diffused):
            row += [f"{formula(fetch):.0f}", f"{log_ratio(formula(fetch)):.3f}"]
        for _, m in runs:
            speed = lambda x, h: m.at(m.u, x, h)
            column = np.array([np.interp(STEP + fetch, m.x, m.u[:, k])
                               for k in range(m.u.shape[1])]) / m.u[0]
            n = int(np.max(np.nonzero(column < 0.99)[0]))
            part = (0.99 - column[n]) / (column[n + 1] - column[n])
            z = m.z[0]
            height = math.exp((1 - part) * math.log(z[n]) + part * math.log(z[n + 1]))
            row += [f"{height:.0f}", f"{speed(STEP + fetch, 10) / speed(m.x[0], 10):.3f}"]
        rows.append(row)
    names = ["Elliott", "Panofsky"] + [name for name, _ in runs]
    table(["fetch (m)"] + [f"{n}: {q}" for n in names for q in ("height", "speed")], rows)


# --- order on a hill -----------------------------------------------------------------------------

def hill_speed_ups(n, on):
    """A ridge of 100 m with half its height 500 m from the crest, all spacings those of n = 1 over n:
    speed at 10, 30 and 50 m over the crest by that 2 km upwind. The ridge stands in the additional
    zone, whose ground is taken as it is on every mesh."""
    directory = empty(f"hill-{n}-{'on' if on else 'off'}")
    crest = -1500
    shape = lambda x: (100 * math.cos(math.pi * (x - crest) / 2000) ** 2
                       if abs(x - crest) < 1000 else 0.0)
    write_map(directory / "h.map", shape, -6000, 6000, 10)
    write_map(directory / "z0.map", lambda x: 0.03, -6000, 6000, 1000)
    x = np.arange(-4500, 2000 + 50 / n, 100 / n)
    write_lines(directory / "lines.txt", x, (-4200, -200, 200), range(-400, 401, 100), 200)
    ratio = 1.25 ** (1 / n)
    limits = criteria(1e-4, 4000) + [("NUMERICAL_SOLVER", "ACCEL = 1")]
    solve(directory, line_case(4 * (ratio - 1) / 0.25, ratio, on, limits))
    m = Middle(directory, "restart")
    return [m.at(m.u, crest, h) / m.at(m.u, crest - 2000, h) for h in (10, 30, 50)]


def order():
    rows = []
    for on in (True, False):
        speed_ups = np.array([hill_speed_ups(n, on) for n in (1, 2, 4)])
        for h, s in zip((10, 30, 50), speed_ups.T):
            first, second = s[1] - s[0], s[2] - s[1]
            row = [f"{h} m, {'on' if on else 'off'}"] + [f"{v:.4f}" for v in s]
            if first * second > 0:
                p = math.log2(first / second)
                rest = second / (2 ** p - 1)
                row += [f"{p:.2f}",
                        f"{s[2] + rest:.4f} +- {1.25 * abs(rest):.4f}" if p > 0.5 else ""]
            else:
                row += ["none", ""]
            rows.append(row)
    table(["height, keys", "100 m, 4 m", "50 m, 1.9 m", "25 m, 0.9 m", "order", "extrapolated"], rows)


# --- Askervein -----------------------------------------------------------------------------------

def with_key(text, key, value):
    changed, count = re.subn(rf"(?m)^(\s*{key}\s*=\s*)\S+", rf"\g<1>{value}", text)
    assert count == 1, key
    return changed


def askervein_row(mesh, first, on):
    directory = ROOM / f"askervein-{mesh:g}-{first:g}-{'on' if on else 'off'}"
    shutil.rmtree(directory, ignore_errors=True)
    shutil.copytree(EXAMPLE, directory)
    text = with_key(with_key((EXAMPLE / "torvex.tin").read_text(), "MIN_DXY", mesh), "MIN_DZ", first)
    for group, line in both(on):
        text = text.replace(f"&NML_{group}\n", f"&NML_{group}\n  {line}\n", 1)
    iterations, end = solve(directory, text)
    sites = {}
    for line in (directory / "_latlon_label_list.txt").read_text().splitlines():
        _, label, place = line.split(", ")
        sites[label.split("_")[0]] = np.loadtxt(
            next(directory.glob(f"sites-210_0-{place}.tpd")), skiprows=2)
    for saved in directory.glob("restart-*"):
        saved.unlink()  # gigabytes on the finest meshes

    def speed(label, height):
        p = sites[label][1:]
        return float(np.interp(math.log(height), np.log(p[:, 0]), np.hypot(p[:, 1], p[:, 2])))

    masts = [speed(label, 10) / speed("RS", 10) - 1 for label in sites if label != "RS"]
    profile = [speed(label, h) for label in ("RS", "HT") for h in (10, 20, 50, 100)]
    name = f"{mesh:g}, {first:g}, {'on' if on else 'off'}"
    count = str(iterations) if end == "converged" else f"{iterations}, {end}"
    return ([name] + [f"{m:+.3f}" for m in masts] + [count], [name] + [f"{u:.2f}" for u in profile])


def askervein(meshes="50,25,12.5,8", firsts="1,2,3,6"):
    rows = [askervein_row(float(mesh), float(first), on) for mesh in meshes.split(",")
            for first in firsts.split(",") for on in (True, False)]
    labels = re.findall(r"%LABEL = '([^'_]+)", (EXAMPLE / "torvex.tin").read_text())
    table(["mesh, first cell, keys"] + [m for m in labels if m != "RS"] + ["iterations"],
          [r[0] for r in rows])
    table(["mesh, first cell, keys"] + [f"{s} {h} m" for s in ("RS", "HT") for h in (10, 20, 50, 100)],
          [r[1] for r in rows])


if __name__ == "__main__":
    parts = {"level": level, "change": change, "order": order, "askervein": askervein}
    if len(sys.argv) < 2 or sys.argv[1] not in parts:
        raise SystemExit(__doc__)
    parts[sys.argv[1]](*sys.argv[2:])
