"""The case of one wind direction, made from the case that the user edits.

Every key of the user's case holds. What must differ is replaced: the list of directions, the
element of lists that count directions, and the names of files, which are seen from another folder.
"""

from __future__ import annotations

import re
from collections.abc import Mapping
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from torvex.case import Case, Group, read_case
from torvex.free_form import lines_of
from torvex.states import wd_tag
from torvex.study.errors import StudyError

GROUPS = (
    "NML_RUN",
    "NML_CASEFILE",
    "NML_MONITOR",
    "NML_ER",
    "NML_BOUNDARY_TREATMENT",
    "NML_NAVIER_STOKES",
    "NML_NUMERICAL_SOLVER",
    "NML_SITE",
)
_FILES = {
    "NML_CASEFILE": (
        "BASIC_H_FILE",
        "DETAILED_H_FILE",
        "BASIC_Z0_FILE",
        "DETAILED_Z0_FILE",
        "XYCONF",
    ),
    "NML_ER": ("DIRECTIONAL_ALPHA_FILE_NAME",),
    "NML_BOUNDARY_TREATMENT": ("INFLOW_PROFILE_FILE",),
}
_SHAPE_FILES = ("sf_build%filename", "sf_tree%filename", "trdb2shp%filename", "trdb2shp_fn")
# Land-use tables are found by their names in the folder of the case.
LAND_USE_TABLES = ("conv_table.tin", "cnpy_conv_table.tin")


@dataclass(frozen=True)
class StudyCase:
    """What the user's case says, as far as a study needs it."""

    path: Path
    text: str
    case: Case
    angles: tuple[float, ...]
    prefix: str  # of the names of results
    maxit: int
    monitor_step: int
    boost: bool
    accelerated: bool
    canopy: bool  # canopies are prepared from shapes
    inputs: tuple[Path, ...]  # files that the case names, those that exist

    @property
    def tags(self) -> tuple[str, ...]:
        return tuple(wd_tag(angle) for angle in self.angles)


def read_study_case(path: Path) -> StudyCase:
    text = "\n".join(lines_of(path))
    groups = {name: Group(path, text, name) for name in GROUPS}
    run, solver = groups["NML_RUN"], groups["NML_NUMERICAL_SOLVER"]
    blocks = _blocks(text)
    if run.whole("TORVEX_MODE", 0) != 0:
        raise StudyError(f"{path}: TORVEX_MODE: a domain of one's own is run by torvex itself")
    if _number(blocks.get("nest_points", {}).get("nest_mode", "0")) != 0:
        raise StudyError(f"{path}: nest_mode: nested cases are run by torvex itself")
    case = read_case(path)
    angles = case.angles
    prefix = "atlas-" if run.whole("ATLAS_FLAG", 0) == 1 else ""
    mode = run.text("TERRAIN_MODE")
    if mode in ("flat", "flat2"):
        prefix = f"{mode}-"
    if mode == "flat":
        angles = (0.0,)
    if not angles:
        raise StudyError(f"{path}: N_WIND_DIRECTION: the case has no wind direction")
    tags = [wd_tag(angle) for angle in angles]
    twins = sorted({tag for tag in tags if tags.count(tag) > 1})
    if twins:
        raise StudyError(f"{path}: two wind directions with one tag: {', '.join(twins)}")
    named = [groups[name].text(key) for name, keys in _FILES.items() for key in keys]
    shapes = blocks.get("shp_parameters", {})
    named += [shapes.get(key, "") for key in _SHAPE_FILES]
    canopy = _number(blocks.get("canopy_parameters", {}).get("canopy_mode", "0")) == 1
    return StudyCase(
        path=path,
        text=text,
        case=case,
        angles=angles,
        prefix=prefix,
        maxit=solver.whole("MAXIT", 500),
        monitor_step=groups["NML_MONITOR"].whole("MONITOR_STEP", 10),
        boost=solver.is_true("BOOSTCAL"),
        accelerated=solver.whole("ACCEL", 0) == 1,
        canopy=canopy and any(shapes.get(key) for key in _SHAPE_FILES[:2]),
        inputs=tuple(_existing(path.parent, named)),
    )


def _number(word: str) -> float:
    try:
        return float(word)
    except ValueError:
        return 0.0


def _existing(folder: Path, names: list[str]) -> list[Path]:
    paths = [folder / name for name in names if name]
    paths += [p.with_suffix(end) for p in paths if p.suffix == ".shp" for end in (".dbf", ".shx")]
    paths += [folder / name for name in LAND_USE_TABLES]
    return [path for path in paths if path.is_file()]


_BLOCK = re.compile(r"^[ \t]*&(\w+)[ \t]*(?:!.*)?$")
_BLOCK_KEY = re.compile(r"^[ \t]*([\w%]+)[ \t]*=[ \t]*('[^']*'|\"[^\"]*\"|[^ \t,!]*)")


def _blocks(text: str) -> dict[str, dict[str, str]]:
    """Keys of the keyed blocks; of a key given twice the first one counts."""
    blocks: dict[str, dict[str, str]] = {}
    inside: dict[str, str] | None = None
    for line in text.split("\n"):
        begin = _BLOCK.match(line)
        if begin and begin[1].upper() not in GROUPS:
            inside = blocks.setdefault(begin[1], {})
        elif line.strip() in ("/", "&end", "&END"):
            inside = None
        elif inside is not None and (key := _BLOCK_KEY.match(line)):
            inside.setdefault(key[1], key[2].strip("'\"").strip())
    return blocks


def direction_text(
    study: StudyCase, number: int, up: str, resume: bool, changes: Mapping[str, str]
) -> str:
    """The case of direction `number` (from 0) in a folder from which `up` leads to the study's.
    `changes` are keys of NML_NUMERICAL_SOLVER with their values."""
    text = study.text
    for name, keys in _changed_groups(study, number, up, resume, changes).items():
        if not keys:
            continue
        group = Group(study.path, text, name)
        pieces, at = [], 0
        for key, begin, end in group.spans:
            if key in keys:
                pieces.append(text[at:begin])
                at = end
        pieces.append(text[at : group.end].rstrip(" "))
        pieces += [f"  {value}\n" for value in keys.values() if value]
        text = "".join([*pieces, text[group.end :]])
    return _with_shapes_from(text, up)


def _changed_groups(
    study: StudyCase, number: int, up: str, resume: bool, changes: Mapping[str, str]
) -> dict[str, dict[str, str]]:
    """For each group the keys to be replaced, and the text that takes their place."""
    groups = {name: Group(study.path, study.text, name) for name in GROUPS}
    case, er = groups["NML_CASEFILE"], groups["NML_ER"]
    index = number + 1
    angle = str(np.float32(study.angles[number]))
    changed: dict[str, dict[str, str]] = {
        "NML_RUN": {"RESTART_FLAG": f"RESTART_FLAG = {int(resume)}"},
        "NML_CASEFILE": {
            "WD_TYPE": "WD_TYPE = 1",
            "N_WIND_DIRECTION": "N_WIND_DIRECTION = 1",
            "WIND_DIRECTION_ANGLE": f"WIND_DIRECTION_ANGLE = {angle}",
        },
        "NML_ER": {},
        "NML_BOUNDARY_TREATMENT": {},
        "NML_NUMERICAL_SOLVER": {key: f"{key} = {value}" for key, value in changes.items()},
    }
    for group, key in ((case, "ELEVATION_CORRECTION_FACTOR"), (er, "EQUIVALENT_ROUGHNESS")):
        if any(name == key for name, _ in group.words):
            value = group.words.get((key, index))
            changed[group.name][key] = f"{key} = {value}" if value else ""
    if ("DIRECTIONAL_ALPHA_APPLICABLE_WDS", 1) in er.words:
        acts = _listed_directions(er, index)
        changed["NML_ER"][
            "DIRECTIONAL_ALPHA_APPLICABLE_WDS"
        ] = f"DIRECTIONAL_ALPHA_APPLICABLE_WDS = {'1, ' if acts else ''}-1"
    for name, keys in _FILES.items():
        for key in keys:
            file = groups[name].text(key)
            if file:
                changed[name][key] = f"{key} = '{_seen_from(up, file)}'"
    return changed


def _listed_directions(er: Group, index: int) -> bool:
    for place in range(1, 361):
        value = er.whole("DIRECTIONAL_ALPHA_APPLICABLE_WDS", -1)
        value = int(er.real("DIRECTIONAL_ALPHA_APPLICABLE_WDS", place)) if place > 1 else value
        if value < 0 or ("DIRECTIONAL_ALPHA_APPLICABLE_WDS", place) not in er.words:
            return False
        if value == index:
            return True
    return False


def _seen_from(up: str, file: str) -> str:
    return (file if file.startswith("/") else up + file).replace("'", "''")


def _with_shapes_from(text: str, up: str) -> str:
    lines = text.split("\n")
    for n, line in enumerate(lines):
        key = _BLOCK_KEY.match(line)
        if key and key[1] in _SHAPE_FILES and key[2].strip("'\""):
            file = _seen_from(up, key[2].strip("'\"").strip())
            lines[n] = f"{key[1]} = '{file}'{line[key.end():]}"
    return "\n".join(lines)


def without_canopy(text: str) -> str:
    """The same case over bare ground."""
    return re.sub(r"^([ \t]*canopy_mode[ \t]*=[ \t]*)1\b", r"\g<1>0", text, flags=re.MULTILINE)


def what_counts(text: str) -> str:
    """A case without comments, blanks and the text between groups: two cases that differ in such
    things only are one."""
    path = Path("case")
    parts = []
    for name in GROUPS:
        words = Group(path, text, name).words
        parts += [f"{name} {key}({n}) = {word}" for (key, n), word in sorted(words.items())]
    for name, keys in sorted(_blocks(text).items()):
        parts += [f"{name} {key} = {word}" for key, word in keys.items()]
    return "\n".join(parts)
