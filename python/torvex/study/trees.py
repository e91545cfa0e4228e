"""The forests of a land cover as polygons, for cells with drag in place of a roughness."""

from __future__ import annotations

from pathlib import Path

import numpy as np

from torvex.arrays import Array
from torvex.packages import need
from torvex.study.errors import StudyError
from torvex.study.map_grid import MapGrid

SHARE = 0.5  # of a cell of the map under trees, from which on it counts as forest
CLASS = 2.5  # heights of trees are told in steps of so much [m]
LEAST = 2.0  # what is lower is no canopy [m]


def write_trees(path: Path, grid: MapGrid, share: Array, height: Array, floor_z0: Array) -> int:
    """Polygons with the columns H, the height of the trees, and Z0, the roughness of the ground
    under them [m]; returns how many. Arrays have rows going north."""
    gdal, ogr, osr = (need(f"osgeo.{name}") for name in ("gdal", "ogr", "osr"))
    gdal.UseExceptions()
    classes = np.where(share >= SHARE, np.round(height / CLASS), 0).astype(np.int32)
    classes[classes * CLASS < LEAST] = 0
    if not classes.any():
        raise StudyError("--canopy: no forest is in the land cover; leave the option out")
    d_lon, d_lat = grid.spacing
    west, south = grid.south_west
    memory = gdal.GetDriverByName("MEM").Create("", grid.n_lon, grid.n_lat, 1, gdal.GDT_Int32)
    memory.SetGeoTransform((west - d_lon / 2, d_lon, 0, south - d_lat / 2, 0, d_lat))
    band = memory.GetRasterBand(1)
    band.WriteArray(classes)
    wgs84 = osr.SpatialReference()
    wgs84.ImportFromEPSG(4326)
    driver = ogr.GetDriverByName("ESRI Shapefile")
    if path.exists():
        driver.DeleteDataSource(str(path))
    shapes = driver.CreateDataSource(str(path))
    layer = shapes.CreateLayer(path.stem, wgs84, ogr.wkbPolygon)
    for name in ("CLASS", "H", "Z0"):
        layer.CreateField(ogr.FieldDefn(name, ogr.OFTInteger if name == "CLASS" else ogr.OFTReal))
    gdal.Polygonize(band, band, layer, 0)  # the band is its own mask: 0 is no forest
    floor = float(np.median(floor_z0[classes > 0]))
    count = 0
    for feature in layer:
        feature.SetField("H", feature.GetField("CLASS") * CLASS)
        feature.SetField("Z0", floor)
        layer.SetFeature(feature)
        count += 1
    shapes.FlushCache()
    return count
