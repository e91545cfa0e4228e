#!/usr/bin/env python3
"""Prints what a finished run found at its sites, one table for each wind direction.

    python3 python/examples/site_table.py build/demo/big_butte [--heights 10 50 100]

ground       height of the ground above the datum of the map [m]
speed-up     horizontal wind speed over that of the inflow at the same height above ground
turbulence   sqrt(2/3 k) over the speed [%]
climb        angle of the wind against the horizontal [deg], upwards positive
turn         how far the wind is turned from the inflow [deg], clockwise positive
shear        exponent of the speed between height/sqrt(2) and height*sqrt(2)

A direction that is not converged is marked, one that diverged is left out, and a line says so.
"""

import argparse
import math
import signal
import sys
from pathlib import Path
from typing import Any

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
import torvex  # noqa: E402

TITLES = (
    f"  {'site':<20} {'ground':>8} {'height':>7} {'speed-up':>9} {'turbulence':>11} {'climb':>7}"
)
TITLES += f" {'turn':>7} {'shear':>7}"


def profiles(d: torvex.Direction) -> tuple[list[tuple[str, torvex.Profile]], str]:
    """Labels and profiles, and a line where the roughness of the sites is not known."""
    try:
        return [(site.label, site.profile) for site in d.placed_sites()], ""
    except (OSError, torvex.FormatError) as problem:
        return d.sites(), f"  nothing below the second cell, as no roughness is known: {problem}"


def number(value: Any, form: str, width: int, unit: str = "") -> str:
    word = "-" if math.isnan(value) else f"{value:{form}}"
    return f"{word:>{width}}{unit}"


def row(profile: torvex.Profile, inflow: torvex.Profile, height: float) -> str:
    if height > profile.z_agl[-1]:
        return f"{height:>5g} m {'above the domain':>16}"
    flow = profile.flow(height, inflow)
    return " ".join(
        (
            f"{height:>5g} m",
            number(flow.speed_up, ".3f", 9),
            number(100 * flow.turbulence_intensity, ".1f", 9, " %"),
            number(flow.flow_angle, ".1f", 7),
            number(flow.turn, ".1f", 7),
            number(flow.shear, ".2f", 7),
        )
    )


def table(d: torvex.Direction, heights: list[float]) -> str:
    state = torvex.STATES[d.state or 0]
    mark = state if d.state == 1 else state.upper()
    lines = [f"wind from {d.angle:.1f} degrees, {d.iteration} iterations, {mark}", TITLES]
    sites, remark = profiles(d)
    inflow = d.profile(0, 0)
    for label, profile in sites:
        ground = f"{profile.z_asl[0]:.1f} m"
        for height in heights:
            lines.append(f"  {label:<20} {ground:>8} {row(profile, inflow, height)}")
            label = ground = ""
    return "\n".join(lines + [remark] * bool(remark))


def main() -> None:
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)  # ends quietly in front of "| head"
    parser = argparse.ArgumentParser(description="Prints what a run found at its sites.")
    parser.add_argument("directory", type=Path)
    parser.add_argument("--heights", type=float, nargs="+", default=[10.0, 50.0, 100.0], help="[m]")
    parser.add_argument("--prefix", default="", help="of the run's files, such as flat-")
    parser.add_argument("--case", type=Path, help="case file; default: that of the last run there")
    given = parser.parse_args()
    if min(given.heights) < 0:
        parser.error("heights are metres above ground")
    try:
        directions, remarks = torvex.usable_directions(
            given.directory, given.prefix, case=given.case
        )
        print("\n\n".join(table(d, given.heights) for d in directions))
    except (OSError, ValueError) as problem:
        sys.exit(str(problem))
    for line in remarks:
        print(f"\n{line}")
    if not directions:
        sys.exit(f"{given.directory}: no direction to show")


if __name__ == "__main__":
    main()
