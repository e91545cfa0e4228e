"""What the results of a run do not tell of its case: the centre and the places of the sites."""

from __future__ import annotations

import itertools
import re
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from torvex.arrays import PathLike
from torvex.free_form import free_form, lines_of, real
from torvex.geodesy import metres_per_degree
from torvex.records import FormatError


@dataclass(frozen=True)
class CaseSite:
    label: str
    longitude: float  # [degrees]
    latitude: float


@dataclass(frozen=True)
class Case:
    """Centre, sites and directions of a case file."""

    path: Path
    longitude: float  # of the centre [degrees]
    latitude: float
    geodetic_system: int  # the key GS
    sites: tuple[CaseSite, ...]
    angles: tuple[float, ...] = ()  # wind directions [degrees], with all their decimals

    def east_north(self, longitude: Any, latitude: Any) -> tuple[Any, Any]:
        """Metres from the centre."""
        per_longitude, per_latitude = self._metres_per_degree()
        return (longitude - self.longitude) * per_longitude, (
            latitude - self.latitude
        ) * per_latitude

    def longitude_latitude(self, east: Any, north: Any) -> tuple[Any, Any]:
        """The inverse of east_north [degrees]."""
        per_longitude, per_latitude = self._metres_per_degree()
        return self.longitude + east / per_longitude, self.latitude + north / per_latitude

    def _metres_per_degree(self) -> tuple[float, float]:
        return metres_per_degree(self.latitude, self.geodetic_system)


def find_case(directory: PathLike) -> Path:
    """The case file of the last run in a directory, by its log; else torvex.tin."""
    directory = Path(directory)
    log = directory / "torvex.log"
    if log.exists():
        named = re.findall(r" Input file is set to \[(.*)\]", "\n".join(lines_of(log)))
        # The directory may have been moved since.
        if named and (directory / Path(named[-1]).name).is_file():
            return directory / Path(named[-1]).name
    if not (directory / "torvex.tin").is_file():
        raise FileNotFoundError(f"{directory}: no case file of a run is known there, give its name")
    return directory / "torvex.tin"


_STRING_OR_COMMENT = re.compile(r"""'(?:[^'\n]|'')*'|"(?:[^"\n]|"")*"|![^\n]*""")
_KEY = re.compile(
    r"([A-Za-z]\w*)(?:\((\d+)\))?(%\w+)?(?:\((\d+)\))?\s*="
)  # A, A(2), A(2)%B, A(2)%B(3)


def _blanked(match: re.Match[str]) -> str:
    return (" " if match[0].startswith("!") else "x") * len(match[0])


class Group:
    """The values of a namelist group, by key in capitals and number in the array.

    end    where the mark stands that ends the group
    spans  where each assignment stands: name of the key in capitals, begin, end
    """

    def __init__(self, path: Path, text: str, name: str) -> None:
        self.path = path
        self.name = name
        self.words: dict[tuple[str, int], str] = {}
        # In this copy no string and no comment can be taken for anything else.
        plain = _STRING_OR_COMMENT.sub(_blanked, text)
        begin = re.search(rf"^[ \t]*[&$]{name}\b", plain, re.MULTILINE | re.IGNORECASE)
        if begin is None:
            raise FormatError(path, f"the group &{name} is missing")
        end = re.compile(r"/|[&$]end\b", re.IGNORECASE).search(plain, begin.end())
        if end is None:
            raise FormatError(path, f"the group &{name} does not end")
        self.end = end.start()
        self.spans: list[tuple[str, int, int]] = []
        keys = list(_KEY.finditer(plain, begin.end(), end.start()))
        behind = [key.start() for key in keys[1:]] + [end.start()]
        for key, until in zip(keys, behind):
            self.spans.append((key[1].upper(), key.start(), until))
            member = (key[3] or "").upper()
            array = f"{key[1].upper()}({key[2]}){member}" if member else key[1].upper()
            first = int((key[4] if member else key[2]) or 1)
            words = free_form(plain[key.end() : until].splitlines())
            for number, word in enumerate(itertools.islice(words, 10000), start=first):
                if word is not None:
                    self.words[array, number] = word
            found = _STRING_OR_COMMENT.finditer(text, key.end(), until)
            string = next((match[0] for match in found if not match[0].startswith("!")), None)
            if string is not None:
                self.words[array, first] = string[1:-1].replace(string[0] * 2, string[0])

    def real(self, key: str, number: int = 1) -> float:
        word = self.words.get((key, number), "0")
        try:
            return real(word)
        except ValueError:
            raise FormatError(
                self.path, f"&{self.name}: {key}: {word}, expected a number"
            ) from None

    def text(self, key: str) -> str:
        return self.words.get((key, 1), "").strip()

    def whole(self, key: str, otherwise: int) -> int:
        return int(self.real(key)) if (key, 1) in self.words else otherwise

    def is_true(self, key: str) -> bool:
        """Logicals are told by their first letter, as T, .true. or true."""
        return self.text(key).lstrip(".").upper().startswith("T")

    def degrees(self, key: str) -> float:
        """Degrees, minutes and seconds are added as they stand, signs and all."""
        return self.real(key) + self.real(key, 2) / 60 + self.real(key, 3) / 3600


def read_case(path: PathLike) -> Case:
    """Centre, sites and directions of a case file; all else in it is passed over."""
    path = Path(path)
    text = "\n".join(lines_of(path))
    case, site = Group(path, text, "NML_CASEFILE"), Group(path, text, "NML_SITE")
    geodetic_system = case.real("GS")
    if geodetic_system not in (0, 1, 2, 3):
        raise FormatError(path, f"GS is {geodetic_system:g}, expected 0 to 3")
    count = int(case.real("N_WIND_DIRECTION"))
    if case.real("WD_TYPE") == 0:
        angles = [n * 360 / count for n in range(count)]
    else:
        angles = [case.real("WIND_DIRECTION_ANGLE", n) for n in range(1, count + 1)]
    return Case(
        path=path,
        angles=tuple(angles),
        longitude=case.degrees("CENT_LON"),
        latitude=case.degrees("CENT_LAT"),
        geodetic_system=int(geodetic_system),
        sites=tuple(
            CaseSite(
                site.words.get((f"SITE({n})%LABEL", 1), "").strip(),
                site.degrees(f"SITE({n})%LON"),
                site.degrees(f"SITE({n})%LAT"),
            )
            for n in range(1, int(site.real("N_SITE")) + 1)
        ),
    )
