"""The commands in the README of the wood, run as printed, and the numbers that it tells."""

import importlib.util
import re
import unittest

import torvex
from copied_example import CopiedExample


class ExampleOfTheWood(CopiedExample):
    folders = ("wood",)

    def test_commands_and_numbers_of_the_readme(self):
        prepare, run, sites, picture = self.commands()
        told = self.run_command(prepare)
        self.assertIn("polygons read 109, used 107, 2 without a height", told)
        self.run_command(run)
        self.assertEqual([row.state for row in torvex.direction_states(self.folder)], [1, 1])
        table = self.run_command(sites)
        self.assertIn("BEHIND_700", table)
        if importlib.util.find_spec("matplotlib"):
            (self.folder / "wood_270_0.png").unlink()
            self.run_command(picture)
            self.assertTrue((self.folder / "wood_270_0.png").exists())

        rows = re.findall(
            r"^\| .*?(?:m|edge) .*?\| (\S+) \| (\S+) \| (\S+) \| (\S+) % \|$",
            self.readme,
            re.MULTILINE,
        )
        d = torvex.Direction(self.folder, "270_0")
        placed = d.placed_sites()
        self.assertEqual((len(rows), len(placed)), (10, 10))
        inflow = d.profile(0, 0)
        for site, row in zip(placed, rows):
            low, high = (site.profile.flow(height, inflow) for height in (10, 40))
            found = (low.speed_up, high.speed_up, high.flow_angle, 100 * high.turbulence_intensity)
            for value, printed, last_place in zip(found, map(float, row), (0.01, 0.01, 0.1, 1)):
                self.assertAlmostEqual(value, printed, delta=last_place, msg=site.label)


if __name__ == "__main__":
    unittest.main()
