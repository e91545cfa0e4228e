"""Centre and sites of a case file written by hand."""

import unittest

import torvex
from test_texts import Texts

HEAD = "A case's title & more\n&NML_RUN /\n"
SITES = """&NML_SITE
  N_SITE = 2
  SITE(1)%LABEL = 'O''Hara / top', SITE(1)%LON = 139, 45, 0,  SITE(1)%LAT = 35, 0, 36
  SITE(2)%LON = -1.0E0, -30, 2*0, SITE(2)%LAT = 35 ! 'not this', SITE(2)%LAT = 7
  site(2)%label = "B, the ""old"" one"
/
"""


class CaseFile(Texts):
    def case(self, keys, sites="&NML_SITE /\n"):
        text = HEAD + "&NML_CASEFILE\n" + keys + "\n/\nbehind = 3\n" + sites
        return torvex.read_case(self.text(text, "some.tin"))

    def test_centre(self):
        case = self.case("CENT_LON = 139, 45, 0, CENT_LAT = 35, 30, 18\nGS = 3")
        self.assertAlmostEqual(case.longitude, 139.75, delta=1e-12)
        self.assertAlmostEqual(case.latitude, 35.505, delta=1e-12)
        self.assertEqual((case.geodetic_system, case.sites), (3, ()))

    def test_signs_are_added_as_they_stand(self):
        case = self.case("CENT_LON = -113, -1, -30\n CENT_LAT = -33, 30, 0")
        self.assertAlmostEqual(case.longitude, -113.025, delta=1e-12)
        self.assertAlmostEqual(case.latitude, -32.5, delta=1e-12)
        self.assertEqual(case.geodetic_system, 0)

    def test_notation(self):
        for keys in (
            "CENT_LON = 8, , 36, CENT_LAT = 3*1",
            "cent_lat(2) = 1, 1 cent_lat = 1\nCENT_LON(1) = 8 CENT_LON(3) = 3.6D1",
            "CENT_LON = 9, 9, 9, CENT_LAT = 1 1\n1 ! CENT_LAT = 2\nBASIC_H_FILE = 'a=/b!.map'\n"
            "CENT_LON = 8,\n 0,\n 36",
            'PROJECT_NAME = "CENT_LAT = 5", CENT_LAT = 1, 1, 1, CENT_LON = 8.01',
        ):
            with self.subTest(keys=keys):
                case = self.case(keys)
                self.assertAlmostEqual(case.longitude, 8.01, delta=1e-12)
                self.assertAlmostEqual(case.latitude, 1 + 1 / 60 + 1 / 3600, delta=1e-12)

    def test_other_ends_of_a_group(self):
        for end in ("&END", "$end", "/"):
            text = f" $nml_casefile CENT_LAT = 3 {end}\n CENT_LAT = 4 /\n&NML_SITE &END"
            self.assertEqual(torvex.read_case(self.text(text, "some.tin")).latitude, 3)

    def test_sites(self):
        first, second = self.case("CENT_LAT = 1", SITES).sites
        self.assertEqual((first.label, second.label), ("O'Hara / top", 'B, the "old" one'))
        self.assertAlmostEqual(first.longitude, 139.75, delta=1e-12)
        self.assertAlmostEqual(first.latitude, 35.01, delta=1e-12)
        self.assertEqual((second.longitude, second.latitude), (-1.5, 35))

    def test_directions(self):
        listed = "N_WIND_DIRECTION = 2, WIND_DIRECTION_ANGLE = 270, 11.25, 30\n"
        self.assertEqual(self.case("WD_TYPE = 1 " + listed).angles, (270, 11.25))
        sectors = self.case("N_WIND_DIRECTION = 32, WIND_DIRECTION_ANGLE = 7").angles
        self.assertEqual(
            (len(sectors), sectors[0], sectors[1], sectors[31]), (32, 0, 11.25, 348.75)
        )
        self.assertEqual(self.case("WD_TYPE = 0").angles, ())

    def test_bad_cases(self):
        for text, words in (
            ("", ("&NML_CASEFILE is missing",)),
            ("&NML_CASEFILE /", ("&NML_SITE is missing",)),
            ("&NML_CASEFILE CENT_LAT = 3\n", ("&NML_CASEFILE does not end",)),
            ("&NML_CASEFILE CENT_LAT = three /\n&NML_SITE /", ("CENT_LAT: three", "a number")),
            ("&NML_CASEFILE GS = 4 /\n&NML_SITE /", ("GS is 4", "0 to 3")),
            ("&NML_CASEFILE /\n&NML_SITE N_SITE = 1, SITE(1)%LON = x /", ("SITE(1)%LON: x",)),
        ):
            with self.subTest(text=text):
                self.assertRefused(torvex.read_case, self.text(text, "some.tin"), *words)


class FindCase(Texts):
    LINE = "2026/11/21 17:00:39 Input file is set to [{}]\n"

    def test_the_last_that_the_log_names(self):
        for name in ("a.tin", "b.tin", "torvex.tin"):
            self.text("", name)
        log = self.LINE.format("/elsewhere/a.tin") + "more\n" + self.LINE.format("/moved/b.tin")
        self.text(log, "torvex.log")
        self.assertEqual(torvex.find_case(self.directory), self.directory / "b.tin")
        (self.directory / "b.tin").unlink()
        self.assertEqual(torvex.find_case(self.directory), self.directory / "torvex.tin")

    def test_without_a_log(self):
        with self.assertRaisesRegex(FileNotFoundError, "no case file"):
            torvex.find_case(self.directory)
        self.text("", "torvex.tin")
        self.assertEqual(torvex.find_case(self.directory), self.directory / "torvex.tin")


if __name__ == "__main__":
    unittest.main()
