"""The commands in the README of the example of maps, run as they are printed in a copy of it."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

import torvex

EXAMPLES = Path(os.environ["TORVEX_EXAMPLES"])
PROGRAMS = {"torvex-prep": os.environ["TORVEX_PREP"], "torvex": os.environ["TORVEX_PROGRAM"]}


class ExampleOfMaps(unittest.TestCase):
    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory()
        root = Path(self.temporary.name)
        for folder in ("askervein", "maps"):
            shutil.copytree(EXAMPLES / folder, root / "examples" / folder)
        (root / "build/bin").mkdir(parents=True)
        for name, path in PROGRAMS.items():
            (root / "build/bin" / name).symlink_to(path)
        self.folder = root / "examples/maps"

    def tearDown(self):
        self.temporary.cleanup()

    def test_commands_of_the_readme(self):
        readme = (self.folder / "README.md").read_text()
        commands = re.findall(r"^    (\S+/torvex.*)$", readme, re.MULTILINE)
        self.assertEqual(len(commands), 3)
        for command in commands:
            done = subprocess.run(
                command, shell=True, cwd=self.folder, capture_output=True, text=True
            )
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertNotIn("151", done.stderr)
        for name in (
            "terrain.map",
            "roughness.map",
            "terrain.ppm",
            "roughness_check_tvm.shp",
            "view-map.dat",
            "view-map-roughness.dat",
            "TERRAIN.GRD",
            "ROUGH.GRD",
        ):
            self.assertTrue((self.folder / name).exists(), name)
        # The woods stand where they were drawn, and the ground is that of the larger map.
        roughness = torvex.read_map(self.folder / "roughness.map")
        self.assertAlmostEqual(float(roughness.values.max()), 0.8, places=5)
        self.assertAlmostEqual(float(roughness.values.min()), 0.03, places=5)
        terrain = torvex.read_map(self.folder / "terrain.map")
        larger = torvex.read_map(self.folder / "../askervein/elevation.map")
        i = int(abs(terrain.longitude + 7.3757).argmin())
        j = int(abs(terrain.latitude - 57.1891).argmin())
        m = int(abs(larger.longitude - terrain.longitude[i]).argmin())
        n = int(abs(larger.latitude - terrain.latitude[j]).argmin())
        self.assertAlmostEqual(terrain.values[i, j], larger.values[m, n], delta=5)


if __name__ == "__main__":
    unittest.main()
