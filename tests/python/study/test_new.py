"""A study is made whole or not at all, and says what it was made from."""

import hashlib
import os
import shutil
import tempfile
import tomllib
import unittest
from pathlib import Path

import numpy as np

import torvex
from study.commands import CENTRE, hill, small_study, torvex_study, turbines
from study.made_rasters import geotiff, needs_study, to_crs
from torvex.study.mesh_keys import MeshKeys, extent_of, finest_spacing


class Sizes(unittest.TestCase):
    def keys(self, **changed):
        keys = dict(
            WE_LENGTH=2000.0,
            NS_LENGTH=2000.0,
            MIN_DXY=50.0,
            MAX_DXY=250.0,
            MIN_DXY_RAD=500.0,
            MESH_HRATIO=1.12,
            MIN_DZ=4.0,
            MESH_VRATIO=1.2,
            CONSTANT_DZ_HEIGHT=100.0,
            top=5000.0,
            ground=1500.0,
        )
        return MeshKeys(**(keys | changed))

    def test_extents_are_those_that_the_butte_is_known_to_have(self):
        # The README of the example: x from -5319.6 m to 2319.6 m, y to 2319.6 m.
        extent = extent_of(self.keys())
        self.assertAlmostEqual(extent.upwind, 5319.6, delta=0.1)
        self.assertAlmostEqual(extent.downwind, 2319.6, delta=0.1)
        self.assertAlmostEqual(extent.side, 2319.6, delta=0.1)
        self.assertAlmostEqual(extent.reach, 5803.4, delta=0.1)

    def test_even_cells(self):
        extent = extent_of(self.keys(MESH_HRATIO=1.0, MIN_DXY_RAD=1.0))
        radius = np.hypot(1000, 1000)
        up, side = (int(np.ceil(factor * radius / 50)) for factor in (3.6, 1.6))
        self.assertEqual((extent.ni, extent.nj), (up + side + 2, 2 * side + 2))

    def test_spacing_keeps_to_the_number_of_cells(self):
        for cells in 30_000, 100_000, 400_000:
            keys = finest_spacing(self.keys(), cells, raster_step=1.0)
            self.assertLessEqual(extent_of(keys).cells, cells)
            self.assertGreater(extent_of(keys).cells, 0.7 * cells)

    def test_no_cells_finer_than_the_raster(self):
        self.assertEqual(finest_spacing(self.keys(), 10**9, raster_step=30.0).MIN_DXY, 30.0)


@needs_study
class New(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def new(self, *words, **options):
        return torvex_study("new", *words, folder=self.folder, **options)

    def refuse(self, text, *words):
        done = self.new(*words)
        self.assertEqual(done.returncode, 1, done.stdout + done.stderr)
        self.assertIn(text, done.stderr)
        self.assertNotIn("Traceback", done.stderr)
        self.assertFalse((self.folder / "s/torvex.tin").exists())
        return done

    def usual(self, *more):
        hill(self.folder)
        turbines(self.folder)
        words = ["s", "--dem", "dem.tif", "--sites", "turbines.csv", "--height", "50"]
        return [*words, "--size", "1000,1000", "--cells", "24000", *more]

    def test_case_and_maps_fit_together(self):
        study = small_study(self.folder)
        case = torvex.read_case(study / "torvex.tin")
        self.assertEqual(case.angles, (0.0, 90.0, 180.0, 270.0))
        self.assertEqual([site.label for site in case.sites], ["TOP", "WEST"])
        self.assertAlmostEqual(case.sites[1].longitude, 10.897, places=7)
        self.assertEqual(case.geodetic_system, 3)
        for name in "elevation", "roughness":
            found = torvex.read_map(study / f"maps/{name}.map")
            self.assertEqual(found.geodetic_system, "WGS")
            east, north = case.east_north(found.longitude, found.latitude)
            for line in east, north:
                # The rule of the guide: 1.97 times the diameter of the study circle.
                self.assertLess(line[0], -1.97 * np.hypot(1000, 1000))
                self.assertGreater(line[-1], 1.97 * np.hypot(1000, 1000))
        found = torvex.read_map(study / "maps/elevation.map")
        lon, lat = np.meshgrid(found.longitude, found.latitude)
        e, n = to_crs(32632, lon, lat)
        e0, n0 = to_crs(32632, *CENTRE)
        expected = 100 + 60 * np.exp(-((e - e0) ** 2 + (n - n0) ** 2) / (2 * 400.0**2))
        # Pixels of 50 m miss a surface of second derivative 60/400^2 by h^2/8 times that, twice.
        within = 2 * 50**2 / 8 * 60 / 400**2 + 0.01
        self.assertLess(np.abs(found.values.T - expected).max(), within)

    def test_the_step_is_at_most_half_a_cell(self):
        study = small_study(self.folder)
        found = torvex.read_map(study / "maps/elevation.map")
        case = torvex.read_case(study / "torvex.tin")
        east, _ = case.east_north(found.longitude, found.latitude)
        text = (study / "torvex.tin").read_text()
        finest = float(text.split("MIN_DXY =")[1].split()[0])
        self.assertLessEqual(np.diff(east).max(), finest / 2 + 0.01)

    def test_where_it_came_from(self):
        study = small_study(self.folder)
        told = tomllib.loads((study / "study.toml").read_text())
        self.assertEqual(told["study"]["height"], 100.0)
        self.assertEqual(told["options"]["cells"], 18000)
        sums = {table["role"]: table["sha256"] for table in told["input"]}
        for role, name in (("elevation", "dem.tif"), ("sites", "turbines.csv")):
            expected = hashlib.sha256((self.folder / name).read_bytes()).hexdigest()
            self.assertEqual(sums[role], expected)

    def test_a_second_one_of_the_name_is_refused_and_forced(self):
        study = small_study(self.folder)
        (study / "out").mkdir()
        (study / "out/kept.txt").write_text("kept")
        words = [study.name, *self.usual("--roughness", "0.1", "--directions", "45")[1:]]
        before = (study / "torvex.tin").read_bytes()
        done = self.new(*words)
        self.assertEqual(done.returncode, 1)
        self.assertIn("--force", done.stderr)
        self.assertEqual((study / "torvex.tin").read_bytes(), before)
        done = self.new(*words, "--force")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(torvex.read_case(study / "torvex.tin").angles, (45.0,))
        self.assertEqual((study / "out/kept.txt").read_text(), "kept")

    def test_contradictions(self):
        usual = self.usual()
        self.refuse("roughness of the ground is needed once", *usual, "--sectors", "4")
        self.refuse("give --sectors or --directions", *usual, "--roughness", "0.1")
        rough = [*usual, "--roughness", "0.1"]
        self.refuse("degrees from 0 to 360", *rough, "--directions", "400")
        self.refuse("270_0", *rough, "--directions", "270,270.04")
        self.refuse("--canopy takes the forests", *rough, "--directions", "270", "--canopy")
        self.refuse("0 and below 10 m", *usual, "--roughness", "10", "--sectors", "4")

    def test_too_small_a_raster_says_how_small(self):
        done = self.refuse(
            "the rasters are too small",
            *self.usual("--roughness", "0.1", "--sectors", "4", "--size", "4000,4000"),
        )
        # Half of 7000 m, less half a pixel and the way to the middle of the sites; the raster's
        # north is turned against true north.
        reach = float(done.stderr.split("and reach ")[1].split()[0])
        self.assertLess(abs(reach - (3500 - 25 - 114)), 100)

    def test_sites_outside_are_named(self):
        words = self.usual("--roughness", "0.1", "--sectors", "4")
        (self.folder / "turbines.csv").write_text("name,lon,lat\nIN,10.9,47\nOUT,12,47\n")
        done = self.refuse("outside the elevations: OUT", *words)
        self.assertNotIn("IN (", done.stderr)

    def test_level_rasters_and_rasters_without_data(self):
        words = self.usual("--roughness", "0.1", "--sectors", "4")
        e0, n0 = to_crs(32632, *CENTRE)
        for value, text in ((0.0, "this is water, or an empty raster"), (-9.0, "no value at any")):
            geotiff(
                self.folder / "dem.tif",
                np.full((140, 140), value),
                32632,
                e0 - 3500,
                n0 + 3500,
                (50, 50),
                nodata=-9.0,
            )
            self.refuse(text, *words)

    def test_a_large_hole_is_refused_with_a_picture_or_becomes_sea(self):
        from osgeo import gdal

        words = self.usual("--roughness", "0.1", "--sectors", "4")
        dataset = gdal.Open(str(self.folder / "dem.tif"), gdal.GA_Update)
        band = dataset.GetRasterBand(1)
        band.SetNoDataValue(-9999)
        values = band.ReadAsArray()
        values[:60] = -9999
        band.WriteArray(values)
        dataset = band = None
        self.refuse("have no data", *words)
        self.assertTrue((self.folder / "s-no-data.png").read_bytes().startswith(b"\x89PNG"))
        done = self.new(*words, "--sea-level", "0")
        self.assertEqual(done.returncode, 0, done.stderr)
        values = torvex.read_map(self.folder / "s/maps/elevation.map").values
        self.assertEqual(values[5, -5], 0.0)

    def test_a_folder_without_rights_and_one_that_is_not_there(self):
        words = self.usual("--roughness", "0.1", "--sectors", "4")
        self.refuse("there is no such folder", "none/s", *words[1:])
        if os.geteuid() == 0:
            self.skipTest("root may write everywhere")
        closed = self.folder / "closed"
        closed.mkdir(0o500)
        self.refuse("Permission denied", "closed/s", *words[1:])

    def test_a_full_disk(self):
        if not Path("/dev/full").exists():
            self.skipTest("no /dev/full")
        from torvex.study.map_file import write_whole

        with self.assertRaises(OSError):
            write_whole(self.folder / "big", _endless(self.folder))
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_a_disk_that_takes_no_more(self):
        # A limit on the size of files stands for a disk that is full.
        import resource
        import subprocess

        from study.commands import COMMAND, environment

        words = self.usual("--roughness", "0.1", "--sectors", "4")
        done = subprocess.run(
            [*COMMAND, "new", *words],
            cwd=self.folder,
            env=environment(),
            capture_output=True,
            text=True,
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096)),
        )
        self.assertEqual(done.returncode, 1)
        self.assertIn("File too large", done.stderr)
        self.assertNotIn("Traceback", done.stderr)
        left = {path.name for path in self.folder.iterdir()}
        self.assertEqual(left, {"dem.tif", "turbines.csv"})

    def test_forests_as_drag(self):
        e0, n0 = to_crs(32632, *CENTRE)
        cover = np.full((700, 700), 30)
        cover[:, 350:] = 10
        corner = (e0 - 3500, n0 + 3500)
        geotiff(self.folder / "cover.tif", cover, 32632, *corner, (10, 10), kind="Byte")
        words = self.usual("--landcover", "cover.tif", "--directions", "270")
        done = self.new(*words, "--canopy")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("trees up to 20.0 m", done.stdout)
        self.assertIn("canopy_mode = 1", (self.folder / "s/torvex.tin").read_text())
        rough = torvex.read_map(self.folder / "s/maps/roughness.map").values
        self.assertAlmostEqual(rough[-3, 5], 0.1, places=5)
        from osgeo import ogr

        shapes = ogr.Open(str(self.folder / "s/maps/trees.shp"))
        heights = {feature["H"] for feature in shapes.GetLayer(0)}
        self.assertEqual(heights, {20.0})
        area = sum(feature.geometry().GetArea() for feature in shapes.GetLayer(0))
        found = torvex.read_map(self.folder / "s/maps/roughness.map")
        width, height = np.ptp(found.longitude), np.ptp(found.latitude)
        self.assertAlmostEqual(area / (width * height), 0.5, delta=0.03)

    def test_missing_packages_are_named(self):
        words = self.usual("--roughness", "0.1", "--sectors", "4")
        hidden = self.folder / "hidden"
        (hidden / "jinja2").mkdir(parents=True)
        (hidden / "jinja2/__init__.py").write_text("raise ImportError('hidden')")
        shutil.copytree(Path(torvex.__file__).parent, hidden / "torvex")
        import subprocess

        from study.commands import COMMAND, environment

        done = subprocess.run(
            [*COMMAND, "new", *words],
            cwd=self.folder,
            env=environment() | {"PYTHONPATH": str(hidden)},
            capture_output=True,
            text=True,
        )
        self.assertEqual(done.returncode, 1)
        self.assertIn("install the package python3-jinja2", done.stderr)
        self.assertNotIn("Traceback", done.stderr)


def _endless(folder):
    """Lines that end as those of a full disk do."""
    yield "first\n"
    raise OSError(28, "No space left on device", str(folder))


if __name__ == "__main__":
    unittest.main()
