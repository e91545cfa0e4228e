"""The text files, written by hand."""

import math
import unittest

import numpy as np

import torvex
from test_records import InDirectory


class Texts(InDirectory):
    def text(self, text, name):
        return self.write(text.encode(), name)


class FreeForm(Texts):
    """Through a map's rows, the one place where all of the notation may stand."""

    def rows(self, data, n_lon=3, n_lat=2):
        head = (
            f"<TORVEX_MAP lon-lat>\nn_lon = {n_lon}, n_lat = {n_lat}\nd_lon = 1, d_lat = 1\n"
            "base_longitude = 0 0\nbase_latitude = 0 0\n--DATA--\n"
        )
        return self.text(head + data, "some.map")

    def values(self, data):
        return torvex.read_map(self.rows(data)).values.T.tolist()

    def test_blanks_commas_and_line_ends(self):
        self.assertEqual(self.values("1 2,3\n4 ,\n 5\r\n6\n"), [[1, 2, 3], [4, 5, 6]])

    def test_repeat_counts(self):
        self.assertEqual(self.values("3*0.5\n4, 2*-1e1\n"), [[0.5] * 3, [4, -10, -10]])

    def test_a_repeat_count_ends_with_its_row(self):
        self.assertEqual(self.values("1 1000000000*2\n3*4\n"), [[1, 2, 2], [4, 4, 4]])

    def test_the_rest_of_a_line_belongs_to_no_row(self):
        self.assertEqual(self.values("1 2 3 99\n4 5 6 words\n"), [[1, 2, 3], [4, 5, 6]])

    def test_exponents(self):
        self.assertEqual(
            self.values("1D2 -1.5d+1 25-1\n+.5 5.E0 1+2\n"), [[100, -15, 2.5], [0.5, 5, 100]]
        )

    def test_what_is_no_number(self):
        for word in ("12.x", "1_0", "--1", "*", "0*3", "nan", "inf"):
            with self.subTest(word=word):
                self.assertRefused(torvex.read_map, self.rows(f"1 2 3\n4 {word} 6\n"), "row 2")

    def test_values_left_out(self):
        for row in ("1,,3", "1 2*", ",2 3"):
            with self.subTest(row=row):
                path = self.rows(row + "\n4 5 6\n")
                self.assertRefused(torvex.read_map, path, "row 1", "nothing, expected a number")

    def test_rows_that_end_early(self):
        for rows, words in (
            ("1 2 3\n4 5\n", "row 2 of 2: 2 values, expected 3"),
            ("1 2 /\n4 5 6\n", "row 1 of 2: 2 values, expected 3"),
            ("", "row 1 of 2: 0 values, expected 3"),
        ):
            with self.subTest(rows=rows):
                self.assertRefused(torvex.read_map, self.rows(rows), words)


class Maps(Texts):
    HEAD = (
        "<TORVEX_MAP lon-lat>  \n"
        "# n_lon = 7\n"
        "n_lon = 3, n_lat = 2, behind the last comma\n"
        "words without an item\n"
        "d_lon = 30, colour = red, d_lat = 1.5d1,\n"
        "base_longitude = -113 -30\n"
        "base_latitude = 43 45\n"
        "geodetic_system = 'WGS'\n"
        "--DATA--\n"
    )

    def test_values_stand_at_their_places(self):
        path = self.text(self.HEAD + "1 2 3\n4 5 6\n", "some.map")
        m = torvex.read_map(path)
        np.testing.assert_allclose(m.longitude, [-113.5, -113.0, -112.5], rtol=1e-12)
        np.testing.assert_allclose(m.latitude, [43.75, 44.0], rtol=1e-12)
        self.assertEqual(m.values.shape, (3, 2))
        self.assertEqual(m.values[2, 1], 6)  # east, north
        self.assertEqual(m.values[2, 0], 3)
        self.assertEqual(m.geodetic_system, "WGS")
        self.assertEqual(m.header["colour"], "red")

    def test_datum(self):
        data = self.HEAD + "1 2 3\n4 5 6\n"
        for text, datum in (("TKY", "TKY"), ("'TD-x'", "TKY"), ("JGD2000", "JGD"), ("ED50", "")):
            path = self.text(data.replace("'WGS'", text), "some.map")
            self.assertEqual(torvex.read_map(path).geodetic_system, datum)
        path = self.text(data.replace("geodetic_system", "#"), "some.map")
        self.assertEqual(torvex.read_map(path).geodetic_system, "")

    def test_bad_headers(self):
        def refused(old, new, *words):
            path = self.text((self.HEAD + "1 2 3\n4 5 6\n").replace(old, new), "some.map")
            self.assertRefused(torvex.read_map, path, *words)

        refused("lon-lat", "x-y", "'<TORVEX_MAP x-y>'", "expected '<TORVEX_MAP lon-lat>'")
        refused("--DATA--\n", "", "--DATA--")
        refused("d_lat", "d_lap", "without d_lat")
        refused("n_lon = 3", "n_lon = 3.5", "n_lon", "whole")
        refused("n_lon = 3", "n_lon = 1", "1 columns")
        refused("d_lon = 30", "d_lon = 0", "above 0")
        refused("-113 -30", "-113", "base_longitude: 1 values, expected 2")
        self.assertRefused(torvex.read_map, self.text("", "empty.map"), "''")


class Profiles(Texts):
    TITLES = " z_agl u v w p tke ted z_asl\n"

    def level(self, *values):
        return "".join(f"{value:16.8E}" for value in values) + "\n"

    def test_columns(self):
        rows = self.level(0, 0, 0, 0, 1, 2, 3, 100) + self.level(10, 3, -4, 0.5, 5, 6, 7, 110)
        profile = torvex.read_profile(self.text("   2\n" + self.TITLES + rows, "a.tpd"))
        self.assertEqual(profile.z_agl.tolist(), [0, 10])
        self.assertEqual(profile.v.tolist(), [0, -4])
        self.assertEqual(profile.ted.tolist(), [3, 7])
        self.assertEqual(profile.z_asl.tolist(), [100, 110])
        self.assertEqual(profile.speed.tolist(), [0, 5])

    def test_values_that_are_not_numbers_are_kept(self):
        row = f"{'NaN':>16}" * 8 + "\n"
        profile = torvex.read_profile(self.text("1\n" + self.TITLES + row, "a.tpd"))
        self.assertTrue(math.isnan(profile.u[0]))

    def test_bad_profiles(self):
        row = self.level(*range(8))
        for text, words in (
            ("", ("line 1 is missing",)),
            ("two\n" + self.TITLES + row, ("line 1", "two", "a number")),
            ("0\n" + self.TITLES, ("line 1", "1 or more")),
            ("1\n z_agl u v w p\n" + row, ("line 2", "expected z_agl u v w p tke ted z_asl")),
            ("2\n" + self.TITLES + row, ("line 4", "level 2 of 2")),
            ("1\n" + self.TITLES + row[:64] + "\n", ("line 3", "4 values, expected 8")),
        ):
            with self.subTest(text=text):
                self.assertRefused(torvex.read_profile, self.text(text, "a.tpd"), *words)

    def test_label_list(self):
        text = (
            "    1, SUMMIT, W432346_6764-1130118_8148\n"
            "   12, mast, the old one, W432406_9660-1130126_1588\n"
        )
        labels = torvex.read_labels(self.text(text, "_latlon_label_list.txt"))
        self.assertEqual(
            labels,
            [
                (1, "SUMMIT", "W432346_6764-1130118_8148"),
                (12, "mast, the old one", "W432406_9660-1130126_1588"),
            ],
        )
        self.assertEqual(torvex.read_labels(self.text("", "_latlon_label_list.txt")), [])

    def test_bad_label_list(self):
        for line in ("1 SUMMIT", "1, SUMMIT", "x, SUMMIT, T00", "1, SUMMIT, "):
            path = self.text(f"    1, A, T0\n{line}\n", "_latlon_label_list.txt")
            self.assertRefused(torvex.read_labels, path, "line 2", "index, label, position")


class Tables(Texts):
    def slots(self, *rows, end="\n"):
        return "".join(row.ljust(120 - len(end)) + end for row in rows)

    def row(self, iteration, *values):
        return f"{iteration:8d}" + "".join(f"{value:16.8E}" for value in values)

    def test_directions(self):
        text = self.slots("       3", "240.0 1", " 22.5 0")
        table = torvex.read_view(self.text(text, "view-wind_direction.dat"))
        self.assertEqual(table["angle"].tolist(), [240.0, 22.5])
        self.assertEqual(table["status"].tolist(), [1, 0])

    def test_convergence_up_to_the_count(self):
        text = self.slots("       2", self.row(10, 1, 2, 3, 4, 5, 6), self.row(20, *[0] * 6))
        table = torvex.read_view(self.text(text, "nest-view-convergence-022_5.dat"))
        self.assertEqual(
            {name: column.tolist() for name, column in table.items()},
            {
                "iteration": [10],
                "resid_m": [1],
                "resid_u": [2],
                "resid_v": [3],
                "resid_w": [4],
                "resid_k": [5],
                "resid_e": [6],
            },
        )

    def test_slots_without_line_ends(self):
        text = self.slots("       2", self.row(10, 1, -2, 3, 4, 5, 6), end="")
        table = torvex.read_view(self.text(text, "view-monitor.dat"))
        self.assertEqual(table["v"].tolist(), [-2])

    def test_an_empty_table(self):
        table = torvex.read_view(self.text(self.slots("       1", ""), "view-monitor.dat"))
        self.assertEqual(table["iteration"].shape, (0,))

    def test_bad_tables(self):
        for text, words in (
            ("", ("slot 1",)),
            (self.slots("  number"), ("slot 1",)),
            (self.slots("       0"), ("0 slots",)),
            (self.slots("       3", self.row(10, 1, 2, 3, 4, 5, 6)), ("3 slots", "holds 2")),
            (self.slots("       2", self.row(10, 1, 2, 3)), ("slot 2", "4 values, expected 7")),
            (self.slots("       2", ""), ("slot 2", "0 values, expected 7")),
        ):
            with self.subTest(text=text):
                self.assertRefused(torvex.read_view, self.text(text, "view-monitor.dat"), *words)
        self.assertRefused(
            torvex.read_view, self.text(self.slots("       1"), "other.dat"), "view-monitor"
        )


class RestartInfo(Texts):
    def test_with_and_without_the_extents_of_a_nested_run(self):
        text = "         480\n   1.23E-05  0.25  3.0E-04   1.0E+25\n"
        info = torvex.read_restart_info(self.text(text, "restart.info"))
        self.assertEqual(info, torvex.RestartInfo(480, 1.23e-5, 0.25, 3e-4, 1e25))
        info = torvex.read_restart_info(self.text(text + "  3  2  2\n", "restart.info"))
        self.assertEqual(info.extents, (3, 2, 2))

    def test_bad_files(self):
        for text, words in (
            ("", ("line 1",)),
            ("4.5\n1 2 3 4\n", ("line 1", "whole")),
            ("10\n", ("line 2",)),
            ("10\n1 2 3\n", ("line 2", "expected 4")),
            ("10\n1 2 3 4\n5 6\n", ("line 3", "expected 3")),
        ):
            with self.subTest(text=text):
                path = self.text(text, "restart.info")
                self.assertRefused(torvex.read_restart_info, path, *words)


class MeshLog(Texts):
    TEXT = (
        "   3 (ni)\n   2 (nj)\n   4 (nk)\n"
        " -0.40000000E+01 (x1)\n -0.20000000E+01 (x2)\n  0.20000000E+01 (x3)\n"
        " -0.30000000E+01 (y1)\n  0.30000000E+01 (y2)\n"
        "#==x(i)==\n -5\n 0\n 5\n#==y(j)==\n -1\n 1\n#==x(i)==\n 0\n 1\n 2\n 3\n"
    )

    def test_counts_borders_and_lines(self):
        log = torvex.read_mesh_log(self.text(self.TEXT, "log-meshnumber"))
        self.assertEqual((log.ni, log.nj, log.nk), (3, 2, 4))
        self.assertEqual((log.x1, log.x2, log.x3, log.y1, log.y2), (-4, -2, 2, -3, 3))
        self.assertEqual(log.x.tolist(), [-5, 0, 5])
        self.assertEqual(log.y.tolist(), [-1, 1])
        self.assertEqual(log.z.tolist(), [0, 1, 2, 3])

    def test_bad_files(self):
        for old, new, words in (
            ("(nj)", "(nx)", ("line 2", "(nj)")),
            ("   2 (", " two (", ("line 2",)),
            ("#==y", "#==z", ("line 13", "#==y(j)==")),
            (" 3\n", "", ("values of z", "3 values, expected 4")),
        ):
            with self.subTest(new=new):
                path = self.text(self.TEXT.replace(old, new), "log-meshnumber")
                self.assertRefused(torvex.read_mesh_log, path, *words)


if __name__ == "__main__":
    unittest.main()
