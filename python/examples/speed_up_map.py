#!/usr/bin/env python3
"""Draws speed-up maps and profiles of a finished run, for each of its wind directions.

    python3 python/examples/speed_up_map.py build/demo/big_butte [--tag 240_0] [--out figures]

Speed-up is the wind speed divided by the speed in the inflow column at the same height above
ground. Writes speed_up_TAG.png and profiles_TAG.png, by default into the directory of the run.
"""

import argparse
import sys
from pathlib import Path

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
import torvex  # noqa: E402

HEIGHTS = (10.0, 50.0, 100.0)  # above ground [m]
PROFILE_TOP = 300.0


def study_radius(d):
    """Half the width of the region drawn [m]: the study area's, or half the mesh's where no borders
    are logged."""
    log = d.directory / f"{d.prefix}log-meshnumber"
    if log.exists():
        radius = torvex.read_mesh_log(log).x3
        if radius > 0:
            return radius
    return 0.5 * min(float(np.ptp(d.east)), float(np.ptp(d.north)))


def places(d, radius):
    """Label, column and colour of the profiles: inflow, highest ground, slowest at 10 m."""
    inside = np.hypot(d.east, d.north) <= radius
    highest = np.argmax(np.where(inside, d.ground, -np.inf))
    slowest = np.argmin(np.where(inside, d.speed_up(10.0), np.inf))
    column = lambda n: tuple(int(index) for index in np.unravel_index(n, inside.shape))
    return (
        ("inflow", (0, 0), "0.35"),
        ("highest ground", column(highest), "tab:red"),
        ("slowest at 10 m", column(slowest), "tab:blue"),
    )


def round_step(span, parts):
    """A step of 1, 2 or 5 times a power of ten that divides a span into about so many parts."""
    step = max(span, 1e-6) / parts
    power = 10.0 ** np.floor(np.log10(step))
    return power * min((1, 2, 5, 10), key=lambda m: abs(np.log(m * power / step)))


def title(d):
    """The direction, and its state where that is not as it should be."""
    state = "" if d.state == 1 else f" ({torvex.STATES[d.state].upper()})"
    return f"wind from {d.angle:g}°{state}"


def draw_wind_arrow(axes, d):
    """In the upper left corner, a disc with an arrow that points where the wind blows."""
    east, north = d.to_east_north(1.0, 0.0)
    centre, half = np.array((0.1, 0.9)), 0.055 * np.array((east, north))
    disc = plt.Circle(
        centre,
        0.078,
        transform=axes.transAxes,
        facecolor="white",
        edgecolor="0.5",
        linewidth=0.6,
        alpha=0.9,
        zorder=5,
    )
    axes.add_patch(disc)
    axes.annotate(
        "",
        xy=centre + half,
        xytext=centre - half,
        xycoords="axes fraction",
        zorder=6,
        arrowprops={
            "arrowstyle": "-|>,head_width=0.28,head_length=0.5",
            "color": "black",
            "linewidth": 1.8,
            "shrinkA": 0,
            "shrinkB": 0,
        },
    )


def draw_maps(d, path):
    radius = study_radius(d)
    east, north = d.east / 1000, d.north / 1000
    inside = np.hypot(d.east, d.north) <= 1.4143 * radius  # all that is seen
    maps = [d.speed_up(height) for height in HEIGHTS]
    # The same step of colour for faster and for slower; a few cells may lie beyond the ends.
    departure = max(np.nanpercentile(np.abs(values[inside] - 1), 99) for values in maps)
    reach = float(np.clip(np.ceil(departure * 10) / 10, 0.1, 1.0))

    ground = d.ground
    step = round_step(float(np.ptp(ground[inside])), 8)
    levels = np.arange(np.floor(ground.min() / step), np.ceil(ground.max() / step) + 1) * step

    figure, row = plt.subplots(
        1, len(HEIGHTS), figsize=(15, 5.6), sharex=True, sharey=True, layout="constrained"
    )
    for axes, height, values in zip(row, HEIGHTS, maps):
        colours = axes.pcolormesh(
            east, north, values, cmap="RdBu_r", shading="gouraud", vmin=1 - reach, vmax=1 + reach
        )
        lines = axes.contour(east, north, ground, levels, colors="0.15", linewidths=0.5)
        axes.clabel(lines, lines.levels[::2], fmt="%g", fontsize=7)
        for label, column, colour in places(d, radius)[1:]:
            axes.plot(
                east[column],
                north[column],
                "o",
                color=colour,
                markeredgecolor="white",
                markersize=8,
                label=label,
            )
        draw_wind_arrow(axes, d)
        limits = (-radius / 1000, radius / 1000)
        axes.set(
            title=f"{height:g} m above ground",
            xlabel="east of the centre [km]",
            aspect="equal",
            xlim=limits,
            ylim=limits,
        )
    row[0].set_ylabel("north of the centre [km]")
    row[0].legend(loc="lower left", fontsize=8)
    bar = figure.colorbar(colours, ax=row, shrink=0.85, pad=0.015, extend="both")
    bar.set_label("speed / speed of the inflow at the same height")
    figure.suptitle(f"Speed-up, {title(d)}; ground contours every {step:g} m", fontsize=14)
    figure.savefig(path, dpi=110)
    plt.close(figure)


def draw_profiles(d, path):
    drawn = [
        (label, d.profile(*column), colour) for label, column, colour in places(d, study_radius(d))
    ]
    if (d.directory / torvex.LABEL_LIST).exists():
        cycle = plt.get_cmap("Dark2").colors
        drawn += [
            (f"site {label}", profile, cycle[n % len(cycle)])
            for n, (label, profile) in enumerate(d.sites())
        ]

    figure, (speed, energy) = plt.subplots(
        1, 2, figsize=(10, 5.6), sharey=True, layout="constrained"
    )
    for label, profile, colour in drawn:
        seen = (profile.z_agl > 0) & (profile.z_agl <= PROFILE_TOP * 1.3)
        style = {"color": colour, "label": label, "marker": "o", "markersize": 3.5}
        speed.plot(profile.speed[seen], profile.z_agl[seen], **style)
        energy.plot(profile.tke[seen], profile.z_agl[seen], **style)
    speed.set(
        xlabel="horizontal wind speed [m/s]",
        ylabel="height above ground [m]",
        ylim=(0, PROFILE_TOP),
    )
    energy.set(xlabel="turbulence energy [m²/s²]")
    for axes in (speed, energy):
        axes.set_xlim(left=0)
        axes.grid(color="0.9")
        axes.set_axisbelow(True)
    speed.legend(fontsize=9)
    figure.suptitle(f"Profiles, {title(d)}", fontsize=14)
    figure.savefig(path, dpi=110)
    plt.close(figure)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("run", type=Path, help="directory of a finished run")
    parser.add_argument("--tag", action="append", help="direction such as 240_0; default: all")
    parser.add_argument("--prefix", default="", help="prefix of the names of files, such as nest-")
    parser.add_argument("--out", type=Path, help="directory for the figures; default: the run's")
    arguments = parser.parse_args()

    try:
        directions, left_out = torvex.usable_directions(
            arguments.run, arguments.prefix, arguments.tag
        )
    except (OSError, torvex.FormatError) as problem:
        sys.exit(str(problem))
    for line in left_out:
        print(line, file=sys.stderr)
    if not directions:
        sys.exit(f"{arguments.run}: no direction to draw")
    out = arguments.out or arguments.run
    out.mkdir(parents=True, exist_ok=True)
    for d in directions:
        for name, draw in (("speed_up", draw_maps), ("profiles", draw_profiles)):
            path = out / f"{arguments.prefix}{name}_{d.tag}.png"
            draw(d, path)
            print(path)


if __name__ == "__main__":
    main()
