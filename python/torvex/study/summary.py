"""What came of all directions: a table for people, one for programs, and an exit status."""

from __future__ import annotations

import csv
import io
import json
from collections.abc import Sequence
from typing import Any

from torvex.study.case_text import StudyCase
from torvex.study.gather import imbalance, is_unbalanced
from torvex.study.layout import Study
from torvex.study.map_file import write_whole
from torvex.study.record import Record, is_alive, read_record

# Of a row those that differ between two runs of one study stand last.
COLUMNS = (
    "tag",
    "angle",
    "state",
    "iterations",
    "resid_m",
    "resid_u",
    "resid_v",
    "resid_w",
    "mass_balance",
    "lowest_speed_up",
    "lowest_at",
    "highest_speed_up",
    "highest_at",
    "step",
    "remarks",
    "time_s",
    "peak_memory_mb",
    "host",
)
CONVERGED, NOT_CONVERGED, STOPPED, INTERRUPTED = 0, 3, 1, 130


def records_of(study: Study, case: StudyCase, ended: bool = False) -> list[Record]:
    """One for each direction of the case, in its order; what has not begun waits. `ended`: nobody
    works on them any more."""
    records = []
    for tag, angle in zip(case.tags, case.angles):
        folder = study.direction(tag)
        record = read_record(folder, case.prefix) or Record(tag, angle)
        if record.state == "running" and (ended or not is_alive(folder, record, case.prefix)):
            # Who worked on it is gone without a word: killed by a scheduler, or with its machine.
            record.state, record.message = "killed", "ended from outside while it ran"
        records.append(record)
    return records


def row_of(record: Record) -> dict[str, Any]:
    balance = imbalance(record.flow_in, record.flow_out)
    remarks = list(record.remarks)
    if is_unbalanced(balance):
        remarks.append("suspicious: what flows out is not what flows in")
    if record.message:
        remarks.insert(0, record.message)
    told = [row for row in record.sites if row.get("speed_up") is not None]
    low = min(told, key=lambda row: row["speed_up"], default=None)
    high = max(told, key=lambda row: row["speed_up"], default=None)
    return {
        "tag": record.tag,
        "angle": record.angle,
        "state": record.state,
        "iterations": record.iterations,
        "resid_m": record.resid_m,
        "resid_u": record.resid_u,
        "resid_v": record.resid_v,
        "resid_w": record.resid_w,
        "mass_balance": None if balance is None else float(f"{balance:.3g}"),
        "lowest_speed_up": low["speed_up"] if low else None,
        "lowest_at": low["label"] if low else None,
        "highest_speed_up": high["speed_up"] if high else None,
        "highest_at": high["label"] if high else None,
        "step": record.step,
        "remarks": "; ".join(remarks),
        "time_s": round(record.seconds, 2),
        "peak_memory_mb": round(record.peak_memory / 1e6, 1),
        "host": record.host,
    }


def write_summary(
    study: Study, case: StudyCase, height: float, ended: bool = False
) -> list[Record]:
    """summary.csv, summary.json and sites.csv in STUDY/out."""
    records = records_of(study, case, ended)
    rows = [row_of(record) for record in records]
    study.out.mkdir(exist_ok=True)
    write_whole(study.out / "summary.csv", [_csv(COLUMNS, rows)])
    told = {
        "height": height,
        "directions": [row | {"sites": record.sites} for row, record in zip(rows, records)],
    }
    write_whole(study.out / "summary.json", [json.dumps(told, indent=1), "\n"])
    site_rows = [
        {"label": site["label"], "angle": record.angle, "state": record.state, "height": height}
        | {key: value for key, value in site.items() if key != "label"}
        for record in records
        for site in record.sites
    ]
    columns = tuple(site_rows[0]) if site_rows else ("label", "angle", "state", "height")
    write_whole(study.out / "sites.csv", [_csv(columns, site_rows)])
    return records


def _csv(columns: Sequence[str], rows: Sequence[dict[str, Any]]) -> str:
    text = io.StringIO()
    writer = csv.DictWriter(text, columns, lineterminator="\n")
    writer.writeheader()
    writer.writerows({k: "" if v is None else v for k, v in row.items()} for row in rows)
    return text.getvalue()


def exit_status(records: Sequence[Record]) -> int:
    """0 all converged; 3 some did not, or diverged; 1 a stop or a signal; 130 broken off."""
    states = {record.state for record in records}
    if states & {"interrupted", "waiting", "running"}:
        return INTERRUPTED
    if states & {"failed", "killed"}:
        return STOPPED
    return NOT_CONVERGED if states - {"converged"} else CONVERGED


_TITLES = (
    ("direction", "tag", 9),
    ("state", "state", 14),
    ("it.", "iterations", 5),
    ("m", "resid_m", 8),
    ("u", "resid_u", 8),
    ("v", "resid_v", 8),
    ("w", "resid_w", 8),
    ("balance", "mass_balance", 9),
    ("lowest", "lowest_speed_up", 7),
    ("highest", "highest_speed_up", 7),
    ("time s", "time_s", 8),
    ("MB", "peak_memory_mb", 7),
)


def summary_lines(records: Sequence[Record], height: float) -> list[str]:
    """The table on the screen, and what is to be said of single directions."""
    lines = ["".join(f"{title:>{width + 1}}" for title, _, width in _TITLES)]
    for record in records:
        row = row_of(record)
        lines.append("".join(f"{_word(key, row[key]):>{width + 1}}" for _, key, width in _TITLES))
    for record in records:
        row = row_of(record)
        told = [f"after {record.step}"] * bool(record.step) + [row["remarks"]] * bool(
            row["remarks"]
        )
        if told:
            lines.append(f"  {record.tag}: {'; '.join(told)}")
    counts = [
        f"{sum(record.state == state for record in records)} {state}"
        for state in dict.fromkeys(record.state for record in records)
    ]
    lines.append(
        f"{number_of(len(records), 'direction')}: {', '.join(counts)}; lowest and highest are "
        f"speed-ups at the sites, {height:g} m above ground"
    )
    return lines


def number_of(count: int, what: str) -> str:
    return f"{count} {what}" + ("s" if count != 1 else "")


def _word(key: str, value: Any) -> str:
    if value is None:
        return "-"
    if key.startswith("resid") or key == "mass_balance":
        return f"{value:.1e}"
    if key.endswith("speed_up"):
        return f"{value:.3f}"
    return f"{value:.1f}" if isinstance(value, float) else str(value)
