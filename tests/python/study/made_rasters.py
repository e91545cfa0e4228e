"""Rasters by formula, in any reference system, for the tests of a study."""

from __future__ import annotations

import importlib.util
import unittest
from pathlib import Path

import numpy as np

STUDY_PACKAGES = ("osgeo", "pyproj", "pandas", "scipy", "click", "jinja2", "rich", "matplotlib")


def needs_study(test_case):
    """Skips, with a line that names them, where packages of a study are missing."""
    missing = [name for name in STUDY_PACKAGES if importlib.util.find_spec(name) is None]
    return unittest.skipIf(missing, f"not installed: {', '.join(missing)}")(test_case)


def geotiff(
    path,
    values,
    epsg,
    west,
    north,
    step,
    *,
    kind="Float32",
    nodata=None,
    unit="",
    scale=None,
    offset=None,
    rotation=0.0,
    options=(),
):
    """values[0] is the northern row (the southern one where step[1] < 0); step: columns, rows."""
    from osgeo import gdal, osr

    gdal.UseExceptions()
    values = np.asarray(values)
    dataset = gdal.GetDriverByName("GTiff").Create(
        str(path),
        values.shape[1],
        values.shape[0],
        1,
        getattr(gdal, f"GDT_{kind}"),
        options=list(options),
    )
    c, s = np.cos(np.radians(rotation)), np.sin(np.radians(rotation))
    dx, dy = step
    dataset.SetGeoTransform((west, dx * c, dy * s, north, dx * s, -dy * c))
    if epsg:
        crs = osr.SpatialReference()
        crs.SetFromUserInput(epsg if isinstance(epsg, str) else f"EPSG:{epsg}")
        dataset.SetProjection(crs.ExportToWkt())
    band = dataset.GetRasterBand(1)
    if nodata is not None:
        band.SetNoDataValue(nodata)
    if unit:
        band.SetUnitType(unit)
    if scale is not None:
        band.SetScale(scale)
    if offset is not None:
        band.SetOffset(offset)
    band.WriteArray(values)
    dataset.FlushCache()
    return Path(path)


def positions(shape, west, north, step, rotation=0.0):
    """Easting and northing of the centres of pixels."""
    c, s = np.cos(np.radians(rotation)), np.sin(np.radians(rotation))
    column, row = np.meshgrid(np.arange(shape[1]) + 0.5, np.arange(shape[0]) + 0.5)
    dx, dy = step
    return west + dx * c * column + dy * s * row, north + dx * s * column - dy * c * row


def to_crs(epsg, longitude, latitude):
    import pyproj

    back = pyproj.Transformer.from_crs("EPSG:4326", f"EPSG:{epsg}", always_xy=True)
    return back.transform(longitude, latitude)
