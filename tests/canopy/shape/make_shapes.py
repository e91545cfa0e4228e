#!/usr/bin/python3
"""Writes the shapefiles of data/ with GDAL (packages gdal-bin, python3-gdal), so that the reader is
tried on files of another hand:

    tests/canopy/shape/make_shapes.py tests/canopy/shape/data
"""

import sys
from pathlib import Path

from osgeo import gdal, ogr, osr

ogr.UseExceptions()


def layer_of(directory, name, kind, encoding="UTF-8", system=None):
    source = ogr.GetDriverByName("ESRI Shapefile").CreateDataSource(str(directory / f"{name}.shp"))
    return source, source.CreateLayer(name, system, kind, options=[f"ENCODING={encoding}"])


def add(layer, wkt, **fields):
    feature = ogr.Feature(layer.GetLayerDefn())
    for field, value in fields.items():
        if value is None:
            feature.SetFieldNull(field)
        else:
            feature.SetField(field, value)
    if wkt is not None:
        feature.SetGeometry(ogr.CreateGeometryFromWkt(wkt))
    layer.CreateFeature(feature)


def columns(layer, **kinds):
    for field, kind in kinds.items():
        definition = ogr.FieldDefn(field, kind)
        if kind == ogr.OFTReal:
            definition.SetWidth(16)
            definition.SetPrecision(6)
        layer.CreateField(definition)


def houses(directory):
    """Ring of a house, two houses in one entity, a house with a court, a null shape, a deleted row."""
    system = osr.SpatialReference()
    system.ImportFromEPSG(2451)
    source, layer = layer_of(directory, "houses", ogr.wkbPolygon, "UTF-8", system)
    columns(layer, NAME=ogr.OFTString, HEIGHT=ogr.OFTReal, DENSITY=ogr.OFTReal, LEN_CM=ogr.OFTReal,
            CF=ogr.OFTReal, Z0_CM=ogr.OFTReal, USE=ogr.OFTInteger)
    add(layer, "POLYGON((0 0,0 20,20 20,20 0,0 0))", NAME="Häuschen", HEIGHT=10.0, DENSITY=0.9,
        LEN_CM=1500.0, CF=1.1, Z0_CM=5.0, USE=7)
    add(layer, "MULTIPOLYGON(((30 0,30 10,40 10,40 0,30 0)),((50 0,50 10,60 10,60 0,50 0)))",
        NAME="twins", HEIGHT=6.5, DENSITY=None, USE=7)
    add(layer, "POLYGON((0 40,0 80,40 80,40 40,0 40),(10 50,30 50,30 70,10 70,10 50))",
        NAME="court", HEIGHT=-9999.0, USE=8)
    add(layer, None, NAME="nowhere", HEIGHT=3.0)
    add(layer, "POLYGON((70 0,70 5,75 5,75 0,70 0))", NAME="gone", HEIGHT=4.0)
    add(layer, "POLYGON((80 0,80 5,85 5,85 0,80 0))", NAME="unknown", HEIGHT=None)
    source = layer = None
    # A row that is marked as deleted and stays in the file.
    source = gdal.OpenEx(str(directory / "houses.shp"), gdal.OF_UPDATE,
                         open_options=["AUTO_REPACK=NO"])
    source.GetLayer(0).DeleteFeature(4)
    source = None


def simple(directory, name, kind, wkt, encoding="UTF-8"):
    source, layer = layer_of(directory, name, kind, encoding)
    columns(layer, NAME=ogr.OFTString, H=ogr.OFTReal)
    add(layer, wkt, NAME="Gehölz", H=12.0)
    source = layer = None


def main():
    directory = Path(sys.argv[1])
    directory.mkdir(exist_ok=True)
    houses(directory)
    simple(directory, "wood_z", ogr.wkbPolygon25D, "POLYGON Z((0 0 5,0 3 5,4 0 5,0 0 5))")
    simple(directory, "wood_m", ogr.wkbPolygonM, "POLYGON M((0 0 5,0 3 5,4 0 5,0 0 5))",
           "ISO-8859-1")
    simple(directory, "trees", ogr.wkbPoint, "POINT(1 2)")
    for side_file in [*directory.glob("*.cpg"), *directory.glob("w*.prj"), *directory.glob("t*.prj")]:
        side_file.unlink()


main()
