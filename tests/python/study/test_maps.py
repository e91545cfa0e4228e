"""Maps of a study against the surfaces that the rasters were made from."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import numpy as np

from study.made_rasters import geotiff, needs_study, positions, to_crs
from torvex.study.errors import StudyError
from torvex.study.map_grid import Centre, MapGrid, degrees_minutes_seconds
from torvex.study.map_grid import grid_of_points, grid_of_step

SLOPE = np.tan(np.radians(30))


class Angles(unittest.TestCase):
    def test_numbers_of_an_angle_carry_its_sign(self):
        self.assertEqual(degrees_minutes_seconds(-113.025), "-113, -1, -30.0000")
        self.assertEqual(degrees_minutes_seconds(43.4), "43, 24, 0.0000")
        self.assertEqual(degrees_minutes_seconds(-0.0001), "-0, -0, -0.3600")
        self.assertEqual(degrees_minutes_seconds(0.0), "0, 0, 0.0000")

    def test_seconds_that_round_to_sixty_are_carried(self):
        self.assertEqual(degrees_minutes_seconds(9.99999999999), "10, 0, 0.0000")

    def test_points_are_those_of_the_rounded_header(self):
        grid = MapGrid((-113, "-5.88333342"), (43, "20.79999994"), "0.016666667", "0.1", 3, 2)
        west = -113 + float(np.float32(-5.88333342)) / 60
        step = float(np.float32(0.016666667)) / 60
        np.testing.assert_allclose(
            grid.longitudes(), [west, west + step, west + 2 * step], rtol=0, atol=1e-13
        )

    def test_a_grid_by_step_has_the_centre_among_its_points_and_reaches_as_far_as_asked(self):
        centre = Centre(-113.025, 43.4)
        grid = grid_of_step(centre, 1000.0, 30.0)
        east, north = centre.east_north(grid.longitudes(), grid.latitudes())
        self.assertEqual(grid.n_lon, 69)  # 34 steps of 30 m are the first beyond 1000 m
        for at in east, north:
            self.assertLess(abs(at[34]), 0.01)
            np.testing.assert_allclose(np.diff(at), 30.0, atol=1e-3)


@needs_study
class Planes(unittest.TestCase):
    """A plane of 30 degrees, in the plane coordinates of its raster."""

    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def elevation(self, paths, centre, reach, step, **options):
        from torvex.study.raster import open_rasters
        from torvex.study.terrain import elevation_on_map

        rasters = open_rasters(paths, centre)
        grid = grid_of_step(centre, reach, step)
        return grid, elevation_on_map(rasters, grid, centre, **options)

    def plane(self, epsg, centre, step=25.0, half=6000.0, **options):
        """Path, and the height at any longitude and latitude."""
        e0, n0 = to_crs(epsg, centre.longitude, centre.latitude)
        shape = (round(2 * half / step), round(2 * half / step))
        corner = (e0 - half + 3.7, n0 + half - 8.9)
        up = options.pop("up", 0.6)  # which way the plane rises [rad]
        rotation = options.get("rotation", 0.0)
        dy = options.pop("dy", step)
        if dy < 0:
            corner = (corner[0], corner[1] - 2 * half)
        e, n = positions(shape, *corner, (step, dy), rotation)
        factor = options.pop("factor", 1.0)

        def height(e, n):
            return 4000 + SLOPE * (np.cos(up) * (e - e0) + np.sin(up) * (n - n0))

        path = geotiff(
            self.folder / f"{epsg}-{len(list(self.folder.iterdir()))}.tif",
            height(e, n) / factor,
            epsg,
            *corner,
            (step, dy),
            **options,
        )
        return path, lambda lon, lat: height(*to_crs(epsg, lon, lat))

    def assert_exact(self, grid, found, height, within=0.1):
        lon, lat = np.meshgrid(grid.longitudes(), grid.latitudes())
        self.assertLess(np.abs(found.values - height(lon, lat)).max(), within)

    def test_a_plane_is_met_to_a_decimetre_at_three_latitudes(self):
        for epsg, centre in (
            (32632, Centre(10.9, 47.0)),
            (32633, Centre(12.3, 60.0)),
            (32755, Centre(145.1, -33.0)),
        ):
            with self.subTest(epsg=epsg):
                path, height = self.plane(epsg, centre, kind="Float64")
                grid, found = self.elevation([path], centre, 4000.0, 25.0)
                self.assertFalse(found.means)
                self.assertEqual((found.holes, found.filled), (0, 0))
                self.assert_exact(grid, found, height, 0.01)

    def test_means_of_a_finer_raster_are_those_of_the_plane(self):
        centre = Centre(10.9, 47.0)
        path, height = self.plane(32632, centre, step=5.0, half=1500.0)
        grid, found = self.elevation([path], centre, 900.0, 40.0)
        self.assertTrue(found.means)
        self.assert_exact(grid, found, height)

    def test_means_take_out_what_is_finer_than_the_map(self):
        # A checkered pattern of +-10 m on pixels of 5 m has the mean 0 over cells of 40 m.
        centre = Centre(10.9, 47.0)
        e0, n0 = to_crs(32632, centre.longitude, centre.latitude)
        column, row = np.meshgrid(np.arange(600), np.arange(600))
        path = geotiff(
            self.folder / "checkered.tif",
            100 + 10.0 * (-1.0) ** (column + row),
            32632,
            e0 - 1500,
            n0 + 1500,
            (5, 5),
        )
        _, found = self.elevation([path], centre, 900.0, 40.0)
        self.assertLess(np.abs(found.values - 100).max(), 0.2)

    def test_curved_ground_is_met_as_well_as_pixels_allow(self):
        # Between pixels h apart a surface of second derivative f is missed by h^2 f/8 in each
        # direction.
        centre = Centre(10.9, 47.0)
        e0, n0 = to_crs(32632, centre.longitude, centre.latitude)
        corner = (e0 - 3000, n0 + 3000)
        e, n = positions((240, 240), *corner, (25.0, 25.0))
        radius = 500.0

        def height(e, n):
            return 300 * np.exp(-((e - e0) ** 2 + (n - n0) ** 2) / (2 * radius**2))

        path = geotiff(self.folder / "hill.tif", height(e, n), 32632, *corner, (25, 25))
        grid, found = self.elevation([path], centre, 2500.0, 25.0)
        lon, lat = np.meshgrid(grid.longitudes(), grid.latitudes())
        error = np.abs(found.values - height(*to_crs(32632, lon, lat)))
        steepest_change = 300 / radius**2
        self.assertLess(error.max(), 2 * 25.0**2 * steepest_change / 8 + 0.01)

    def test_feet_of_the_band_become_metres(self):
        centre = Centre(10.9, 47.0)
        path, height = self.plane(32632, centre, unit="ft", factor=0.3048)
        grid, found = self.elevation([path], centre, 1000.0, 25.0)
        self.assert_exact(grid, found, height)

    def test_feet_of_the_vertical_system_and_feet_in_the_plane(self):
        # New York Long Island in feet, heights in feet of the US survey.
        centre, foot = Centre(-73.9, 40.8), 1200 / 3937
        e0, n0 = to_crs(2263, centre.longitude, centre.latitude)
        step, count = 80.0, 200
        corner = (e0 - step * count / 2, n0 + step * count / 2)
        e, n = positions((count, count), *corner, (step, step))
        path = geotiff(
            self.folder / "feet.tif",
            3000 + SLOPE * (e - e0),
            "EPSG:2263+6360",
            *corner,
            (step, step),
            kind="Float64",
        )
        grid, found = self.elevation([path], centre, 1500.0, 25.0)
        self.assert_exact(
            grid,
            found,
            lambda lon, lat: foot * (3000 + SLOPE * (to_crs(2263, lon, lat)[0] - e0)),
        )

    def test_whole_numbers_with_scale_and_offset(self):
        centre = Centre(10.9, 47.0)
        e0, n0 = to_crs(32632, centre.longitude, centre.latitude)
        path = geotiff(
            self.folder / "scaled.tif",
            np.full((200, 200), 1234),
            32632,
            e0 - 2500,
            n0 + 2500,
            (25, 25),
            kind="Int16",
            scale=0.5,
            offset=-100.0,
        )
        _, found = self.elevation([path], centre, 1000.0, 25.0)
        np.testing.assert_allclose(found.values, 1234 * 0.5 - 100.0)

    def test_a_raster_turned_by_twenty_degrees(self):
        centre = Centre(10.9, 47.0)
        e0, n0 = to_crs(32632, centre.longitude, centre.latitude)
        shape, step = (400, 400), (25.0, 25.0)
        # The middle of the turned raster is to be the centre.
        e, n = positions(shape, 0.0, 0.0, step, 20.0)
        corner = (e0 - e.mean(), n0 - n.mean())
        e, n = positions(shape, *corner, step, 20.0)
        path = geotiff(
            self.folder / "turned.tif",
            4000 + SLOPE * (e - e0),
            32632,
            *corner,
            step,
            kind="Float64",
            rotation=20.0,
        )
        grid, found = self.elevation([path], centre, 2500.0, 25.0)
        self.assert_exact(
            grid, found, lambda lon, lat: 4000 + SLOPE * (to_crs(32632, lon, lat)[0] - e0)
        )

    def test_a_raster_upside_down(self):
        centre = Centre(10.9, 47.0)
        path, height = self.plane(32632, centre, dy=-25.0)
        grid, found = self.elevation([path], centre, 2500.0, 25.0)
        self.assert_exact(grid, found, height)

    def test_two_tiles_meet_without_a_seam(self):
        centre = Centre(10.9, 47.0)
        e0, n0 = to_crs(32632, centre.longitude, centre.latitude)
        paths = []
        for name, west in (("west", e0 - 3000), ("east", e0)):
            e, n = positions((240, 120), west, n0 + 3000, (25.0, 25.0))
            paths.append(
                geotiff(
                    self.folder / f"{name}.tif",
                    2000 + SLOPE * (e - e0),
                    32632,
                    west,
                    n0 + 3000,
                    (25.0, 25.0),
                )
            )
        grid, found = self.elevation(paths, centre, 2000.0, 25.0)
        self.assert_exact(
            grid, found, lambda lon, lat: 2000 + SLOPE * (to_crs(32632, lon, lat)[0] - e0)
        )

    def test_tiles_on_both_sides_of_the_antimeridian(self):
        centre = Centre(179.999, -16.5)
        step = 1 / 3600
        paths = []
        for name, west in (("before", 180 - 200 * step), ("behind", -180.0)):
            lon, lat = positions((300, 200), west, -16.5 + 150 * step, (step, step))
            east = (lon + 360) % 360 - 180
            paths.append(
                geotiff(
                    self.folder / f"{name}.tif",
                    500 + 30000 * east,
                    4326,
                    west,
                    -16.5 + 150 * step,
                    (step, step),
                    kind="Float64",
                )
            )
        grid, found = self.elevation(paths, centre, 2500.0, 40.0)
        self.assertGreater(grid.longitudes().max(), 180.0)
        lon, _ = np.meshgrid(grid.longitudes(), grid.latitudes())
        self.assertLess(np.abs(found.values - (500 + 30000 * (lon - 180))).max(), 0.01)

    def test_a_raster_in_degrees_keeps_its_own_points(self):
        from torvex.study.raster import open_rasters
        from torvex.study.terrain import elevation_on_map

        centre, step = Centre(-113.02512, 43.40034), 1 / 3600
        values = np.random.default_rng(4).uniform(1000, 2000, (400, 400))
        west, north = -113.08, 43.45
        path = geotiff(
            self.folder / "own.tif", values, 4326, west, north, (step, step), kind="Float64"
        )
        rasters = open_rasters([path], centre)
        self.assertTrue(rasters[0].is_own_lattice(centre, 2000.0))
        grid = grid_of_points(centre, 2000.0, *rasters[0].lattice())
        found = elevation_on_map(rasters, grid, centre).values
        column = round((grid.longitudes()[0] - west) / step - 0.5)
        row = round((north - grid.latitudes()[0]) / step - 0.5)
        expected = values[row - grid.n_lat + 1 : row + 1, column : column + grid.n_lon][::-1]
        np.testing.assert_array_equal(found, expected)
        east, north = centre.east_north(grid.longitudes(), grid.latitudes())
        for line in east, north:
            self.assertLessEqual(line[0], -2000.0)
            self.assertGreaterEqual(line[-1], 2000.0)

    def test_windows_of_a_huge_sparse_raster_are_read(self):
        centre = Centre(10.9, 47.0)
        e0, n0 = to_crs(32632, centre.longitude, centre.latitude)
        from osgeo import gdal, osr

        gdal.UseExceptions()
        path = self.folder / "huge.tif"
        options = ["TILED=YES", "SPARSE_OK=TRUE", "BIGTIFF=YES"]
        dataset = gdal.GetDriverByName("GTiff").Create(
            str(path), 60000, 60000, 1, gdal.GDT_Int16, options=options
        )
        dataset.SetGeoTransform((e0 - 300000, 10, 0, n0 + 300000, 0, -10))
        crs = osr.SpatialReference()
        crs.ImportFromEPSG(32632)
        dataset.SetProjection(crs.ExportToWkt())
        dataset.GetRasterBand(1).WriteArray(np.full((600, 600), 77, np.int16), 29700, 29700)
        dataset.FlushCache()
        dataset = None
        _, found = self.elevation([path], centre, 1500.0, 25.0)
        np.testing.assert_allclose(found.values, 77.0)


@needs_study
class Examples(unittest.TestCase):
    def test_a_map_becomes_a_raster_with_its_values_at_its_points(self):
        from torvex.study.map_file import write_map
        from torvex.study.raster import open_rasters, values_at

        script = Path(__file__).resolve().parents[3] / "python/examples/map_to_raster.py"
        with tempfile.TemporaryDirectory() as folder:
            text, raster = Path(folder) / "a.map", Path(folder) / "a.tif"
            centre = Centre(-7.375, 57.19)
            grid = grid_of_step(centre, 300.0, 50.0)
            values = np.random.default_rng(3).uniform(0, 100, (grid.n_lat, grid.n_lon))
            write_map(text, grid, values, "%.2f")
            for words, status in (((text, raster), 0), ((Path(folder) / "none.map", raster), 1)):
                done = subprocess.run([sys.executable, script, *words], capture_output=True)
                self.assertEqual(done.returncode, status, done.stderr)
            found = open_rasters([raster], centre)[0]
            lon, lat = np.meshgrid(grid.longitudes(), grid.latitudes())
            # The last lines may lie some millimetres outside the centres of the last pixels.
            inside = (slice(1, -1), slice(1, -1))
            read = values_at(found, *found.pixels(lon, lat, centre))[inside]
            np.testing.assert_allclose(read, values[inside], atol=0.02)


@needs_study
class Holes(unittest.TestCase):
    def test_small_holes_of_a_plane_are_filled_with_the_plane(self):
        from torvex.study.terrain import fill_smoothly, find_holes

        x, y = np.meshgrid(np.arange(60.0), np.arange(50.0))
        plane = 3 * x - 2 * y
        values = plane.copy()
        values[10:14, 20:27] = np.nan
        values[30, 40] = np.nan
        count, small = find_holes(values)
        self.assertEqual((count, int(small.sum())), (2, 29))
        np.testing.assert_allclose(fill_smoothly(values, small), plane, atol=1e-9)

    def test_wide_holes_and_those_at_the_edge_are_left(self):
        from torvex.study.terrain import LARGEST_HOLE, find_holes

        values = np.zeros((80, 80))
        values[20 : 21 + LARGEST_HOLE, 20] = np.nan
        values[:3, 50] = np.nan
        self.assertEqual(find_holes(values)[0], 0)

    def test_markers_and_nan_are_holes(self):
        from torvex.study.raster import open_rasters
        from torvex.study.terrain import elevation_on_map

        centre = Centre(10.9, 47.0)
        e0, n0 = to_crs(32632, centre.longitude, centre.latitude)
        with tempfile.TemporaryDirectory() as folder:
            for marker in -9999.0, np.nan:
                values = np.full((160, 160), 250.0)
                values[80, 80] = marker
                path = geotiff(
                    Path(folder) / f"{marker}.tif",
                    values,
                    32632,
                    e0 - 2000,
                    n0 + 2000,
                    (25, 25),
                    nodata=-9999.0,
                )
                grid = grid_of_step(centre, 1000.0, 25.0)
                found = elevation_on_map(open_rasters([path], centre), grid, centre)
                self.assertEqual(found.holes, 1)
                self.assertGreaterEqual(found.filled, 1)
                np.testing.assert_allclose(found.values, 250.0)


@needs_study
class Refused(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def refuse(self, text, *paths, **options):
        from torvex.study.raster import open_rasters

        with self.assertRaisesRegex(StudyError, text):
            open_rasters(paths, **options)

    def test_what_is_no_raster_with_a_place_on_earth(self):
        self.refuse("no such file", self.folder / "none.tif")
        (self.folder / "text.tif").write_text("no raster")
        self.refuse("GDAL can read", self.folder / "text.tif")
        path = geotiff(self.folder / "bare.tif", np.zeros((9, 9)), None, 0, 0, (1, 1))
        self.refuse("no coordinate reference system", path)

    def test_one_row(self):
        path = geotiff(self.folder / "row.tif", np.zeros((1, 9)), 32632, 0, 0, (1, 1))
        self.refuse("9 columns and 1 rows", path)

    def test_units_that_are_no_lengths(self):
        path = geotiff(self.folder / "k.tif", np.zeros((9, 9)), 32632, 0, 0, (1, 1), unit="K")
        self.refuse("no known unit of length", path)
        self.refuse("--dem-unit cubit", path, unit="cubit")


if __name__ == "__main__":
    unittest.main()
