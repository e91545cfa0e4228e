#!/usr/bin/env python3
"""Prints what a finished run found at its sites, one table for each wind direction.

    python3 python/examples/site_table.py build/demo/big_butte [--heights 10 50 100]

speed-up     horizontal wind speed over that of the inflow at the same height above ground
turbulence   sqrt(2/3 k) over the speed [%]
climb        angle of the wind against the horizontal [deg], upwards positive
turn         how far the wind is turned from its free direction [deg], clockwise positive
"""

import argparse
import sys
from pathlib import Path

import numpy as np

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
import torvex  # noqa: E402


def at(profile, values, height):
    return float(np.interp(height, profile.z_agl, values))


def row(profile, inflow, height):
    u, v, w, tke = (at(profile, x, height) for x in (profile.u, profile.v, profile.w, profile.tke))
    speed = np.hypot(u, v)
    return (
        speed / at(inflow, inflow.speed, height),
        100.0 * np.sqrt(max(tke, 0.0) * 2.0 / 3.0) / speed,
        np.degrees(np.arctan2(w, speed)),
        -np.degrees(np.arctan2(v, u)),  # v points to the left of the wind
    )


def table(d, heights):
    inflow = d.inflow_profile()
    state = torvex.STATES[d.state]
    lines = [
        f"wind from {d.angle:.1f} degrees, {d.iteration} iterations, {state if d.state == 1 else state.upper()}",
        f"  {'site':<20} {'height':>7} {'speed-up':>9} {'turbulence':>11} {'climb':>7} {'turn':>7}",
    ]
    for label, profile in d.sites():
        for height in heights:
            up, turbulence, climb, turn = row(profile, inflow, height)
            lines.append(
                f"  {label:<20} {height:>5.0f} m {up:>9.3f} {turbulence:>9.1f} % {climb:>7.1f} {turn:>7.1f}"
            )
            label = ""
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description="Prints what a run found at its sites.")
    parser.add_argument("directory", type=Path)
    parser.add_argument("--heights", type=float, nargs="+", default=(10.0, 50.0, 100.0))
    parser.add_argument("--prefix", default="", help="of the run's files, such as flat-")
    given = parser.parse_args()
    try:
        directions, left_out = torvex.usable_directions(given.directory, given.prefix)
        print("\n\n".join(table(d, given.heights) for d in directions))
    except (OSError, torvex.FormatError) as problem:
        sys.exit(str(problem))
    for line in left_out:
        print(f"\n{line}")
    if not directions:
        sys.exit(f"{given.directory}: no direction to show")


if __name__ == "__main__":
    main()
