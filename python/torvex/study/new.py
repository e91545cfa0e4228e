"""A new study: maps, case and provenance from rasters and points."""

from __future__ import annotations

import datetime
import os
import shutil
from collections.abc import Callable, Sequence
from dataclasses import dataclass, replace
from pathlib import Path

import numpy as np

from torvex.arrays import Array
from torvex.states import wd_tag
from torvex.study.case_file import CaseText, case_text
from torvex.study.errors import StudyError
from torvex.study.land_cover import (
    LARGEST_Z0,
    choose_table,
    cover_on_map,
    lengths_on_map,
    read_table,
    table_of,
)
from torvex.study.layout import Study
from torvex.study.map_file import write_map, write_whole
from torvex.study.map_grid import Centre, MapGrid, grid_of_points, grid_of_step
from torvex.study.mesh_keys import (
    LEAST_MARGIN,
    MARGIN,
    MeshKeys,
    extent_of,
    finest_spacing,
    first_layer,
    top_of,
)
from torvex.study.pictures import draw_no_data
from torvex.study.provenance import inputs, toml_text, versions
from torvex.study.raster import Raster, covered_reach, open_rasters
from torvex.study.sites import StudySite, centre_of, read_sites
from torvex.study.terrain import elevation_on_map, no_data_report, wants_means
from torvex.study.trees import write_trees

Say = Callable[[str], None]
_FAR = 200_000.0  # no map reaches farther [m]


@dataclass(frozen=True)
class NewStudy:
    """What a user asks for."""

    dem: tuple[Path, ...]
    directions: tuple[float, ...]
    sectors: bool = False  # equal ones from 0 degrees
    dem_unit: str | None = None
    sea_level: float | None = None  # of what has no data [m]
    landcover: tuple[Path, ...] = ()
    table: str | None = None
    roughness: str | None = None  # a raster of lengths, or one length [m]
    sites: Path | None = None
    sites_crs: str | None = None
    sites_layer: str | None = None
    decimal: str = "."
    centre: tuple[float, float] | None = None  # longitude, latitude
    size: tuple[float, float] | None = None  # of the study area, west to east, south to north [m]
    height: float = 100.0
    cells: int = 250_000
    canopy: bool = False
    canopy_height: Path | None = None
    command: str = ""


@dataclass(frozen=True)
class _Roughness:
    z0: Array
    table: Path | None = None
    trees: Array | None = None
    tree_height: Array | None = None


def make_study(root: Path, asked: NewStudy, say: Say, force: bool = False) -> Study:
    """Makes everything beside the folder and then moves it there, so that a study is whole."""
    _check_asked(asked)
    _refuse_to_overwrite(root, force)
    beside = root.parent / f".{root.name}.{os.getpid()}.tmp"
    beside.mkdir()
    try:
        _make(Study(beside), root.name, asked, say, root.with_name(f"{root.name}-no-data.png"))
        _move(beside, root)
    finally:
        shutil.rmtree(beside, ignore_errors=True)
    return Study(root)


def _check_asked(asked: NewStudy) -> None:
    if not asked.directions:
        raise StudyError(
            "no wind direction is asked for: give --sectors 12 or --directions 270,300"
        )
    if not all(0 <= angle <= 360 for angle in asked.directions):
        raise StudyError("wind directions are degrees from 0 to 360")
    tags = [wd_tag(angle) for angle in asked.directions]
    twins = sorted({tag for tag in tags if tags.count(tag) > 1})
    if twins:
        raise StudyError(f"two wind directions with the same first decimal: {', '.join(twins)}")
    if not 1 <= asked.height <= 1000:
        raise StudyError(f"--height {asked.height:g}: expected 1 to 1000 m above ground")
    if asked.cells < 1000:
        raise StudyError(f"--cells {asked.cells}: expected 1000 or more")
    if bool(asked.landcover) == bool(asked.roughness):
        raise StudyError(
            "the roughness of the ground is needed once: --landcover RASTER, or --roughness with a "
            "raster of lengths or one length in metres"
        )
    if asked.canopy and not asked.landcover:
        raise StudyError("--canopy takes the forests of a land cover: give --landcover")
    if asked.sites is None and asked.centre is None:
        raise StudyError("where is the study? give --sites FILE or --centre LONGITUDE,LATITUDE")
    if asked.size is not None and min(asked.size) <= 0:
        raise StudyError("--size: expected two lengths in metres")


def _refuse_to_overwrite(root: Path, force: bool) -> None:
    if root.exists() and not root.is_dir():
        raise StudyError(f"{root}: a file of this name is there")
    if not root.parent.is_dir():
        raise StudyError(f"{root.parent}: there is no such folder")
    if root.is_dir() and any(root.iterdir()) and not force:
        raise StudyError(
            f"{root}: the folder is not empty; choose another name, or --force to replace the maps "
            "and the case of a study"
        )


def _move(made: Path, root: Path) -> None:
    """Into place; what else stands in the folder, results above all, stays."""
    if root.is_dir() and not any(root.iterdir()):
        root.rmdir()
    if not root.exists():
        made.rename(root)
        return
    for path in sorted(p for p in made.rglob("*") if p.is_file()):
        target = root / path.relative_to(made)
        target.parent.mkdir(parents=True, exist_ok=True)
        path.replace(target)


def _make(study: Study, name: str, asked: NewStudy, say: Say, picture: Path) -> None:
    sites: list[StudySite] = []
    if asked.sites is not None:
        sites = read_sites(asked.sites, asked.sites_crs, asked.decimal, asked.sites_layer)
    centre = Centre(*asked.centre) if asked.centre is not None else centre_of(sites)
    sites = [replace(s, longitude=float(centre.near(np.asarray(s.longitude)))) for s in sites]
    dem = open_rasters(asked.dem, centre, asked.dem_unit)
    cover = open_rasters(asked.landcover, centre) if asked.landcover else []
    for raster in dem:
        say(f"elevations in {raster.unit_from}: {', '.join(raster.names)}")
    _refuse_sites_outside(dem, sites, centre)

    reach = min(covered_reach(r, centre, _FAR) for r in (dem, cover) if r)
    margin, keys = _first_keys(asked, dem, sites, centre, reach)
    if asked.size is None and margin < MARGIN:
        say(
            f"study area: the sites and {margin:.0f} m round them; the rasters reach {reach:.0f} m "
            f"from the middle, which is too little for {MARGIN:.0f} m"
        )
    extent = extent_of(keys)
    grid = _grid(dem, centre, extent.reach + 2 * keys.MIN_DXY, keys.MIN_DXY / 2)
    values = _elevation(dem, grid, centre, asked, say, picture)
    rough = _roughness(asked, cover, grid, centre, say)

    high, low = _relief(values, grid, centre, extent.reach)
    largest_z0 = float(rough.z0.max())
    keys = replace(
        keys,
        MIN_DZ=first_layer(asked.height, largest_z0),
        top=float(np.ceil(top_of(high, low) / 10) * 10),
    )
    _warn_of_roughness(keys, largest_z0, say)

    study.maps.mkdir()
    files = ", ".join(Path(name).name for raster in dem for name in raster.names)
    write_map(study.maps / "elevation.map", grid, values, "%.2f", [f"metres, from {files}"])
    write_map(study.maps / "roughness.map", grid, rough.z0, "%.6g", [_roughness_remark(asked)])
    if asked.canopy:
        _trees(study, asked, rough, grid, centre, say)
    text = CaseText(
        name=name,
        centre=centre,
        height=asked.height,
        directions=asked.directions,
        sectors=asked.sectors,
        sites=tuple(sites),
        margin=margin,
        raster_step=dem[0].step(centre),
        relief=high - low,
        largest_z0=largest_z0,
        cells=asked.cells,
        max_z=keys.top if 3 * (high - low) > 1000 else None,
        canopy=asked.canopy,
        sized=asked.size is not None,
    )
    write_whole(study.case, [case_text(text, keys)])
    _write_provenance(study, name, asked, rough.table, dem)
    _tell_mesh(keys, asked, say)


def _refuse_sites_outside(
    dem: Sequence[Raster], sites: Sequence[StudySite], centre: Centre
) -> None:
    outside = []
    for site in sites:
        lon, lat = np.array([site.longitude]), np.array([site.latitude])
        held = False
        for raster in dem:
            column, row = raster.pixels(lon, lat, centre)
            inside = 0 <= column[0] <= raster.size[0] - 1 and 0 <= row[0] <= raster.size[1] - 1
            held = held or bool(inside)
        if not held:
            outside.append(f"{site.label} ({site.latitude:.5f} N, {site.longitude:.5f} E)")
    if outside:
        raise StudyError(
            f"outside the elevations: {', '.join(outside[:10])}"
            + (f" and {len(outside) - 10} more" if len(outside) > 10 else "")
            + "; look at the order of longitude and latitude and at --sites-crs, or name the tiles "
            "that hold them"
        )


def _first_keys(
    asked: NewStudy,
    dem: Sequence[Raster],
    sites: Sequence[StudySite],
    centre: Centre,
    reach: float,
) -> tuple[float, MeshKeys]:
    """Margin of the study area and keys of the mesh, before the maps are made: the first layer and
    the top are those of a coarse look at the ground."""
    east, north = centre.east_north(
        np.array([s.longitude for s in sites]), np.array([s.latitude for s in sites])
    )
    wide, tall = 2 * float(np.abs(east).max(initial=0)), 2 * float(np.abs(north).max(initial=0))
    farthest = float(np.hypot(east, north).max(initial=0))
    high, low = _coarse_relief(dem, centre, reach)
    margin = MARGIN
    while True:
        size = asked.size or (_round_up(wide + 2 * margin), _round_up(tall + 2 * margin))
        if asked.size and (wide > size[0] or tall > size[1]):
            raise StudyError(
                f"--size {size[0]:g},{size[1]:g}: the sites lie {wide:.0f} m by {tall:.0f} m about "
                "their middle, which is more"
            )
        radius = np.hypot(*size) / 2
        fine = farthest + max(300.0, 3 * asked.height) if sites else radius / 3
        keys = MeshKeys(
            WE_LENGTH=size[0],
            NS_LENGTH=size[1],
            MIN_DXY=0.0,
            MAX_DXY=0.0,
            MIN_DXY_RAD=float(np.ceil(min(fine, radius) / 10) * 10),
            MESH_HRATIO=1.12,
            MIN_DZ=first_layer(asked.height, 0.0),
            MESH_VRATIO=1.15,
            CONSTANT_DZ_HEIGHT=max(100.0, float(round(1.5 * asked.height))),
            top=top_of(high, low),
            ground=low,
        )
        keys = finest_spacing(keys, asked.cells, dem[0].step(centre))
        needed = extent_of(keys).reach + 3 * keys.MIN_DXY
        if needed <= reach:
            return margin, keys
        if asked.size or margin <= LEAST_MARGIN:
            largest = keys.diameter * reach / needed / np.sqrt(2)
            raise StudyError(
                f"the rasters are too small: for a study area of {size[0]:.0f} m x {size[1]:.0f} m "
                f"they must reach {needed:.0f} m from {centre.latitude:.5f} N, "
                f"{centre.longitude:.5f} E to each side, and reach {reach:.0f} m; they allow some "
                f"{largest:.0f} m squared. Name further tiles, or ask for less by --size"
            )
        margin = max(LEAST_MARGIN, 0.9 * margin)


def _round_up(length: float) -> float:
    return float(np.ceil(length / 10) * 10)


def _coarse_relief(dem: Sequence[Raster], centre: Centre, reach: float) -> tuple[float, float]:
    reach = min(reach, 15_000.0)
    if reach < 100:
        return 0.0, 0.0  # what is to be said of it is said where the area is weighed
    grid = grid_of_step(centre, 0.99 * reach, reach / 60)
    found = elevation_on_map(dem, grid, centre, rest=None).values
    return float(np.nanmax(found)), float(np.nanmin(found))


def _grid(dem: Sequence[Raster], centre: Centre, reach: float, step: float) -> MapGrid:
    grid = grid_of_step(centre, reach, step)
    if dem[0].is_own_lattice(centre, reach) and not wants_means(dem, grid, centre):
        return grid_of_points(centre, reach, *dem[0].lattice())
    return grid


def _elevation(
    dem: Sequence[Raster],
    grid: MapGrid,
    centre: Centre,
    asked: NewStudy,
    say: Say,
    picture: Path,
) -> Array:
    found = elevation_on_map(dem, grid, centre, asked.sea_level)
    steps = grid.steps(centre)
    what = f"{grid.n_lon} x {grid.n_lat} points, {steps[0]:.2f} m x {steps[1]:.2f} m apart"
    if found.means:
        how = f"means over its cells, as the raster's step is {dem[0].step(centre):.2f} m"
    elif grid.n_lon and dem[0].is_own_lattice(centre, 1000.0):
        how = "the raster's own points"
    else:
        how = f"values at points, the raster's step is {dem[0].step(centre):.2f} m"
    say(f"map: {what}; {how}")
    if found.holes:
        say(f"{found.holes} small holes filled, {found.filled} points of the map")
    if not np.isfinite(found.values).all():
        draw_no_data(picture, found.values, grid, centre)
        raise StudyError(
            f"{', '.join(dem[0].names)}: {no_data_report(found.values, grid, centre)}; {picture} "
            "shows where. Name tiles that hold them, or give the height of the sea with --sea-level"
        )
    if np.ptp(found.values) == 0:
        raise StudyError(
            f"{', '.join(dem[0].names)}: all points of the map are at {found.values.flat[0]:g} m; "
            "this is water, or an empty raster, and no terrain"
        )
    return found.values


def _roughness(
    asked: NewStudy, cover: Sequence[Raster], grid: MapGrid, centre: Centre, say: Say
) -> _Roughness:
    if asked.roughness:
        return _given_roughness(asked.roughness, grid, centre, say)
    path = table_of(asked.table) if asked.table else choose_table(cover, grid, centre)
    classes = read_table(path)
    found = cover_on_map(cover, grid, centre, classes, asked.canopy)
    say(
        f"roughness: table {path.stem}, {len(found.counts)} classes, {found.z0.min():.4g} to "
        f"{found.z0.max():.4g} m"
    )
    return _Roughness(found.z0, path, found.trees, found.tree_height)


def _given_roughness(given: str, grid: MapGrid, centre: Centre, say: Say) -> _Roughness:
    try:
        length = float(given)
    except ValueError:
        rasters = open_rasters([Path(given)], centre)
        z0 = lengths_on_map(rasters, grid, centre)
        say(f"roughness: lengths of {given}, {z0.min():.4g} to {z0.max():.4g} m")
        return _Roughness(z0)
    if not 0 < length < LARGEST_Z0:
        raise StudyError(f"--roughness {given}: expected above 0 and below {LARGEST_Z0:g} m")
    say(f"roughness: {length:g} m everywhere")
    return _Roughness(np.full((grid.n_lat, grid.n_lon), length))


def _roughness_remark(asked: NewStudy) -> str:
    names = ", ".join(path.name for path in asked.landcover) or str(asked.roughness)
    return f"roughness length in metres, from {names}"


def _relief(values: Array, grid: MapGrid, centre: Centre, reach: float) -> tuple[float, float]:
    east, north = centre.east_north(*np.meshgrid(grid.longitudes(), grid.latitudes()))
    inside = np.hypot(east, north) <= reach
    return float(values[inside].max()), float(values[inside].min())


def _warn_of_roughness(keys: MeshKeys, largest_z0: float, say: Say) -> None:
    if keys.MIN_DZ < 4 * largest_z0:
        say(
            f"warning: the first layer of {keys.MIN_DZ:g} m is too low for roughness lengths of "
            f"{largest_z0:.2g} m; raise --height, or take forests as drag with --canopy"
        )


def _trees(
    study: Study, asked: NewStudy, rough: _Roughness, grid: MapGrid, centre: Centre, say: Say
) -> None:
    assert rough.trees is not None and rough.tree_height is not None
    height = rough.tree_height
    if asked.canopy_height is not None:
        rasters = open_rasters([asked.canopy_height], centre)
        height = np.nan_to_num(elevation_on_map(rasters, grid, centre, rest=0.0).values)
    count = write_trees(study.maps / "trees.shp", grid, rough.trees, height, rough.z0)
    say(f"forests: {count} polygons of trees up to {height[rough.trees >= 0.5].max():.1f} m")


def _write_provenance(
    study: Study, name: str, asked: NewStudy, table: Path | None, dem: Sequence[Raster]
) -> None:
    files = [("elevation", path) for path in asked.dem]
    files += [("land cover", path) for path in asked.landcover]
    for role, path in (
        ("table", table),
        ("sites", asked.sites),
        ("canopy height", asked.canopy_height),
        ("roughness", Path(asked.roughness) if asked.roughness else None),
    ):
        if path is not None:
            files.append((role, path))
    options = {
        key: [str(each) for each in value] if isinstance(value, tuple) else value
        for key, value in vars(asked).items()
        if value is not None and key not in ("command", "directions")
    }
    options = {k: str(v) if isinstance(v, Path) else v for k, v in options.items()}
    tables = {
        "study": {
            "name": name,
            "made": datetime.datetime.now().astimezone().isoformat(timespec="seconds"),
            "command": asked.command,
            "height": asked.height,
            "directions": list(asked.directions),
            "elevation_unit": dem[0].unit_from,
        },
        "options": options,
        "versions": versions(),
        "input": inputs(files),
    }
    head = [
        "Where this study came from. `height` is the height above ground that it is about [m];",
        "torvex.tin beside this file is the case, and what stands there holds.",
    ]
    write_whole(study.provenance, [toml_text(head, tables)])


def _tell_mesh(keys: MeshKeys, asked: NewStudy, say: Say) -> None:
    extent = extent_of(keys)
    say(
        f"mesh: about {extent.ni} x {extent.nj} x {extent.nk} = {extent.cells} cells, "
        f"{keys.MIN_DXY:g} m to {keys.MAX_DXY:g} m wide, first layer {keys.MIN_DZ:g} m; "
        f"{len(asked.directions)} wind directions"
    )
