"""Turbine points of a table or of a vector file, in longitude and latitude."""

from __future__ import annotations

import csv
import math
from collections.abc import Sequence
from dataclasses import dataclass, replace
from pathlib import Path
from typing import Any

import numpy as np

from torvex.packages import need
from torvex.study.errors import StudyError
from torvex.study.map_grid import Centre

MOST_SITES = 1000
LABEL_BYTES = 20  # of a label in a case file
_LABELS = ("label", "name", "site", "turbine", "wtg", "id")
_LONGITUDES = ("longitude", "lon", "long", "lng")
_LATITUDES = ("latitude", "lat")
_EASTINGS = ("x", "easting", "east", "e")
_NORTHINGS = ("y", "northing", "north", "n")
_NEAREST = 1.0  # [m]; sites nearer to each other are one


@dataclass(frozen=True)
class StudySite:
    label: str
    longitude: float  # [degrees], WGS 84
    latitude: float
    where: str  # line or feature of the file


def read_sites(
    path: Path, crs: str | None = None, decimal: str = ".", layer: str | None = None
) -> list[StudySite]:
    """The sites of a CSV file, or of the points of anything else that OGR reads.

    crs      of the columns x and y of a table; longitude and latitude are WGS 84
    decimal  the sign of decimals in a table
    """
    if not path.exists():
        raise StudyError(f"{path}: there is no such file")
    if path.suffix.lower() in (".csv", ".txt", ".tsv"):
        sites = _of_table(path, crs, decimal)
    else:
        sites = _of_layer(path, crs, layer)
    if not sites:
        raise StudyError(f"{path}: no site is in it")
    if len(sites) > MOST_SITES:
        raise StudyError(f"{path}: {len(sites)} sites, a case holds {MOST_SITES}")
    sites = [replace(site, label=_short(site.label)) for site in sites]
    _refuse_twins(path, sites)
    return sites


def _short(label: str) -> str:
    return label.encode()[:LABEL_BYTES].decode(errors="ignore").strip()


def _refuse_twins(path: Path, sites: Sequence[StudySite]) -> None:
    known: dict[str, StudySite] = {}
    for site in sites:
        other = known.setdefault(site.label, site)
        if other is not site:
            raise StudyError(
                f"{path}: {site.where} and {other.where} have one label, {site.label!r} (the first "
                f"{LABEL_BYTES} characters count); give each site its own"
            )
    first = Centre(sites[0].longitude, sites[0].latitude)
    lon = first.near(np.array([site.longitude for site in sites]))
    east, north = first.east_north(lon, np.array([site.latitude for site in sites]))
    order = np.argsort(north, kind="stable")
    for n, one in enumerate(order.tolist()):
        for behind in order[n + 1 :].tolist():
            if north[behind] - north[one] > _NEAREST:
                break
            if math.hypot(east[behind] - east[one], north[behind] - north[one]) < _NEAREST:
                a, b = sorted((one, behind))
                raise StudyError(
                    f"{path}: {sites[a].where} ({sites[a].label}) and {sites[b].where} "
                    f"({sites[b].label}) are one place; leave out one of them"
                )


# Tables.


def _of_table(path: Path, crs: str | None, decimal: str) -> list[StudySite]:
    try:
        text = path.read_text(encoding="utf-8-sig")
    except UnicodeDecodeError:
        text = path.read_text(encoding="latin-1")
    numbered = [
        (number, line)
        for number, line in enumerate(text.splitlines(), start=1)
        if line.strip() and not line.lstrip().startswith("#")
    ]
    if not numbered:
        raise StudyError(f"{path}: the table is empty")
    header = numbered[0][1]
    separator = max(";\t,", key=header.count)
    names = [name.strip().lower() for name in next(csv.reader([header], delimiter=separator))]

    def column(*known: str) -> int | None:
        return next((names.index(name) for name in known if name in names), None)

    label = column(*_LABELS)
    x, y, system = _position_columns(path, names, column, crs)
    labels: list[str] = []
    xs, ys, where = [], [], []
    for number, line in numbered[1:]:
        words = [word.strip() for word in next(csv.reader([line], delimiter=separator))]
        place = f"line {number}"
        if len(words) != len(names):
            raise StudyError(
                f"{path}: {place} has {len(words)} fields, the header {len(names)}; where a comma "
                "is the decimal sign, fields must be separated by ; or a tabulator"
            )
        xs.append(_number(path, place, names[x], words[x], decimal))
        ys.append(_number(path, place, names[y], words[y], decimal))
        labels.append(words[label] if label is not None else f"S{len(labels) + 1}")
        where.append(place)
        if not labels[-1]:
            raise StudyError(f"{path}: {place} has no label")
    return _placed(path, labels, xs, ys, where, system)


def _position_columns(
    path: Path, names: list[str], column: Any, crs: str | None
) -> tuple[int, int, Any]:
    pyproj = need("pyproj")
    lon, lat = column(*_LONGITUDES), column(*_LATITUDES)
    if lon is not None and lat is not None and crs is None:
        return lon, lat, pyproj.CRS(4326)
    x, y = column(*_EASTINGS), column(*_NORTHINGS)
    if (x is None or y is None) and crs is not None:
        x, y = lon, lat
    if x is None or y is None:
        raise StudyError(
            f"{path}: the columns are {', '.join(names)}; expected longitude and latitude, or "
            "x and y with --sites-crs"
        )
    if crs is None:
        raise StudyError(
            f"{path}: columns {names[x]} and {names[y]} need a coordinate reference system; give "
            "it with --sites-crs, such as --sites-crs EPSG:25832"
        )
    return x, y, system_of(crs)


def system_of(crs: str) -> Any:
    """A reference system by its EPSG code, its name or its text."""
    pyproj = need("pyproj")
    try:
        return pyproj.CRS.from_user_input(crs)
    except pyproj.exceptions.CRSError:
        raise StudyError(
            f"{crs}: PROJ knows no such reference system; write it as EPSG:25832"
        ) from None


def _number(path: Path, place: str, column: str, word: str, decimal: str) -> float:
    plain = word.replace(decimal, ".") if decimal != "." else word
    try:
        value = float(plain)
    except ValueError:
        value = math.nan
    if math.isfinite(value):
        return value
    if "," in word and decimal == ".":
        raise StudyError(
            f"{path}: {place}: {column} is {word!r}, with a comma as decimal sign; say so with "
            "--decimal ,"
        )
    raise StudyError(f"{path}: {place}: {column} is {word!r}, expected a number")


def _placed(
    path: Path,
    labels: Sequence[str],
    xs: Sequence[float],
    ys: Sequence[float],
    where: Sequence[str],
    system: Any,
) -> list[StudySite]:
    pyproj = need("pyproj")
    forth = pyproj.Transformer.from_crs(system, pyproj.CRS(4326), always_xy=True)
    sites = []
    for label, x, y, place in zip(labels, xs, ys, where):
        lon, lat = forth.transform(x, y)
        if not (abs(lon) <= 360 and abs(lat) < 90):
            raise StudyError(
                f"{path}: {place} ({label}): {x:g}, {y:g} is no place of {system.name}; look at "
                "the order of the columns and at --sites-crs"
            )
        sites.append(StudySite(label, float(lon), float(lat), place))
    return sites


# Points of vector files.


def _of_layer(path: Path, crs: str | None, name: str | None) -> list[StudySite]:
    gdal = need("osgeo.gdal")
    gdal.UseExceptions()
    try:
        dataset = gdal.OpenEx(str(path), gdal.OF_VECTOR)
    except RuntimeError as problem:
        raise StudyError(f"{path}: no points that GDAL can read: {problem}") from None
    layer = _layer_of(path, dataset, name)
    system = _system_of_layer(path, layer, crs)
    fields = [field.GetName() for field in layer.schema]
    label = next((f for known in _LABELS for f in fields if f.lower() == known), None)
    labels: list[str] = []
    xs, ys, where = [], [], []
    for feature in layer:
        place = f"feature {feature.GetFID()}"
        geometry = feature.GetGeometryRef()
        if geometry is not None and geometry.GetGeometryCount() == 1:
            geometry = geometry.GetGeometryRef(0)  # a group of one point
        if geometry is None or geometry.GetPointCount() != 1:
            raise StudyError(f"{path}: {place} is no point")
        text = feature.GetFieldAsString(label).strip() if label else f"S{len(labels) + 1}"
        if not text:
            raise StudyError(f"{path}: {place} has no label")
        labels.append(text)
        xs.append(geometry.GetX())
        ys.append(geometry.GetY())
        where.append(place)
    return _placed(path, labels, xs, ys, where, system)


def _layer_of(path: Path, dataset: Any, name: str | None) -> Any:
    there = [dataset.GetLayer(n).GetName() for n in range(dataset.GetLayerCount())]
    if name is None and len(there) == 1:
        return dataset.GetLayer(0)
    layer = dataset.GetLayerByName(name) if name else None
    if layer is None:
        raise StudyError(f"{path}: name one of its layers with --sites-layer: {', '.join(there)}")
    return layer


def _system_of_layer(path: Path, layer: Any, crs: str | None) -> Any:
    if crs is not None:
        return system_of(crs)
    reference = layer.GetSpatialRef()
    if reference is None:
        raise StudyError(
            f"{path}: the points have no coordinate reference system; give it with --sites-crs"
        )
    return need("pyproj").CRS.from_wkt(reference.ExportToWkt())


def centre_of(sites: Sequence[StudySite]) -> Centre:
    """The middle of the box round the sites, on a tenth of a second of arc, which a case file
    writes out in full; a group of sites may lie across the antimeridian."""
    first = Centre(sites[0].longitude, sites[0].latitude)
    lon = first.near(np.array([site.longitude for site in sites]))
    lat = np.array([site.latitude for site in sites])
    middle = (lon.min() + lon.max()) / 2, (lat.min() + lat.max()) / 2
    longitude = (round(middle[0] * 36000) / 36000 + 180) % 360 - 180
    return Centre(longitude, round(middle[1] * 36000) / 36000)
