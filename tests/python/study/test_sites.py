"""Points of tables and of vector files."""

import tempfile
import unittest
from pathlib import Path

import numpy as np

from study.made_rasters import needs_study, to_crs
from torvex.study.errors import StudyError


@needs_study
class Sites(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def table(self, text, name="sites.csv"):
        path = self.folder / name
        path.write_text(text)
        return path

    def read(self, text, **options):
        from torvex.study.sites import read_sites

        return read_sites(self.table(text), **options)

    def refuse(self, pattern, text, **options):
        with self.assertRaisesRegex(StudyError, pattern):
            self.read(text, **options)

    def test_longitude_and_latitude_are_kept(self):
        sites = self.read("name,lon,lat,remark\nA,-113.021893,43.396299,x\n\nB,10.5,-47,y\n")
        self.assertEqual([site.label for site in sites], ["A", "B"])
        self.assertAlmostEqual(sites[0].longitude, -113.021893, places=12)
        self.assertAlmostEqual(sites[1].latitude, -47, places=12)

    def test_separators_and_decimals_of_other_countries(self):
        text = "name;lon;lat\nA;10,5;47,25\n"
        site = self.read(text, decimal=",")[0]
        self.assertEqual((site.longitude, site.latitude), (10.5, 47.25))
        self.refuse("line 2: lon is '10,5', with a comma as decimal sign", text)
        self.refuse("line 2 has 5 fields, the header 3", "name,lon,lat\nA,10,5,47,25\n")

    def test_plane_coordinates_need_their_system(self):
        x, y = to_crs(32632, 10.9, 47.0)
        text = f"label,x,y\nA,{x},{y}\n"
        self.refuse("--sites-crs", text)
        self.refuse("PROJ knows no such reference system", text, crs="EPSG:0")
        site = self.read(text, crs="EPSG:32632")[0]
        np.testing.assert_allclose((site.longitude, site.latitude), (10.9, 47.0), atol=1e-9)

    def test_what_is_no_table_of_sites(self):
        self.refuse("the table is empty", "\n")
        self.refuse("no site is in it", "name,lon,lat\n")
        self.refuse("expected longitude and latitude", "a,b\n1,2\n")
        self.refuse("line 3: lat is 'north', expected a number", "lon,lat\n1,2\n3,north\n")
        self.refuse("line 2: lon is 'nan', expected a number", "lon,lat\nnan,2\n")
        self.refuse("is no place of", "lon,lat\n10,4700000\n")
        self.refuse("line 2 has no label", "name,lon,lat\n,1,2\n")

    def test_twins_are_named(self):
        self.refuse("line 4 and line 2 have one label, 'A'", "name,lon,lat\nA,1,2\nB,2,2\nA,3,2\n")
        text = "name,lon,lat\nA,10,47\nB,11,47\nC,10.000001,47\n"
        self.refuse(r"line 2 \(A\) and line 4 \(C\) are one place", text)
        long = "a label of more than twenty "
        self.refuse("one label", f"name,lon,lat\n{long}1,1,2\n{long}2,2,2\n")

    def test_points_of_a_geopackage_in_another_system(self):
        from osgeo import ogr, osr

        from torvex.study.sites import read_sites

        for driver, name in (("GPKG", "t.gpkg"), ("ESRI Shapefile", "t.shp")):
            path = self.folder / name
            crs = osr.SpatialReference()
            crs.ImportFromEPSG(32632)
            dataset = ogr.GetDriverByName(driver).CreateDataSource(str(path))
            layer = dataset.CreateLayer("t", crs, ogr.wkbPoint)
            layer.CreateField(ogr.FieldDefn("Name", ogr.OFTString))
            for label, lon, lat in (("WT1", 10.9, 47.0), ("WT2", 10.91, 47.01)):
                feature = ogr.Feature(layer.GetLayerDefn())
                feature["Name"] = label
                x, y = to_crs(32632, lon, lat)
                feature.SetGeometry(ogr.CreateGeometryFromWkt(f"POINT ({x} {y})"))
                layer.CreateFeature(feature)
            del feature, layer, dataset
            sites = read_sites(path)
            self.assertEqual([site.label for site in sites], ["WT1", "WT2"])
            np.testing.assert_allclose(
                [(s.longitude, s.latitude) for s in sites], [(10.9, 47), (10.91, 47.01)], atol=1e-9
            )
        with self.assertRaisesRegex(StudyError, "no points that GDAL can read"):
            read_sites(self.table("nothing", "t.gml"))

    def test_the_centre_of_a_group_across_the_antimeridian(self):
        from torvex.study.sites import centre_of

        centre = centre_of(self.read("lon,lat\n179.99,-16.5\n-179.97,-16.4\n"))
        self.assertAlmostEqual(centre.longitude, -179.99, places=4)
        self.assertAlmostEqual(centre.latitude, -16.45, places=4)


if __name__ == "__main__":
    unittest.main()
