#!/usr/bin/env python3
"""Draws speed-up maps and profiles of a finished run, for each of its wind directions.

    python3 python/examples/speed_up_map.py build/demo/big_butte [--tag 240_0] [--out figures]

Speed-up is the wind speed divided by the speed in the inflow column at the same height above
ground. Writes speed_up_TAG.png and profiles_TAG.png, by default into the directory of the run. One
scale of colours holds for all directions of the run, also for those that are drawn alone.

A direction that is not converged is marked, one that diverged is left out, and a line says so.
"""

import argparse
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
import torvex  # noqa: E402
from torvex import pictures  # noqa: E402


def placed_sites(d: torvex.Direction) -> list[torvex.Site]:
    try:
        return d.placed_sites()
    except (OSError, torvex.FormatError) as problem:
        print(f"{d.tag}: drawn without sites: {problem}", file=sys.stderr)
        return []


def draw(given: argparse.Namespace) -> None:
    whole_run, remarks = torvex.usable_directions(given.run, given.prefix, case=given.case)
    if given.tag:
        asked, remarks = torvex.usable_directions(given.run, given.prefix, given.tag)
        tags = [d.tag for d in asked]
    else:
        tags = [d.tag for d in whole_run]
    for line in remarks:
        print(line, file=sys.stderr)
    if not tags:
        sys.exit(f"{given.run}: no direction to draw")

    out = given.out or given.run
    out.mkdir(parents=True, exist_ok=True)
    reach = pictures.colour_reach(whole_run, given.heights)
    for d in whole_run:
        if d.tag not in tags:
            continue
        sites = placed_sites(d)
        path = out / f"{given.prefix}speed_up_{d.tag}.png"
        pictures.draw_maps(d, path, reach, sites, given.heights)
        print(path)
        path = out / f"{given.prefix}profiles_{d.tag}.png"
        pictures.draw_profiles(
            d, path, ((site.label, site.profile) for site in sites), given.heights[0]
        )
        print(path)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("run", type=Path, help="directory of a finished run")
    parser.add_argument("--tag", action="append", help="direction such as 240_0; default: all")
    parser.add_argument("--heights", type=float, nargs="+", default=pictures.HEIGHTS, help="[m]")
    parser.add_argument("--prefix", default="", help="prefix of the names of files, such as nest-")
    parser.add_argument("--case", type=Path, help="case file; default: that of the last run there")
    parser.add_argument("--out", type=Path, help="directory for the figures; default: the run's")
    try:
        draw(parser.parse_args())
    except (OSError, ValueError, torvex.MissingPackage) as problem:
        sys.exit(str(problem))


if __name__ == "__main__":
    main()
