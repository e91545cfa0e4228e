"""A study before it is run: what it needs, what speaks against it, and a picture of it."""

from __future__ import annotations

import math
from collections.abc import Callable
from pathlib import Path
from typing import Any

import numpy as np

from torvex.case import Group
from torvex.geodesy import mesh_to_east_north
from torvex.packages import need
from torvex.study.case_text import StudyCase, read_study_case
from torvex.study.layout import Study
from torvex.study.machine import cores
from torvex.study.mesh_keys import ADDITIONAL, DOWN, SIDE, UP
from torvex.study.prep_check import Check, check_case
from torvex.study.progress import duration
from torvex.study.record import ENDED, read_record
from torvex.study.summary import number_of
from torvex.text_map import TextMap, read_map

Say = Callable[[str], None]
Rectangle = tuple[float, float, float, float]  # from and to along x, from and to along y [m]


def check_study(study: Study, say: Say) -> Path:
    """Tells all, and draws STUDY/out/check.png."""
    case = read_study_case(study.case)
    check = check_case(case)
    for line in lines_of_check(check, case):
        say(line)
    study.out.mkdir(exist_ok=True)
    picture = study.out / "check.png"
    draw_study(picture, study, case, check)
    say(f"written: {picture}")
    return picture


def lines_of_check(check: Check, case: StudyCase) -> list[str]:
    lines = [_mesh_line(check), _need_line(check), _time_line(check, case)]
    if check.estimate:
        lines.append(f"these are estimates: {check.estimate}")
    told = check.told
    domain = told.get("domain", {})
    if domain:
        lines.append(
            f"ground {_metres(domain['hmin'])} to {_metres(domain['hmax'])}, mean "
            f"{_metres(domain['havg'])}; top of the domain {_metres(domain['top'])}; study circle "
            f"of {_metres(domain['max_rad'])}"
        )
    lines += [
        f"map {number}: reaches {_metres(each['cover_m'])} from the centre, enough for a study "
        f"area of {_metres(each['largest_study_m'])}"
        for number, each in enumerate(told.get("maps", []), start=1)
    ]
    labels = [site.label for site in case.case.sites]
    for number, each in enumerate(told.get("sites", [])):
        name = labels[number] if number < len(labels) else str(number + 1)
        place = "inside" if each["inside"] else "OUTSIDE the mesh"
        lines.append(f"site {name}: ground {_metres(each['ground'])}, {place}")
    idle = told.get("keys", {}).get("without_effect", [])
    if idle:
        lines.append(f"keys without effect: {', '.join(map(str, idle))}")
    lines += [f"warning: {text.removeprefix('Warning: ')}" for text in check.warnings]
    return lines


def _metres(value: float | None) -> str:
    return "?" if value is None else f"{value:.0f} m"


def _mesh_line(check: Check) -> str:
    mesh = check.told.get("mesh", {})
    if "ni" in mesh:
        return f"mesh: {mesh['ni']} x {mesh['nj']} x {mesh['nk']} = {check.cells} cells"
    return f"mesh: {check.cells} cells"


def _need_line(check: Check) -> str:
    return (
        f"a direction takes {check.memory / 1e6:.0f} MB of memory, {check.limit / 1e9:.1f} GB may "
        f"be taken, and {check.disk / 1e6:.0f} MB of disk while it runs"
    )


def _time_line(check: Check, case: StudyCase) -> str:
    most = check.s_per_iteration * case.maxit
    side = max(1, min(len(case.angles), cores(), int(0.8 * check.limit / max(check.memory, 1))))
    rounds = math.ceil(len(case.angles) / side)
    return (
        f"{check.s_per_iteration:.3g} s an iteration: at most {duration(most)} a direction with "
        f"MAXIT {case.maxit}, {number_of(len(case.angles), 'direction')} some "
        f"{duration(most * rounds)} at most"
    )


def domain_of(study: Study, case: StudyCase) -> tuple[Rectangle, Rectangle]:
    """The terrain in full, and the whole domain, in the axes of a mesh. Of a direction that has run
    its own lines tell; else the rules of the domain, in which lines lie a cell apart."""
    for tag in case.tags:
        record = read_record(study.direction(tag), case.prefix)
        path = study.direction(tag) / f"{case.prefix}log-meshnumber"
        if record is not None and record.state in ENDED and path.exists():
            from torvex.tables import read_mesh_log

            log = read_mesh_log(path)
            core = (log.x1, log.x3, log.y1, log.y2)
            return core, (log.x[0], log.x[-1], log.y[0], log.y[-1])
    group = Group(case.path, case.text, "NML_CASEFILE")
    zones = Group(case.path, case.text, "NML_BOUNDARY_TREATMENT")
    d = math.hypot(group.real("WE_LENGTH"), group.real("NS_LENGTH"))

    def ratio(key: str, otherwise: float) -> float:
        return zones.real(key) if (key, 1) in zones.words else otherwise

    radius, ahead = d / 2, d * ratio("ADD_R", ADDITIONAL)
    core = (-radius - ahead, radius, -radius, radius)
    side = radius + d * ratio("SIDE_BR", SIDE)
    whole = (core[0] - d * ratio("UP_BR", UP), radius + d * ratio("DOWN_BR", DOWN), -side, side)
    return core, whole


def _outline(rectangle: Rectangle, angle: float) -> tuple[Any, Any]:
    x0, x1, y0, y1 = rectangle
    x, y = np.array([x0, x1, x1, x0, x0]), np.array([y0, y0, y1, y1, y0])
    return mesh_to_east_north(angle, x, y)


def draw_study(path: Path, study: Study, case: StudyCase, check: Check) -> None:
    """Elevation and roughness with sites, borders of the maps, and for all directions the domain
    and the part of it in which the terrain is left as it is."""
    matplotlib = need("matplotlib")
    matplotlib.use("Agg")
    plt = need("matplotlib.pyplot")
    colors = need("matplotlib.colors")
    # Without the blue end, which would look like water.
    land = colors.ListedColormap(plt.get_cmap("terrain")(np.linspace(0.25, 1, 256)))
    group = Group(case.path, case.text, "NML_CASEFILE")
    figure, (left, right) = plt.subplots(1, 2, figsize=(14, 6.4), layout="constrained")
    core, whole = domain_of(study, case)
    reach = 1.05 * math.hypot(max(-whole[0], whole[1]), whole[3])
    panels = (
        (left, "BASIC_H_FILE", "elevation (m)", {"cmap": land}),
        (
            right,
            "BASIC_Z0_FILE",
            "roughness length (m)",
            {"cmap": "YlGn", "norm": colors.LogNorm()},
        ),
    )
    for axes, key, label, look in panels:
        if group.text(key):
            shown = _draw_map(axes, case, read_map(study.root / group.text(key)), look)
            figure.colorbar(shown, ax=axes, label=label, shrink=0.85)
        for angle in case.angles:
            axes.plot(*_outline(whole, angle), color="0.25", linewidth=0.5)
            axes.plot(*_outline(core, angle), color="tab:red", linewidth=0.5)
        _draw_study_area(axes, group)
        axes.set(aspect="equal", xlim=(-reach, reach), ylim=(-reach, reach))
        axes.set(xlabel="east of the centre (m)", ylabel="north of the centre (m)")
    _draw_sites(left, case)
    left.set_title(f"{study.name}: {number_of(len(case.angles), 'direction')}, {check.cells} cells")
    right.set_title("domains; red: terrain in full; blue: study area; dashed: maps", fontsize=11)
    figure.savefig(path, dpi=110)
    plt.close(figure)


def _draw_map(axes: Any, case: StudyCase, found: TextMap, look: dict[str, Any]) -> Any:
    east, north = case.case.east_north(found.longitude, found.latitude)
    shown = axes.pcolormesh(east, north, found.values.T, shading="nearest", rasterized=True, **look)
    x, y = (east[0], east[-1]), (north[0], north[-1])
    axes.plot([x[0], x[1], x[1], x[0], x[0]], [y[0], y[0], y[1], y[1], y[0]], "k--", linewidth=1.2)
    return shown


def _draw_study_area(axes: Any, group: Group) -> None:
    half = group.real("WE_LENGTH") / 2, group.real("NS_LENGTH") / 2
    x = [-half[0], half[0], half[0], -half[0], -half[0]]
    y = [-half[1], -half[1], half[1], half[1], -half[1]]
    axes.plot(x, y, color="tab:blue", linewidth=1.5)


def _draw_sites(axes: Any, case: StudyCase) -> None:
    for site in case.case.sites:
        east, north = case.case.east_north(site.longitude, site.latitude)
        axes.plot(east, north, "k^", markersize=5)
        if len(case.case.sites) <= 40:
            axes.annotate(site.label, (east, north), xytext=(4, 4), textcoords="offset points")
