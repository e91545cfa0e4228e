"""Runs the cases of examples/askervein and compares them with the masts of line A.

Called by scripts/validate from the top directory. Everything between the marks in
docs/validation.md is replaced; the text around them is written by hand.
"""

import csv
import math
import os
import pathlib
import re
import resource
import shutil
import subprocess
import time

import matplotlib
matplotlib.use("Agg")
import matplotlib.pyplot as plt
import numpy as np

EXAMPLE = pathlib.Path("examples/askervein")
RUNS = pathlib.Path("build/validate")
PROGRAM = pathlib.Path("build/bin/torvex")
PAGE = pathlib.Path("docs/validation.md")
PICTURE = pathlib.Path("docs/validation-askervein.png")
HEIGHT = 10.0  # of the masts [m]
REFERENCE = "RS"
BETWEEN = 3  # further sites between two masts, for the curves of the picture

# name, case file, keys given another value
SHOWN = [
    ("coarse", "torvex_coarse.tin", {}),
    ("fine", "torvex.tin", {}),
]
TIGHTER = ("fine-tighter", "torvex.tin",
           {"CC_OUT_" + q: "0.0001" for q in ("U", "V", "W", "M", "TKE", "TED")})
LEVEL = ("coarse-level", "torvex_coarse.tin", {"BASIC_H_FILE": "'level.map'"})


# --- the case file ---------------------------------------------------------------------------

def with_key(text, key, value):
    changed, count = re.subn(rf"(?m)^(\s*{key}\s*=\s*)\S+", rf"\g<1>{value}", text)
    if count != 1:
        raise SystemExit(f"validate: {key} stands {count} times in the case file")
    return changed


def key(text, name):
    return float(re.search(rf"(?m)^\s*{name}\s*=\s*(\S+)", text).group(1))


def sites_of(text):
    """Label, longitude and latitude in seconds of arc of each site."""
    triple = r"(-?[\d.]+),\s*(-?[\d.]+),\s*(-?[\d.]+)"
    found = re.findall(rf"%LABEL = '([^']+)'.*?%LON = {triple}.*?%LAT = {triple}", text)
    seconds = lambda t: 3600 * float(t[0]) + 60 * float(t[1]) + float(t[2])
    return [(s[0], seconds(s[1:4]), seconds(s[4:7])) for s in found]


def triple_of(seconds):
    sign = -1 if seconds < 0 else 1
    minutes, rest = divmod(abs(seconds), 60)
    degrees, minutes = divmod(minutes, 60)
    return f"{sign * degrees:.0f}, {sign * minutes:.0f}, {sign * rest:.4f}"


def with_sites_between(text):
    """Adds sites on the way from mast to mast, named "<number of the mast before> <part>"."""
    masts = [s for s in sites_of(text) if s[0] != REFERENCE]
    n = len(masts) + 1
    lines = []
    for m, (a, b) in enumerate(zip(masts, masts[1:])):
        for part in range(1, BETWEEN + 1):
            w = part / (BETWEEN + 1)
            lon, lat = (a[c] + w * (b[c] - a[c]) for c in (1, 2))
            n += 1
            lines.append(f"  SITE({n})%LABEL = '{m} {part}', SITE({n})%LON = {triple_of(lon)}, "
                         f"SITE({n})%LAT = {triple_of(lat)}\n")
    head, sites = text.split("&NML_SITE")
    sites = with_key(sites, "N_SITE", n)
    end = sites.rindex("/")
    return head + "&NML_SITE" + sites[:end] + "".join(lines) + sites[end:]


def write_level_map(directory):
    head, values = (EXAMPLE / "roughness.map").read_text().split("--DATA--\n")
    level = re.sub(r"\S+", "0", values)
    (directory / "level.map").write_text(head + "--DATA--\n" + level)


# --- a run and what it leaves ----------------------------------------------------------------

def solve(name, case_file, keys):
    directory = RUNS / name
    shutil.rmtree(directory, ignore_errors=True)
    shutil.copytree(EXAMPLE, directory)
    write_level_map(directory)
    text = (EXAMPLE / case_file).read_text()
    for k, value in keys.items():
        text = with_key(text, k, value)
    tin = directory / case_file
    tin.write_text(with_sites_between(text))
    print(f"validate: {PROGRAM} /f {tin}", flush=True)
    before, began = resource.getrusage(resource.RUSAGE_CHILDREN), time.monotonic()
    with open(directory / "console.txt", "w") as console:
        subprocess.run([PROGRAM.resolve(), "/f", tin], stdout=console, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    log = (directory / "torvex.log").read_text()
    return {
        "name": name,
        "wall": time.monotonic() - began,
        "cpu": after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime,
        "mesh": re.search(r"Mesh number is: (.+)", log).group(1),
        "outcome": re.search(r"WD .*: ((?:Converged|Diverged|Finished).*?)\.\s+(\d+) it", log),
        "widest": key(text, "MIN_DXY"),
        "first": key(text, "MIN_DZ"),
        "sites": profiles(directory),
    }


def profiles(directory):
    """The profile of each label in the list: rows of z_agl u v w p tke ted z_asl."""
    stem = "sites-210_0-"
    found = {}
    for line in (directory / "_latlon_label_list.txt").read_text().splitlines():
        _, label, position = line.split(", ")
        found[label] = np.loadtxt(directory / f"{stem}{position}.tpd", skiprows=2)
    return found


def speed(profile):
    """Horizontal speed at the height of the masts, linear in the logarithm of height."""
    z, u, v = profile[1:, 0], profile[1:, 1], profile[1:, 2]
    return float(np.interp(math.log(HEIGHT), np.log(z), np.hypot(u, v)))


def speed_up(run, label):
    return speed(run["sites"][label]) / speed(run["sites"][REFERENCE]) - 1


# --- the measurements ------------------------------------------------------------------------

def measurements():
    with open(EXAMPLE / "measured.csv") as file:
        rows = list(csv.DictReader(file))
    for row in rows:
        east, north = float(row["east_m"]), float(row["north_m"])
        row["distance"] = math.copysign(math.hypot(east, north), north)
        row["value"] = float(row["speed_up"])
        row["error"] = float(row["err_ratio"]) if row["err_ratio"] else None
    return rows


# --- the page --------------------------------------------------------------------------------

def table(head, rows):
    lines = [head, ["---"] + ["---:"] * (len(head) - 1)] + rows
    return "\n".join("| " + " | ".join(line) + " |" for line in lines) + "\n"


def threads():
    return os.environ.get("OMP_NUM_THREADS") or len(os.sched_getaffinity(0))


def run_table(runs):
    def row(title, value):
        return [title] + [value(r) for r in runs]
    ground = lambda r, label: r["sites"][label][0, 7]
    return table([""] + [r["name"] for r in runs], [
        row("cells", lambda r: r["mesh"]),
        row("finest cell, height of the lowest cell (m)",
            lambda r: f"{r['widest']:g}, {r['first']:g}"),
        row("outcome", lambda r: r["outcome"].group(1).lower()),
        row("outer iterations", lambda r: r["outcome"].group(2)),
        row(f"wall time, processor time (s), threads: {threads()}", lambda r: f"{r['wall']:.0f}, {r['cpu']:.0f}"),
        row("ground at RS, HT (m)",
            lambda r: f"{ground(r, 'RS'):.1f}, {ground(r, 'HT_0m'):.1f}"),
        row("speed at RS, 10 m (m/s)", lambda r: f"{speed(r['sites'][REFERENCE]):.2f}"),
    ])


def speed_table(masts, rows, runs):
    value = {(r["run"], r["label"]): r["value"] for r in rows}
    signed = lambda x: "" if x is None else f"{x:+.3f}"
    return table(["mast", "from HT (m)", "TU03A", "MF03D"] + [r["name"] for r in runs], [
        [label, f"{distance:.0f}"]
        + [signed(value.get((m, label))) for m in ("TU03A", "MF03D")]
        + [signed(speed_up(r, name)) for r in runs]
        for label, name, distance in masts])


def error_table(masts, rows, runs):
    name_of = {label: name for label, name, _ in masts}
    lines = []
    for part, inside in (("windward and top", lambda label: not label.startswith("ANE")),
                         ("lee", lambda label: label.startswith("ANE"))):
        for m in ("TU03A", "MF03D"):
            chosen = [r for r in rows if r["run"] == m and inside(r["label"])]
            line = [f"{part}, {m}"]
            for run in runs:
                errors = {r["label"]: speed_up(run, name_of[r["label"]]) - r["value"]
                          for r in chosen}
                worst = max(errors, key=lambda label: abs(errors[label]))
                e = np.array(list(errors.values()))
                line.append(f"{e.mean():+.3f}, {abs(e).mean():.3f}, {errors[worst]:+.3f} ({worst})")
            lines.append(line)
    return table(["computed less measured"] + [r["name"] for r in runs], lines)


def convergence_text(masts, loose, tight):
    change = {label: speed_up(tight, name) - speed_up(loose, name) for label, name, _ in masts}
    worst = max(change, key=lambda label: abs(change[label]))
    windward = max(abs(c) for label, c in change.items() if not label.startswith("ANE"))
    return (f"With all criteria ten times smaller the fine case takes {tight['outcome'].group(2)} "
            f"iterations. The speed-up then\nchanges by {change[worst]:+.3f} at {worst}, where it "
            f"changes most, and by {windward:.4f} at most from ASW100 to HT.\n")


def level_text(masts, level):
    drift = {label: speed_up(level, name) for label, name, _ in masts}
    return (f"Over level ground of the same roughness the coarse case gives a 10 m wind of "
            f"{speed(level['sites'][REFERENCE]):.2f} m/s at RS, and\n"
            f"{100 * drift['ASW100']:.1f} % more at ASW100, {100 * drift['HT']:.1f} % more at HT.\n")


def write_page(blocks):
    text = PAGE.read_text()
    for name, block in blocks.items():
        begin, end = f"<!-- {name}: written by scripts/validate -->\n", f"<!-- end of {name} -->"
        head, rest = text.split(begin)
        text = head + begin + "\n" + block + "\n" + end + rest.split(end, 1)[1]
    PAGE.write_text(text)


# --- the picture -----------------------------------------------------------------------------

def line_of(masts, run):
    """Distance, speed-up and ground along the line of masts, with the sites between them."""
    points = []
    for m, (_, name, distance) in enumerate(masts):
        points.append((distance, name))
        if m + 1 < len(masts):
            for part in range(1, BETWEEN + 1):
                w = part / (BETWEEN + 1)
                points.append((distance + w * (masts[m + 1][2] - distance), f"{m} {part}"))
    return np.array([(d, speed_up(run, name), run["sites"][name][0, 7]) for d, name in points]).T


def draw(masts, rows, runs):
    figure, (top, bottom) = plt.subplots(
        2, 1, sharex=True, figsize=(8, 6.5), height_ratios=[3, 1], constrained_layout=True)
    for run, colour in zip(runs, ("0.6", "tab:blue")):
        distance, computed, ground = line_of(masts, run)
        name = f"computed, {run['name']} ({run['widest']:g} m)"
        top.plot(distance, computed, "-", color=colour, label=name)
        bottom.plot(distance, ground, "-", color=colour)
    mf, tu = ([r for r in rows if r["run"] == m] for m in ("MF03D", "TU03A"))
    top.errorbar([r["distance"] for r in mf], [r["value"] for r in mf],
                 yerr=[r["error"] for r in mf], fmt="ks", markersize=5, capsize=3,
                 label="measured, MF03D")
    top.plot([r["distance"] for r in tu], [r["value"] for r in tu], "o", color="tab:red",
             fillstyle="none", markersize=7, label="measured, TU03A")
    top.axhline(0, color="0.8", linewidth=0.8, zorder=0)
    top.set_ylabel("speed-up against RS, 10 m above ground")
    top.legend(loc="upper left", frameon=False)
    top.set_title("Askervein hill, line A, wind from 210°")
    bottom.set_ylabel("ground (m)")
    bottom.set_xlabel("distance from the hill top HT along line A (m); the wind comes from the left")
    figure.savefig(PICTURE, dpi=120, metadata={"Software": None})


def main():
    rows = measurements()
    runs = [solve(*case) for case in SHOWN]
    fine = runs[1]
    names = {name.split("_")[0]: name for name in fine["sites"]}
    distances = {r["label"]: r["distance"] for r in rows}
    masts = sorted(((label, names[label], d) for label, d in distances.items()),
                   key=lambda mast: mast[2])
    write_page({
        "runs": run_table(runs),
        "speed-up": speed_table(masts, rows, runs),
        "errors": error_table(masts, rows, runs),
        "convergence": convergence_text(masts, fine, solve(*TIGHTER)),
        "level ground": level_text(masts, solve(*LEVEL)),
    })
    draw(masts, rows, runs)
    print(f"validate: wrote {PAGE} and {PICTURE}")


main()
