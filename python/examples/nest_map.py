#!/usr/bin/env python3
"""Draws the wind of a nested run over that of its parent, for each of its wind directions.

    python3 python/examples/nest_map.py path/to/folder [--height 50] [--tag 240_0] [--out figures]

One scale of colours holds for both, and a line marks the edge of the child. Writes
nest_map_TAG.png, by default into the directory of the runs.
"""

import argparse
import sys
from pathlib import Path

import numpy as np

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
import torvex  # noqa: E402
from torvex.packages import need  # noqa: E402


def draw(parent: torvex.Direction, child: torvex.Direction, height: float, path: Path) -> None:
    need("matplotlib").use("Agg")
    plt = need("matplotlib.pyplot")
    around = 1.6 * float(max(np.abs(child.east).max(), np.abs(child.north).max())) / 1000
    speeds = [d.speed_at_height(height) for d in (parent, child)]
    near = np.maximum(np.abs(parent.east), np.abs(parent.north)) / 1000 <= around
    low = min(float(np.nanmin(speeds[0][near])), float(np.nanmin(speeds[1])))
    high = max(float(np.nanmax(speeds[0][near])), float(np.nanmax(speeds[1])))

    figure, axes = plt.subplots(figsize=(7, 6), layout="constrained")
    for d, speed in zip((parent, child), speeds):
        colours = axes.pcolormesh(
            d.east / 1000, d.north / 1000, speed, vmin=low, vmax=high, shading="gouraud"
        )
    edge = [(0, 0), (-1, 0), (-1, -1), (0, -1), (0, 0)]
    axes.plot(
        [child.east[corner] / 1000 for corner in edge],
        [child.north[corner] / 1000 for corner in edge],
        color="white",
        linewidth=0.6,
    )
    axes.set(xlim=(-around, around), ylim=(-around, around), aspect="equal")
    axes.set(xlabel="east of the centre [km]", ylabel="north of the centre [km]")
    figure.colorbar(colours, label=f"wind speed {height:g} m above ground [m/s]")
    figure.suptitle(f"Child in its parent, wind from {child.angle:g}°")
    figure.savefig(path, dpi=110)
    plt.close(figure)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("run", type=Path, help="directory of the finished runs")
    parser.add_argument("--tag", action="append", help="direction such as 240_0; default: all")
    parser.add_argument("--height", type=float, default=50.0, help="above ground [m]")
    parser.add_argument("--out", type=Path, help="directory for the figures; default: the runs'")
    given = parser.parse_args()
    out = given.out or given.run
    try:
        tags = given.tag or torvex.wd_tags(given.run, "nest-")
        if not tags:
            sys.exit(f"{given.run}: no nested run")
        out.mkdir(parents=True, exist_ok=True)
        for tag in tags:
            path = out / f"nest_map_{tag}.png"
            parent = torvex.Direction(given.run, tag)
            draw(parent, torvex.Direction(given.run, tag, prefix="nest-"), given.height, path)
            print(path)
    except (OSError, ValueError, torvex.MissingPackage) as problem:
        sys.exit(str(problem))


if __name__ == "__main__":
    main()
