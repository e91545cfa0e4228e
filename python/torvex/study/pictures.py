"""Pictures of a study before it is run."""

from __future__ import annotations

from pathlib import Path
from typing import Any

import numpy as np

from torvex.arrays import Array
from torvex.packages import need
from torvex.study.map_grid import Centre, MapGrid


def _pyplot() -> Any:
    need("matplotlib").use("Agg")
    return need("matplotlib.pyplot")


def edges(grid: MapGrid, centre: Centre) -> tuple[float, float, float, float]:
    """West, east, south and north rim of a map [m], half a step outside its points."""
    lon = grid.longitudes(-0.5, 2)[0], grid.longitudes(grid.n_lon - 0.5, 1)[0]
    lat = grid.latitudes(-0.5, 1)[0], grid.latitudes(grid.n_lat - 0.5, 1)[0]
    east, north = centre.east_north(np.array(lon), np.array(lat))
    return float(east[0]), float(east[1]), float(north[0]), float(north[1])


def draw_no_data(path: Path, values: Array, grid: MapGrid, centre: Centre) -> None:
    """Where a map has no data: red over the heights."""
    plt = _pyplot()
    figure, axes = plt.subplots(figsize=(7, 6), layout="constrained")
    extent = edges(grid, centre)
    shown = axes.imshow(values, origin="lower", extent=extent, cmap="Greys_r", aspect="equal")
    figure.colorbar(shown, ax=axes, label="elevation (m)")
    missing = np.where(np.isfinite(values), np.nan, 1.0)
    axes.imshow(missing, origin="lower", extent=extent, cmap="autumn", aspect="equal")
    axes.plot(0, 0, "+", color="tab:blue", markersize=12)
    axes.set(
        title="no data (red)", xlabel="east of the centre (m)", ylabel="north of the centre (m)"
    )
    figure.savefig(path, dpi=110)
    plt.close(figure)
