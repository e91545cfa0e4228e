"""Roughness of a study's map, recomputed from the raster, and the tables behind it."""

import tempfile
import unittest
from pathlib import Path

import numpy as np

from study.made_rasters import geotiff, needs_study, to_crs
from torvex.study.errors import StudyError
from torvex.study.land_cover import known_tables, read_table, table_of
from torvex.study.map_grid import Centre, grid_of_step

CENTRE = Centre(10.9, 47.0)
TABLE = "code,name,z0,tree_height,floor_z0,source\n"


def drag(z0):
    return 1 / np.log(10 / z0) ** 2


class Tables(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def table(self, *rows):
        path = self.folder / "table.csv"
        path.write_text(TABLE + "".join(row + "\n" for row in rows))
        return path

    def test_every_row_that_is_shipped_has_a_length_and_a_source(self):
        self.assertEqual(set(known_tables()), {"worldcover", "corine", "corine44"})
        for name, path in known_tables().items():
            for land in read_table(path).values():
                with self.subTest(table=name, code=land.code):
                    self.assertTrue(0 < land.z0 < 10)
                    self.assertTrue(land.source and land.name)

    def test_all_classes_of_the_two_products_are_there(self):
        worldcover = read_table(known_tables()["worldcover"])
        self.assertEqual(set(worldcover), {10, 20, 30, 40, 50, 60, 70, 80, 90, 95, 100})
        self.assertEqual(len(read_table(known_tables()["corine"])), 44)
        self.assertEqual(set(read_table(known_tables()["corine44"])), set(range(1, 45)))

    def test_the_two_tables_of_one_product_agree(self):
        by_class = list(read_table(known_tables()["corine"]).values())
        counted = list(read_table(known_tables()["corine44"]).values())
        for one, other in zip(by_class, counted):
            self.assertEqual((one.name, one.z0), (other.name, other.z0))

    def test_what_is_refused_is_named(self):
        for rows, text in (
            (["10,wood,,,,me"], "code 10: z0 is '', expected a number"),
            (["10,wood,0.5,,,"], "code 10 has no source"),
            (["10,a,0.5,,,me", "10,b,0.4,,,me"], "code 10 stands there twice"),
            (["1.5,a,0.5,,,me"], "1.5 is no whole number"),
            ([], "no row"),
        ):
            with self.subTest(text=text), self.assertRaisesRegex(StudyError, text):
                read_table(self.table(*rows))
        path = self.folder / "short.csv"
        path.write_text("code,z0\n1,0.1\n")
        with self.assertRaisesRegex(StudyError, "no column source"):
            read_table(path)
        with self.assertRaisesRegex(StudyError, "known are corine, corine44, worldcover"):
            table_of("nothing")


@needs_study
class Maps(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.grid = grid_of_step(CENTRE, 400.0, 40.0)

    def raster(self, values, step, **options):
        from torvex.study.raster import open_rasters

        e0, n0 = to_crs(32632, CENTRE.longitude, CENTRE.latitude)
        half = np.array(values.shape) * step / 2
        path = geotiff(
            self.folder / "cover.tif",
            values,
            32632,
            e0 - half[1],
            n0 + half[0],
            (step, step),
            **options,
        )
        self.corner = (e0 - half[1], n0 + half[0])
        return open_rasters([path], CENTRE)

    def pixels_of_cells(self, shape, step):
        """For each pixel the point of the map whose cell holds its middle."""
        import pyproj

        column, row = np.meshgrid(np.arange(shape[1]) + 0.5, np.arange(shape[0]) + 0.5)
        e, n = self.corner[0] + step * column, self.corner[1] - step * row
        back = pyproj.Transformer.from_crs("EPSG:32632", "EPSG:4326", always_xy=True)
        lon, lat = back.transform(e, n)
        d_lon, d_lat = self.grid.spacing
        i = np.round((lon - self.grid.south_west[0]) / d_lon).astype(int)
        j = np.round((lat - self.grid.south_west[1]) / d_lat).astype(int)
        return i, j

    def cover(self, rasters, table, canopy=False):
        from torvex.study.land_cover import cover_on_map

        return cover_on_map(rasters, self.grid, CENTRE, table, canopy)

    def test_means_of_the_drag_over_cells(self):
        # 400 pixels to a cell: a mean over the middles of pixels is that over the area to some
        # per cent of the differences between classes.
        step, z0 = 2.0, {10: 1.0, 30: 0.03, 80: 0.0002}
        rng = np.random.default_rng(7)
        blocks = rng.choice(list(z0), (60, 60))
        values = np.kron(blocks, np.ones((10, 10), int))
        rasters = self.raster(values, step, kind="Byte")
        table = read_table(known_tables()["worldcover"])
        for code, length in z0.items():
            self.assertEqual(table[code].z0, length)
        found = self.cover(rasters, table)
        i, j = self.pixels_of_cells(values.shape, step)
        inside = (i >= 0) & (i < self.grid.n_lon) & (j >= 0) & (j < self.grid.n_lat)
        r = np.vectorize(z0.get)(values)
        total, count = (np.zeros(found.z0.shape) for _ in range(2))
        np.add.at(total, (j[inside], i[inside]), drag(r[inside]))
        np.add.at(count, (j[inside], i[inside]), 1)
        self.assertGreater(count.min(), 350)
        self.assertLess(np.abs(drag(found.z0) - total / count).max(), 0.04 * drag(1.0))
        self.assertLess(np.abs((drag(found.z0) - total / count).mean()), 0.002 * drag(1.0))

    def test_one_class_gives_its_length_everywhere(self):
        rasters = self.raster(np.full((100, 100), 40), 10.0, kind="Byte")
        found = self.cover(rasters, read_table(known_tables()["worldcover"]))
        np.testing.assert_allclose(found.z0, 0.1, rtol=1e-12)
        self.assertEqual(set(found.counts), {40})

    def test_a_canopy_leaves_the_floor_and_tells_its_trees(self):
        values = np.full((100, 100), 30)
        values[:, :50] = 10
        rasters = self.raster(values, 10.0, kind="Byte")
        found = self.cover(rasters, read_table(known_tables()["worldcover"]), canopy=True)
        np.testing.assert_allclose(found.z0[:, 0], 0.1)
        np.testing.assert_allclose(found.z0[:, -1], 0.03)
        np.testing.assert_allclose(found.trees[:, 0], 1.0)
        np.testing.assert_allclose(found.tree_height[:, 0], 20.0)
        np.testing.assert_allclose(found.trees[:, -1], 0.0)

    def test_unknown_classes_are_told_with_their_share(self):
        values = np.full((100, 100), 30)
        values[48:52, 48:52] = 7
        rasters = self.raster(values, 10.0, kind="Byte")
        with self.assertRaisesRegex(StudyError, r"does not know: 7 \(\d+ places, 0\.\d\d %\)"):
            self.cover(rasters, read_table(known_tables()["worldcover"]))

    def test_lengths_out_of_range_are_told_with_their_class(self):
        for z0 in "0", "-1", "10", "12.5", "nan":
            path = self.folder / "own.csv"
            path.write_text(TABLE + f"30,grass,{z0},,,me\n")
            rasters = self.raster(np.full((100, 100), 30), 10.0, kind="Byte")
            with self.subTest(z0=z0), self.assertRaisesRegex(StudyError, "the table has 30: "):
                self.cover(rasters, read_table(path))

    def test_a_cover_that_ends_within_the_map(self):
        rasters = self.raster(np.full((60, 60), 30), 10.0, kind="Byte")
        with self.assertRaisesRegex(StudyError, "% of the map lies outside the land cover"):
            self.cover(rasters, read_table(known_tables()["worldcover"]))

    def test_a_table_is_chosen_by_the_classes(self):
        from torvex.study.land_cover import choose_table

        for codes, name in (
            ((10, 80, 100), "worldcover"),
            ((111, 312, 523), "corine"),
            ((1, 24, 44), "corine44"),
        ):
            values = np.random.default_rng(1).choice(codes, (100, 100))
            rasters = self.raster(values, 10.0, kind="Int16")
            with self.subTest(name=name):
                self.assertEqual(choose_table(rasters, self.grid, CENTRE).stem, name)
        rasters = self.raster(np.full((100, 100), 9999), 10.0, kind="Int16")
        with self.assertRaisesRegex(StudyError, "no table knows the classes 9999"):
            choose_table(rasters, self.grid, CENTRE)

    def test_fractions_are_no_classes(self):
        rasters = self.raster(np.full((100, 100), 0.03), 10.0)
        with self.assertRaisesRegex(StudyError, "--roughness"):
            self.cover(rasters, read_table(known_tables()["worldcover"]))

    def test_lengths_of_a_raster(self):
        from torvex.study.land_cover import lengths_on_map

        # Halves of every cell: two lengths in stripes of half a step, from west to east.
        values = np.where(np.arange(500) // 10 % 2, 0.5, 0.01)[None, :] * np.ones((500, 1))
        rasters = self.raster(values, 2.0, kind="Float64")
        found = lengths_on_map(rasters, self.grid, CENTRE)
        middle = drag(found).mean()
        self.assertAlmostEqual(middle, (drag(0.5) + drag(0.01)) / 2, delta=0.02 * middle)

    def test_lengths_out_of_range_or_missing_in_a_raster(self):
        from torvex.study.land_cover import lengths_on_map

        for value, text in ((0.0, "0 and less"), (10.0, "10 m and more"), (-1.0, "no data")):
            values = np.full((100, 100), 0.1)
            values[50, 50] = value
            rasters = self.raster(values, 10.0, nodata=-1.0)
            with self.subTest(value=value), self.assertRaisesRegex(StudyError, text):
                lengths_on_map(rasters, self.grid, CENTRE)


if __name__ == "__main__":
    unittest.main()
