"""The case of one direction out of the case of all."""

import json
import os
import tempfile
import unittest
from pathlib import Path

from torvex.case import Group
from torvex.study.case_text import GROUPS, direction_text, read_study_case, what_counts
from torvex.study.errors import StudyError
from torvex.study.ladder import ladder, next_step
from torvex.study.record import Record, changed_files, is_alive, read_record, sign
from torvex.study.record import states_of_files, write_record
from torvex.study.summary import exit_status

CASE = """Free text with a / and an = in it.
&NML_RUN
/
&NML_CASEFILE
  BASIC_H_FILE = 'maps/h.map'   ! a comment with N_WIND_DIRECTION = 7 / in it
  BASIC_Z0_FILE = '/absolute/z0.map', DETAILED_Z0_FILE = ''
  GS = 3, CENT_LON = 10, 54, 0
  CENT_LAT = 47, 0, 0
  WD_TYPE = 1, N_WIND_DIRECTION = 3
  WIND_DIRECTION_ANGLE = 270, 22.5,
    140
  SPECIFY_ELEVATION_CORRECTION_FACTOR = T
  ELEVATION_CORRECTION_FACTOR = 1.0, 0.5, 0.25
  MIN_DXY = 50
/
&NML_MONITOR
  MONITOR_STEP = 10
/
&NML_ER
  EQUIVALENT_ROUGHNESS(2) = 0.2, 0.3
  DIRECTIONAL_ALPHA_APPLICABLE_WDS = 3, 1
  DIRECTIONAL_ALPHA_FILE_NAME = 'it''s.txt'
/
&NML_BOUNDARY_TREATMENT /
&NML_NAVIER_STOKES
/
&NML_NUMERICAL_SOLVER
  MAXIT = 300
/
&NML_SITE
  N_SITE = 0
/
&canopy_parameters
canopy_mode = 1
/
&shp_parameters
sf_tree%filename = maps/trees.shp   ! the wood
sf_tree%dbf_h = H
sf_build%filename = ''
/
"""


class Directions(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.path = self.folder / "torvex.tin"

    def study(self, text=CASE):
        self.path.write_text(text)
        return read_study_case(self.path)

    def groups(self, number, resume=False, **changes):
        text = direction_text(self.study(), number, "../../", resume, changes)
        return text, {name: Group(self.path, text, name) for name in GROUPS}

    def test_angles_tags_and_what_the_case_names(self):
        (self.folder / "maps").mkdir()
        for name in "h.map", "trees.shp", "trees.dbf":
            (self.folder / "maps" / name).write_text("")
        study = self.study()
        self.assertEqual(study.tags, ("270_0", "022_5", "140_0"))
        self.assertEqual((study.maxit, study.monitor_step, study.prefix), (300, 10, ""))
        self.assertTrue(study.canopy)
        names = {os.path.relpath(path, self.folder) for path in study.inputs}
        self.assertEqual(names, {"maps/h.map", "maps/trees.shp", "maps/trees.dbf"})

    def test_one_direction_and_its_elements_of_lists(self):
        for number, angle, factor, rough, alpha in (
            (0, 270.0, 1.0, None, (1, -1)),
            (1, 22.5, 0.5, 0.2, (-1, 0)),
            (2, 140.0, 0.25, 0.3, (1, -1)),
        ):
            text, group = self.groups(number)
            case, er = group["NML_CASEFILE"], group["NML_ER"]
            self.assertEqual(case.real("N_WIND_DIRECTION"), 1)
            self.assertEqual(case.real("WIND_DIRECTION_ANGLE"), angle)
            self.assertNotIn(("WIND_DIRECTION_ANGLE", 2), case.words)
            self.assertEqual(case.real("ELEVATION_CORRECTION_FACTOR"), factor)
            if rough is None:
                self.assertNotIn(("EQUIVALENT_ROUGHNESS", 1), er.words)
            else:
                self.assertEqual(er.real("EQUIVALENT_ROUGHNESS"), rough)
            name = "DIRECTIONAL_ALPHA_APPLICABLE_WDS"
            self.assertEqual((er.real(name), er.real(name, 2)), alpha)
            self.assertEqual(case.real("MIN_DXY"), 50)
            self.assertEqual(case.degrees("CENT_LAT"), 47)

    def test_files_are_seen_from_the_folder_of_the_direction(self):
        text, group = self.groups(0)
        case = group["NML_CASEFILE"]
        self.assertEqual(case.text("BASIC_H_FILE"), "../../maps/h.map")
        self.assertEqual(case.text("BASIC_Z0_FILE"), "/absolute/z0.map")
        self.assertEqual(case.text("DETAILED_Z0_FILE"), "")
        alpha = group["NML_ER"].text("DIRECTIONAL_ALPHA_FILE_NAME")
        self.assertEqual(alpha, "../../it's.txt")
        self.assertIn("sf_tree%filename = '../../maps/trees.shp'   ! the wood", text)
        self.assertIn("sf_build%filename = ''", text)

    def test_resuming_and_keys_of_a_step(self):
        for resume in False, True:
            _, group = self.groups(1, resume, MAXIT="70", URFU="0.3")
            self.assertEqual(group["NML_RUN"].real("RESTART_FLAG"), float(resume))
            self.assertEqual(group["NML_NUMERICAL_SOLVER"].real("MAXIT"), 70)
            self.assertEqual(group["NML_NUMERICAL_SOLVER"].real("URFU"), 0.3)

    def test_equal_sectors_are_those_of_single_precision(self):
        text = CASE.replace(
            "WD_TYPE = 1, N_WIND_DIRECTION = 3", "WD_TYPE = 0, N_WIND_DIRECTION = 7"
        )
        study = self.study(text)
        self.assertEqual(study.tags[1], "051_4")
        self.assertIn("WIND_DIRECTION_ANGLE = 51.42857\n", direction_text(study, 1, "", False, {}))

    def test_kinds_of_runs_that_are_none_of_a_study(self):
        for old, new, text in (
            ("&NML_RUN\n", "&NML_RUN\n TORVEX_MODE = 1\n", "TORVEX_MODE"),
            ("&canopy_parameters", "&nest_points\nnest_mode = 1\n/\n&canopy_parameters", "nest"),
            ("WD_TYPE = 1, N_WIND_DIRECTION = 3", "N_WIND_DIRECTION = 0", "no wind direction"),
            ("270, 22.5,", "270, 270.01,", "one tag: 270_0"),
        ):
            with self.subTest(text=text), self.assertRaisesRegex(StudyError, text):
                self.study(CASE.replace(old, new, 1))

    def test_flat_runs_have_names_of_their_own(self):
        study = self.study(CASE.replace("&NML_RUN\n", "&NML_RUN\n TERRAIN_MODE = 'flat'\n", 1))
        self.assertEqual((study.prefix, study.angles), ("flat-", (0.0,)))

    def test_comments_and_blanks_do_not_count(self):
        plain = what_counts(CASE)
        other = CASE.replace("Free text", "Other text").replace("! the wood", "")
        other = other.replace("MIN_DXY = 50", "MIN_DXY  =  50  ! fine\n")
        self.assertEqual(what_counts(other), plain)
        for old, new in (("= 50", "= 51"), ("dbf_h = H", "dbf_h = G"), ("= 0.2,", "= 0.25,")):
            self.assertNotEqual(what_counts(CASE.replace(old, new)), plain)

    def test_steps_of_the_ladder_only_lower_factors(self):
        steps = ladder(self.study(CASE.replace("MAXIT = 300", "MAXIT = 300, URFU = 0.2")))
        self.assertEqual(steps[1].changes["URFU"], "0.2")
        self.assertEqual(steps[1].changes["URFV"], "0.3")
        self.assertEqual(steps[1].changes["URFP"], "0.1")
        self.assertNotIn("ACCEL", steps[1].changes)
        accelerated = ladder(self.study(CASE.replace("MAXIT = 300", "MAXIT = 300, ACCEL = 1")))
        self.assertEqual(len(accelerated), len(steps) + 1)
        for step in accelerated[1:]:
            self.assertEqual(step.changes["ACCEL"], "0")
        self.assertEqual(next_step(steps, -1, diverged=False), 0)
        self.assertEqual(next_step(steps, -1, diverged=True), 1)
        self.assertIsNone(next_step(steps, len(steps) - 1, diverged=False))


class Records(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def test_what_is_written_is_read(self):
        record = Record("270_0", 270.0, "converged", iterations=79, resid_u=1.5e-4)
        write_record(self.folder, record, "flat-")
        self.assertEqual(read_record(self.folder, "flat-"), record)
        self.assertIsNone(read_record(self.folder))

    def test_torn_records_and_those_of_other_releases(self):
        path = self.folder / "direction.json"
        for text in "", "{", "[]", '{"angle": 1}':
            path.write_text(text)
            self.assertIsNone(read_record(self.folder))
        path.write_text(json.dumps({"tag": "a", "angle": 1.0, "new": True}))
        self.assertEqual(read_record(self.folder), Record("a", 1.0))

    def test_who_is_at_work(self):
        record = Record("270_0", 270.0, "running")
        sign(record)
        write_record(self.folder, record)
        self.assertTrue(is_alive(self.folder, record))
        record.pid_start = "1"  # another process of this number
        self.assertFalse(is_alive(self.folder, record))
        record.host = "elsewhere"
        self.assertTrue(is_alive(self.folder, record))  # it was written just now
        os.utime(self.folder / "direction.json", (1, 1))
        self.assertFalse(is_alive(self.folder, record))

    def test_files_that_changed(self):
        path = self.folder / "a.map"
        path.write_text("one")
        record = Record("x", 0.0, inputs=states_of_files((path,), self.folder))
        self.assertEqual(changed_files(record, (path,), self.folder), [])
        os.utime(path, (5, 5))  # another time, the same content
        self.assertEqual(changed_files(record, (path,), self.folder), [])
        path.write_text("two")
        self.assertEqual(changed_files(record, (path,), self.folder), ["a.map"])
        self.assertEqual(changed_files(record, (), self.folder), ["a.map"])

    def test_statuses(self):
        for states, status in (
            (["converged"] * 2, 0),
            (["converged", "not converged"], 3),
            (["diverged"], 3),
            (["diverged", "failed"], 1),
            (["killed", "converged"], 1),
            (["failed", "interrupted"], 130),
        ):
            records = [Record("x", 0.0, state) for state in states]
            self.assertEqual(exit_status(records), status, states)


if __name__ == "__main__":
    unittest.main()
