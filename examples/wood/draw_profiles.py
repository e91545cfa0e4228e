#!/usr/bin/env python3
"""Draws what a wood does to the wind: from above, in a section along the wind, at the sites.

    /usr/bin/python3 examples/wood/draw_profiles.py examples/wood [--tag 270_0] [--out wood.png]

The section goes through the centre of the case. Lines bound the trees: from above where they cover
half of a column, in the section round all cells with drag.
"""

import argparse
import sys
from pathlib import Path

import numpy as np

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "python"))
import torvex  # noqa: E402
from torvex.packages import need  # noqa: E402

PACKING_DENSITY = 0.05  # of a stand, which has no column for it
HEIGHT = 10.0  # of the map, above ground [m]
TOP = 120.0  # of the section and of the profiles [m]
REACH = (-1.2, 1.5)  # of map and section along the wind [km]


def draw_map(axes, d, sites):
    x, y = d.xc[:, :, 0] / 1000, d.yc[:, :, 0] / 1000
    style = {"cmap": "viridis", "vmin": 0, "vmax": 1.1, "shading": "nearest"}
    colours = axes.pcolormesh(x, y, d.speed_up(HEIGHT), rasterized=True, **style)
    cover = d.canopy["gp_density"][:, :, 1] / PACKING_DENSITY
    axes.contour(x, y, cover, [0.5], colors="white", linewidths=0.9)
    for site in sites:
        place = d.to_mesh(site.east / 1000, site.north / 1000)
        axes.plot(*place, "^", color="tab:red", markeredgecolor="white", markersize=6)
    axes.set(xlim=REACH, ylim=(-0.6, 0.6), aspect="equal", ylabel="across the wind [km]")
    axes.set_title(f"{HEIGHT:g} m above ground, sites as triangles", fontsize=10)
    return colours


def draw_section(axes, d):
    j = int(np.abs(d.yc[0, :, 0]).argmin())
    z = d.z_agl[:, j, 1:]
    x = np.broadcast_to(d.xc[:, j, :1] / 1000, z.shape)
    speed = np.hypot(d.u, d.v)[:, j, 1:]
    style = {"cmap": "viridis", "vmin": 0, "vmax": 1.1, "shading": "gouraud"}
    axes.pcolormesh(x, z, speed / speed[0], rasterized=True, **style)
    # Steps along the tops of the cells, between the nodes along the wind.
    cells = d.canopy["gp_density"][1:-1, j, 1:-1] > 0
    nodes = d.nodes["zn"][0, 0] - d.nodes["zn"][0, 0, 0]
    tops = np.where(cells, nodes[1:], 0).max(axis=1)
    edges = d.nodes["xn"][:, 0, 0] / 1000
    axes.stairs(tops, edges, color="white", linewidth=0.9)
    axes.set(xlim=REACH, ylim=(0, TOP), xlabel="along the wind, from the centre [km]")
    axes.set_ylabel("height above ground [m]")
    axes.set_title("section along the wind, through the centre", fontsize=10)


def draw_sites(axes, plt, d, sites):
    inflow = d.profile(0, 0)
    drawn = [("inflow", inflow, "black", "--")]
    colours = plt.get_cmap("turbo")(np.linspace(0.05, 0.95, len(sites)))
    drawn += [(site.label, site.profile, c, "-") for site, c in zip(sites, colours)]
    for label, profile, colour, line in drawn:
        seen = (profile.z_agl > 0) & (profile.z_agl <= TOP * 1.3)
        style = {"color": colour, "linestyle": line, "marker": ".", "markersize": 4}
        axes.plot(profile.speed[seen], profile.z_agl[seen], label=label, **style)
    axes.set(xlim=(0, None), ylim=(0, TOP), xlabel="horizontal wind speed [m/s]")
    axes.set_ylabel("height above ground [m]")
    axes.grid(color="0.9")
    axes.legend(fontsize=8)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("run", type=Path, help="directory of the finished run")
    parser.add_argument("--tag", default="270_0", help="the direction")
    parser.add_argument("--out", type=Path, help="the picture; default: wood_TAG.png in the run")
    given = parser.parse_args()
    try:
        need("matplotlib").use("Agg")
        plt = need("matplotlib.pyplot")
        d = torvex.Direction(given.run, given.tag)
        sites = d.placed_sites()
        figure = plt.figure(figsize=(12, 6), layout="constrained")
        grid = figure.add_gridspec(2, 2, width_ratios=(1.7, 1))
        left = [figure.add_subplot(grid[n, 0]) for n in (0, 1)]
        colours = draw_map(left[0], d, sites)
        draw_section(left[1], d)
        bar = figure.colorbar(colours, ax=left, pad=0.01, shrink=0.8)
        bar.set_label("speed / speed of the inflow at the same height")
        draw_sites(figure.add_subplot(grid[:, 1]), plt, d, sites)
        figure.suptitle(
            f"A wood in the wind from {d.angle:g}°, which blows from left to right here"
        )
        out = given.out or given.run / f"wood_{d.tag}.png"
        figure.savefig(out, dpi=80)
        print(out)
    except (OSError, ValueError, torvex.MissingPackage) as problem:
        sys.exit(str(problem))


if __name__ == "__main__":
    main()
