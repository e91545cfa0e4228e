#!/usr/bin/env python3
"""Turns a text map into a GeoTIFF, to be looked at in a GIS or to try torvex-study with.

    /usr/bin/python3 python/examples/map_to_raster.py examples/askervein/elevation.map dem.tif

It needs GDAL (Debian's python3-gdal). The raster is in longitude and latitude of WGS 84, its pixels
stand round the points of the map.
"""

import argparse
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
import torvex  # noqa: E402
from torvex.packages import need  # noqa: E402


def write_raster(found: torvex.TextMap, path: Path) -> None:
    gdal, osr = need("osgeo.gdal"), need("osgeo.osr")
    gdal.UseExceptions()
    columns, rows = found.values.shape
    options = ["COMPRESS=DEFLATE", "PREDICTOR=3"]
    dataset = gdal.GetDriverByName("GTiff").Create(
        str(path), columns, rows, 1, gdal.GDT_Float32, options=options
    )
    d_lon = (found.longitude[-1] - found.longitude[0]) / (columns - 1)
    d_lat = (found.latitude[-1] - found.latitude[0]) / (rows - 1)
    west, north = found.longitude[0] - d_lon / 2, found.latitude[-1] + d_lat / 2
    dataset.SetGeoTransform((west, d_lon, 0.0, north, 0.0, -d_lat))
    wgs84 = osr.SpatialReference()
    wgs84.ImportFromEPSG(4326)
    dataset.SetProjection(wgs84.ExportToWkt())
    band = dataset.GetRasterBand(1)
    band.SetUnitType("m")
    band.WriteArray(found.values.T[::-1])
    dataset.FlushCache()


def main() -> None:
    parser = argparse.ArgumentParser(description="Turns a text map into a GeoTIFF.")
    parser.add_argument("map", type=Path)
    parser.add_argument("raster", type=Path)
    given = parser.parse_args()
    try:
        write_raster(torvex.read_map(given.map), given.raster)
    except (OSError, ValueError, ImportError, RuntimeError) as problem:
        sys.exit(str(problem))


if __name__ == "__main__":
    main()
