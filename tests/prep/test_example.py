"""The commands in the README of the example of maps, run as they are printed in a copy of it."""

import unittest

import torvex
from copied_example import CopiedExample


class ExampleOfMaps(CopiedExample):
    folders = ("maps", "askervein")

    def test_commands_of_the_readme(self):
        self.assertEqual(len(self.commands()), 3)
        for command in self.commands():
            self.run_command(command)
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
