"""What a finished direction tells at the sites, and whether it looks right."""

from __future__ import annotations

import math
from pathlib import Path
from typing import Any

from torvex.direction import Direction
from torvex.study.case_text import StudyCase

# Speed-ups beyond these are no wind over terrain but something that went wrong.
_LEAST, _MOST = 0.2, 3.0
_IMBALANCE = 1e-3


def gather(
    folder: Path, case: StudyCase, number: int, height: float
) -> tuple[list[dict[str, Any]], list[str]]:
    """For each site with a profile its values at a height above ground, and remarks."""
    d = Direction(folder, case.angles[number], prefix=case.prefix, case=folder / "torvex.tin")
    inflow = d.profile(0, 0)
    rows, remarks = [], []
    for site in d.placed_sites():
        if height > site.profile.z_agl[-1]:
            remarks.append(f"{site.label}: {height:g} m is above the domain")
            continue
        flow = site.profile.flow(height, inflow)
        rows.append(
            {
                "label": site.label,
                "ground": round(float(site.profile.z_asl[0]), 3),
                "speed_up": _told(flow.speed_up),
                "turbulence_intensity": _told(flow.turbulence_intensity),
                "flow_angle": _told(flow.flow_angle),
                "turn": _told(flow.turn),
                "shear": _told(flow.shear),
            }
        )
    known = {row["label"] for row in rows}
    outside = [site.label for site in case.case.sites if site.label not in known]
    if outside:
        remarks.append(f"no value at {', '.join(outside)}")
    remarks += suspicious(rows)
    return rows, remarks


def _told(value: Any) -> float | None:
    """Seven digits, which is what a run stores; None where there is no value."""
    number = float(value)
    return float(f"{number:.7g}") if math.isfinite(number) else None


def suspicious(rows: list[dict[str, Any]]) -> list[str]:
    odd = []
    for row in rows:
        value = row["speed_up"]
        if value is None:
            odd.append(f"suspicious: {row['label']} has no speed-up")
        elif not _LEAST <= value <= _MOST:
            odd.append(f"suspicious: {row['label']} has a speed-up of {value:.3g}")
    return odd


def imbalance(flow_in: float | None, flow_out: float | None) -> float | None:
    """What flows out over what flows in, less one."""
    if flow_in is None or flow_out is None or flow_in == 0:
        return None
    return flow_out / flow_in - 1


def is_unbalanced(value: float | None) -> bool:
    return value is not None and abs(value) > _IMBALANCE
