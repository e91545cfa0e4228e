"""Where everything of a study stands."""

from __future__ import annotations

import tomllib
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from torvex.study.errors import StudyError


@dataclass(frozen=True)
class Study:
    """STUDY/torvex.tin is the user's to edit, STUDY/maps holds its maps, STUDY/wd/TAG one direction
    each, STUDY/out what came of them, STUDY/study.toml where it all came from."""

    root: Path

    @property
    def name(self) -> str:
        return self.root.resolve().name

    @property
    def case(self) -> Path:
        return self.root / "torvex.tin"

    @property
    def maps(self) -> Path:
        return self.root / "maps"

    @property
    def directions(self) -> Path:
        return self.root / "wd"

    @property
    def out(self) -> Path:
        return self.root / "out"

    @property
    def provenance(self) -> Path:
        return self.root / "study.toml"

    def direction(self, tag: str) -> Path:
        return self.directions / tag

    def settings(self) -> dict[str, Any]:
        """study.toml; empty where a folder with a case has none."""
        if not self.provenance.exists():
            return {}
        try:
            with self.provenance.open("rb") as file:
                return tomllib.load(file)
        except tomllib.TOMLDecodeError as problem:
            raise StudyError(f"{self.provenance}: {problem}") from None

    def height(self) -> float:
        """The height above ground that the study is about [m]."""
        value = self.settings().get("study", {}).get("height", 100.0)
        if not isinstance(value, (int, float)) or not 0 < value < 2000:
            raise StudyError(f"{self.provenance}: height is {value!r}, expected metres")
        return float(value)


def existing_study(path: Path) -> Study:
    study = Study(path)
    if not study.case.is_file():
        raise StudyError(
            f"{path}: no study is there ({study.case.name} is missing); make one with "
            f"torvex-study new {path} --dem ..."
        )
    return study
