"""The case file of a new study, with a reason behind each key that was chosen."""

from __future__ import annotations

from dataclasses import dataclass
from pathlib import Path

from torvex.packages import need
from torvex.study.map_grid import Centre, degrees_minutes_seconds
from torvex.study.mesh_keys import MeshKeys
from torvex.study.sites import StudySite

# Whether a new case takes the accelerated iteration, and the equilibrium surface layer.
ACCELERATED = True
SURFACE_LAYER = True

MAXIT = 1000
MONITOR_STEP = 2 if ACCELERATED else 10
_TEMPLATES = Path(__file__).parent / "templates"


@dataclass(frozen=True)
class CaseText:
    """What the template of a case is filled with, beside the mesh."""

    name: str
    centre: Centre
    height: float  # of interest, above ground [m]
    directions: tuple[float, ...]
    sectors: bool  # equal ones from 0 degrees
    sites: tuple[StudySite, ...]
    margin: float  # of the study area round the sites [m]
    raster_step: float
    relief: float  # of the ground within the domain [m]
    largest_z0: float
    cells: int
    max_z: float | None
    canopy: bool
    sized: bool  # the study area was asked for


def _num(value: float) -> str:
    """A real of a case file, without digits that say nothing."""
    text = f"{value:.4f}".rstrip("0")
    return text + "0" if text.endswith(".") else text


def _label(label: str) -> str:
    """A label as a text in quotes: ASCII, with quotes doubled."""
    plain = label.replace("\n", " ").replace("'", "''")
    return plain.encode("ascii", "replace").decode()


def case_text(given: CaseText, keys: MeshKeys) -> str:
    jinja2 = need("jinja2")
    loader = jinja2.FileSystemLoader(_TEMPLATES)
    environment = jinja2.Environment(
        loader=loader, trim_blocks=True, lstrip_blocks=True, undefined=jinja2.StrictUndefined
    )
    environment.filters["num"] = _num
    text: str = environment.get_template("torvex.tin.j2").render(
        name=_label(given.name),
        project=_label(given.name)[:20],
        num=_num,
        keys=keys,
        cent_lon=degrees_minutes_seconds(given.centre.longitude),
        cent_lat=degrees_minutes_seconds(given.centre.latitude),
        directions=given.directions,
        sectors=given.sectors,
        max_z=given.max_z,
        maxit=MAXIT,
        monitor_step=MONITOR_STEP,
        canopy=given.canopy,
        accelerated=ACCELERATED,
        surface_layer=SURFACE_LAYER,
        monitor=_monitor(given, keys),
        sites=[
            {
                "label": _label(site.label),
                "lon": degrees_minutes_seconds(site.longitude),
                "lat": degrees_minutes_seconds(site.latitude),
            }
            for site in given.sites
        ],
        **_reasons(given, keys),
    )
    return "".join(_aligned(line) + "\n" for line in text.splitlines())


def _aligned(line: str) -> str:
    """Reasons one under the other."""
    key, mark, reason = line.partition(" ! ")
    return f"{key.rstrip():<30} ! {reason}" if mark else line


def _monitor(given: CaseText, keys: MeshKeys) -> dict[str, object] | None:
    """The site nearest to the centre; none where it stands on the rim of the study area."""
    if not given.sites:
        return None

    def distance(site: StudySite) -> float:
        east, north = given.centre.east_north(site.longitude, site.latitude)  # type: ignore
        return float(east**2 + north**2)

    site = min(given.sites, key=distance)
    return {
        "why": f"{_label(site.label)}, the site nearest to the centre, at the height of interest",
        "lon": degrees_minutes_seconds(site.longitude),
        "lat": degrees_minutes_seconds(site.latitude),
        "height": min(given.height, keys.CONSTANT_DZ_HEIGHT),
    }


def _reasons(given: CaseText, keys: MeshKeys) -> dict[str, str]:
    fine = f"the finest that {given.cells} cells allow"
    if keys.MIN_DXY <= given.raster_step * 1.05:
        fine = f"as fine as the raster, whose step is {given.raster_step:.1f} m"
    if given.sized:
        area = "study area as asked for"
    else:
        area = f"the sites and {given.margin:.0f} m round them"
    if keys.MIN_DZ > 1.0001 * given.height / 20:
        layer = f"first layer: ten times the largest roughness length, {given.largest_z0:.2g} m"
        if keys.MIN_DZ < 9.99 * given.largest_z0:
            layer = f"first layer: a quarter of the {given.height:g} m of interest"
    else:
        layer = f"first layer: a twentieth of the {given.height:g} m of interest"
    if given.max_z is None:
        top = f"1000 m above the highest ground: the relief is {given.relief:.0f} m only"
    else:
        top = f"three times the relief of {given.relief:.0f} m above the highest ground"
    return {
        "centre_why": "middle of the sites" if given.sites else "centre as asked for",
        "area_why": area,
        "dxy_why": fine,
        "rad_why": "holds all sites" if given.sites else "a third of the study circle",
        "dz_why": layer,
        "top_why": top,
    }
