"""torvex-prep check --json, read back by Python's own reader."""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

PREP = os.environ["TORVEX_PREP"]
EXAMPLE = pathlib.Path(os.environ["TORVEX_EXAMPLES"]) / "big_butte"
NAMES = {
    "mesh": {"ni", "nj", "nk", "cells"},
    "domain": {"max_rad", "top", "hmax", "hmin", "havg", "need_m"},
    "memory": {"bytes", "limit_bytes", "group_limit_bytes"},
    "disk": {"bytes"},
    "time": {"s_per_iteration"},
    "keys": {"given", "defaulted", "without_effect"},
}


class Check(unittest.TestCase):
    def check(self, label, status=0):
        """The answer of the check about the example, a label of a site replaced by these bytes."""
        with tempfile.TemporaryDirectory() as name:
            case = pathlib.Path(name) / "case"
            shutil.copytree(EXAMPLE, case)
            tin = case / "torvex_gentle.tin"
            tin.write_bytes(tin.read_bytes().replace(b"SUMMIT", label))
            done = subprocess.run([PREP, "check", "/f", str(tin), "--json"], stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE)
            self.assertEqual(done.returncode, status, done.stderr)
            return json.loads(done.stdout)

    def test_names_and_kinds(self):
        found = self.check(b"SUMMIT")
        self.assertEqual(set(found), {*NAMES, "maps", "sites", "warnings"})
        for name, members in NAMES.items():
            self.assertEqual(set(found[name]), members, name)
        for record in found["maps"]:
            self.assertEqual(set(record), {"cover_m", "largest_study_m"})
        for record in found["sites"]:
            self.assertEqual(set(record), {"ground", "inside"})
            self.assertIs(record["inside"], True)
        mesh = found["mesh"]
        self.assertEqual(mesh["cells"], mesh["ni"] * mesh["nj"] * mesh["nk"])
        self.assertGreater(found["time"]["s_per_iteration"], 0)
        # 802.1 m is what a run tells of the summit (README).
        self.assertAlmostEqual(found["sites"][0]["ground"], 802.1, delta=1.0)

    def test_texts_of_any_encoding(self):
        found = self.check(b"S\xfcd \xe5\xb1\xb1 \\")
        self.assertEqual(len(found["sites"]), len(self.check(b"SUMMIT")["sites"]))


if __name__ == "__main__":
    unittest.main()
