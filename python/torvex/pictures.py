"""Pictures of finished directions: maps of the speed-up, profiles. They need matplotlib."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from pathlib import Path
from typing import Any

import numpy as np

from torvex.arrays import Array
from torvex.direction import Direction
from torvex.packages import need
from torvex.profiles import Profile, Site
from torvex.states import STATES
from torvex.tables import read_mesh_log

HEIGHTS = (10.0, 50.0, 100.0)  # above ground [m]
PROFILE_TOP = 300.0


def _pyplot() -> Any:
    need("matplotlib").use("Agg")
    return need("matplotlib.pyplot")


def study_radius(d: Direction) -> float:
    """Half the width of the region drawn [m]: the study area's, or half the mesh's where no borders
    are logged for this mesh."""
    path = d.directory / f"{d.prefix}log-meshnumber"
    if path.exists():
        log = read_mesh_log(path)
        if (log.ni, log.nj, log.nk) == (d.ni, d.nj, d.nk) and log.x3 > 0:
            return log.x3
    return 0.5 * min(float(np.ptp(d.east)), float(np.ptp(d.north)))


def _seen(d: Direction) -> Array:
    """The columns in the square that is drawn, and not far outside."""
    return np.asarray(np.hypot(d.east, d.north) <= 1.4143 * study_radius(d))


def colour_reach(directions: Iterable[Direction], heights: Sequence[float] = HEIGHTS) -> float:
    """How far the colours reach from a speed-up of 1, one for all directions and heights; a few
    cells may lie beyond the ends."""
    departures = [
        np.nanpercentile(np.abs(d.speed_up(height)[_seen(d)] - 1), 99)
        for d in directions
        for height in heights
    ]
    largest = max((each for each in departures if np.isfinite(each)), default=0.0)
    return float(np.clip(np.ceil(largest * 10) / 10, 0.1, 1.0))


def title(d: Direction) -> str:
    """The direction, and its state where that is not as it should be."""
    if d.state is None or d.state == 1:
        return f"wind from {d.angle:g}°"
    return f"wind from {d.angle:g}° ({STATES[d.state].upper()})"


def _places(d: Direction, height: float) -> list[tuple[str, tuple[int, int], str]]:
    """Label, column and colour of the profiles: inflow, highest ground, slowest."""
    inside = np.hypot(d.east, d.north) <= study_radius(d)
    speed_up = d.speed_up(height)

    def column(n: Any) -> tuple[int, int]:
        i, j = np.unravel_index(n, inside.shape)
        return int(i), int(j)

    highest = np.argmax(np.where(inside, d.ground, -np.inf))
    slowest = np.argmin(np.where(inside & np.isfinite(speed_up), speed_up, np.inf))
    return [
        ("inflow", (0, 0), "0.35"),
        ("highest ground", column(highest), "tab:red"),
        (f"slowest at {height:g} m", column(slowest), "tab:blue"),
    ]


def _round_step(span: float, parts: int) -> float:
    """A step of 1, 2 or 5 times a power of ten that divides a span into about so many parts."""
    step = max(span, 1e-6) / parts
    power = 10.0 ** float(np.floor(np.log10(step)))
    return power * min((1, 2, 5, 10), key=lambda m: abs(float(np.log(m * power / step))))


def _draw_wind_arrow(axes: Any, d: Direction) -> None:
    """In the upper left corner, a disc with an arrow that points where the wind blows."""
    east, north = d.to_east_north(1.0, 0.0)
    centre, half = np.array((0.1, 0.9)), 0.055 * np.array((east, north))
    disc = _pyplot().Circle(centre, 0.078, transform=axes.transAxes, zorder=5)
    disc.set(facecolor="white", edgecolor="0.5", linewidth=0.6, alpha=0.9)
    axes.add_patch(disc)
    arrow = {"arrowstyle": "-|>,head_width=0.28,head_length=0.5", "shrinkA": 0, "shrinkB": 0}
    arrow |= {"color": "black", "linewidth": 1.8}
    ends = {"xy": centre + half, "xytext": centre - half, "xycoords": "axes fraction"}
    axes.annotate("", **ends, zorder=6, arrowprops=arrow)


def _draw_sites(axes: Any, sites: Iterable[Site]) -> None:
    outline = need("matplotlib.patheffects").withStroke(linewidth=2, foreground="white")
    for site in sites:
        place = (site.east / 1000, site.north / 1000)
        axes.plot(*place, "^", color="black", markeredgecolor="white", markersize=7, zorder=4)
        name = axes.annotate(site.label, place, (5, 4), textcoords="offset points", fontsize=7)
        name.set(annotation_clip=True, path_effects=[outline], zorder=4)


def draw_maps(
    d: Direction,
    path: Path,
    reach: float,
    sites: Sequence[Site] = (),
    heights: Sequence[float] = HEIGHTS,
) -> None:
    """Speed-up at some heights, side by side, over contours of the ground; `reach` as colour_reach
    gives it, so that pictures of several directions may be compared."""
    plt = _pyplot()
    radius = study_radius(d)
    east, north = d.east / 1000, d.north / 1000
    ground = d.ground
    step = _round_step(float(np.ptp(ground[_seen(d)])), 8)
    levels = np.arange(np.floor(ground.min() / step), np.ceil(ground.max() / step) + 1) * step

    figure, row = plt.subplots(
        1,
        len(heights),
        figsize=(5 * len(heights), 5.6),
        sharex=True,
        sharey=True,
        squeeze=False,
        layout="constrained",
    )
    for axes, height in zip(row[0], heights):
        colours = axes.pcolormesh(
            east,
            north,
            d.speed_up(height),
            cmap="RdBu_r",
            shading="gouraud",
            vmin=1 - reach,
            vmax=1 + reach,
        )
        lines = axes.contour(east, north, ground, levels, colors="0.15", linewidths=0.5)
        axes.clabel(lines, lines.levels[::2], fmt="%g", fontsize=7)
        for label, column, colour in _places(d, heights[0])[1:]:
            axes.plot(east[column], north[column], "o", color=colour, label=label)
            axes.lines[-1].set(markeredgecolor="white", markersize=8)
        _draw_sites(axes, sites)
        _draw_wind_arrow(axes, d)
        limits = (-radius / 1000, radius / 1000)
        axes.set(title=f"{height:g} m above ground", xlabel="east of the centre [km]")
        axes.set(aspect="equal", xlim=limits, ylim=limits)
    row[0, 0].set_ylabel("north of the centre [km]")
    row[0, 0].legend(loc="lower left", fontsize=8)
    bar = figure.colorbar(colours, ax=row[0], shrink=0.85, pad=0.015, extend="both")
    bar.set_label("speed / speed of the inflow at the same height")
    text = f"Speed-up, {title(d)}; ground contours every {step:g} m"
    figure.suptitle(text, fontsize=14)
    figure.savefig(path, dpi=110)
    plt.close(figure)


def draw_profiles(
    d: Direction,
    path: Path,
    sites: Iterable[tuple[str, Profile]] = (),
    height: float = HEIGHTS[0],
) -> None:
    """Speed and turbulence energy at the inflow, on the highest ground, where it is slowest at a
    height, and at the sites."""
    plt = _pyplot()
    drawn = [(label, d.profile(*column), colour) for label, column, colour in _places(d, height)]
    cycle = plt.get_cmap("Dark2").colors
    for n, (label, profile) in enumerate(sites):
        drawn.append((f"site {label}", profile, cycle[n % len(cycle)]))

    figure, (speed, energy) = plt.subplots(
        1, 2, figsize=(10, 5.6), sharey=True, layout="constrained"
    )
    for label, profile, colour in drawn:
        seen = (profile.z_agl > 0) & (profile.z_agl <= PROFILE_TOP * 1.3)
        style = {"color": colour, "label": label, "marker": "o", "markersize": 3.5}
        speed.plot(profile.speed[seen], profile.z_agl[seen], **style)
        energy.plot(profile.tke[seen], profile.z_agl[seen], **style)
    speed.set(xlabel="horizontal wind speed [m/s]", ylabel="height above ground [m]")
    speed.set_ylim(0, PROFILE_TOP)
    energy.set(xlabel="turbulence energy [m²/s²]")
    for axes in (speed, energy):
        axes.set_xlim(left=0)
        axes.grid(color="0.9")
        axes.set_axisbelow(True)
    speed.legend(fontsize=9)
    figure.suptitle(f"Profiles, {title(d)}", fontsize=14)
    figure.savefig(path, dpi=110)
    plt.close(figure)
