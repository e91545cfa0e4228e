"""What a study needs: from the program that checks a case, else from an estimate."""

import json
import subprocess
import tempfile
import unittest
from pathlib import Path

import numpy as np

from study.commands import COMMAND, PROGRAM, environment, small_study
from study.made_rasters import needs_study

TOLD = {
    "mesh": {"ni": 44, "nj": 34, "nk": 32, "cells": 47872},
    "domain": {
        "max_rad": 707.1,
        "top": 1500.0,
        "hmax": 160.0,
        "hmin": 100.0,
        "havg": 101.0,
        "need_m": 2900.0,
    },
    "maps": [{"cover_m": 3000.0, "largest_study_m": 1040.0}],
    "memory": {"bytes": 40_000_000, "limit_bytes": 10**9, "group_limit_bytes": 100_000_000},
    "disk": {"bytes": 4_000_000},
    "time": {"s_per_iteration": 0.01},
    "sites": [{"ground": 160.0, "inside": True}, {"ground": None, "inside": False}],
    "keys": {"given": [], "defaulted": [], "without_effect": ["MAX_Z"]},
    "warnings": ["the slope is 50 degrees"],
}


@needs_study
@unittest.skipUnless(Path(PROGRAM).is_file(), "torvex is not built")
class Check(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.study = small_study(self.folder, "hill")

    def stand_in(self, text, status=0):
        path = self.folder / "torvex-prep"
        answer = self.folder / "answer"
        answer.write_text(text)
        path.write_text(
            f'#!/bin/sh\necho "$*" > {self.folder}/asked\ncat {answer}\nexit {status}\n'
        )
        path.chmod(0o755)
        return path

    def check(self, prep):
        return subprocess.run(
            [*COMMAND, "check", "hill"],
            cwd=self.folder,
            env=environment() | {"TORVEX_PREP": str(prep)},
            capture_output=True,
            text=True,
        )

    def test_what_the_program_says_is_told_and_drawn(self):
        from matplotlib.image import imread

        done = self.check(self.stand_in(json.dumps(TOLD)))
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("check /f", (self.folder / "asked").read_text())
        self.assertIn("--json", (self.folder / "asked").read_text())
        for text in (
            "44 x 34 x 32 = 47872 cells",
            "40 MB of memory, 0.1 GB may be taken, and 4 MB",
            "reaches 3000 m from the centre, enough for a study area of 1040 m",
            "site WEST: ground ?, OUTSIDE",
            "keys without effect: MAX_Z",
            "warning: the slope is 50 degrees",
            # 0.01 s, MAXIT 1000
            "at most 10 s a direction",
        ):
            self.assertIn(text, done.stdout)
        self.assertNotIn("estimate", done.stdout)
        picture = imread(self.study / "out/check.png")
        self.assertGreater(np.ptp(picture[:, :, :3]), 0.5)

    def test_an_older_program_is_made_up_for_by_an_estimate(self):
        done = self.check(self.stand_in("usage", 102))
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("these are estimates", done.stdout)
        self.assertRegex(done.stdout, r"mesh: \d+ cells")

    def test_forests_are_left_aside_until_they_are_prepared(self):
        path = self.study / "torvex.tin"
        (self.study / "maps/trees.shp").write_text("")
        path.write_text(
            path.read_text()
            + "&canopy_parameters\ncanopy_mode = 1\n/\n"
            + "&shp_parameters\nsf_tree%filename = 'maps/trees.shp'\n/\n"
        )
        prep = self.stand_in(json.dumps(TOLD))
        prep.write_text(f'#!/bin/sh\ncp "$3" {self.folder}/seen\ncat {self.folder}/answer\n')
        done = self.check(prep)
        self.assertEqual(done.returncode, 0, done.stderr)
        seen = (self.folder / "seen").read_text()
        self.assertIn("canopy_mode = 0", seen)
        self.assertNotIn("canopy_mode = 1", seen)
        self.assertEqual(list(self.study.glob(".check*")), [])

    def test_a_stop_ends_the_check_too(self):
        done = self.check(self.stand_in("too small a map", 151))
        self.assertEqual(done.returncode, 1)
        self.assertIn("a run would end with status 151", done.stderr)
        self.assertIn("too small a map", done.stderr)

    def test_nonsense_is_told(self):
        for text in ("{", "{}", '{"mesh": 5}', "nothing"):
            done = self.check(self.stand_in(text))
            self.assertEqual(done.returncode, 1, text)
            self.assertIn("not as expected", done.stderr)
            self.assertNotIn("Traceback", done.stderr)

    def test_memory_limits_the_directions_at_a_time(self):
        from torvex.study.machine import cores
        from torvex.study.prep_check import check_of
        from torvex.study.run import RunOptions, side_by_side

        # 40 MB each; four fifths of the smaller limit hold two.
        check = check_of(TOLD)
        self.assertEqual(check.limit, 100_000_000)
        at_once, threads = side_by_side(check, 12, RunOptions())
        self.assertEqual(at_once, min(2, cores()))
        self.assertEqual(threads, max(1, cores() // at_once))
        self.assertEqual(side_by_side(check, 12, RunOptions(jobs=5))[0], 5)
        self.assertEqual(side_by_side(check, 1, RunOptions())[0], 1)


if __name__ == "__main__":
    unittest.main()
