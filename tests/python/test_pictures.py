"""What stands in the pictures; the pictures themselves are for eyes."""

import importlib.util
import tempfile
import unittest
import unittest.mock
from pathlib import Path
from types import SimpleNamespace

import numpy as np

import torvex
from torvex import packages, pictures

HAS_MATPLOTLIB = importlib.util.find_spec("matplotlib") is not None


def direction(state=1, angle=270.0, rise=0.0):
    """As much of a direction as the pictures ask for: a speed-up of 1 + rise h at its two columns
    in the circle that is seen, and 9 at one far outside."""
    east = np.array([[-100.0, 100.0, 100.0], [-100.0, 100.0, 900.0]])
    return SimpleNamespace(
        directory=Path("/nowhere"),
        prefix="",
        east=east,
        north=np.array([[-100.0, -100.0, 100.0], [100.0, 100.0, 100.0]]),
        angle=angle,
        state=state,
        speed_up=lambda height: np.where(east < 500, 1 + rise * height, 9.0),
    )


class Colours(unittest.TestCase):
    def test_one_reach_for_all_directions_and_heights(self):
        two = [direction(rise=-0.004), direction(rise=0.002)]
        self.assertAlmostEqual(pictures.colour_reach(two, (10.0, 80.0)), 0.4)  # 0.32, upwards
        self.assertAlmostEqual(pictures.colour_reach(two[1:], (10.0, 80.0)), 0.2)

    def test_limits_of_the_reach(self):
        self.assertAlmostEqual(pictures.colour_reach([direction()], (10.0,)), 0.1)
        self.assertAlmostEqual(pictures.colour_reach([direction(rise=0.5)], (10.0,)), 1.0)


class Region(unittest.TestCase):
    def test_half_the_mesh_without_the_log_of_this_mesh(self):
        d = direction()
        self.assertEqual(pictures.study_radius(d), 100.0)  # the mesh is 200 m wide to the north
        with tempfile.TemporaryDirectory() as directory:
            d.directory = Path(directory)
            log = "   3 (ni)\n   2 (nj)\n   1 (nk)\n" + "".join(
                f" {value} ({name})\n"
                for name, value in (("x1", -9), ("x2", -5), ("x3", 55), ("y1", -5), ("y2", 5))
            )
            log += "#==x(i)==\n 1\n 2\n 3\n#==y(j)==\n 1\n 2\n#==x(i)==\n 1\n"
            (d.directory / "log-meshnumber").write_text(log)
            d.ni, d.nj, d.nk = 3, 2, 1
            self.assertEqual(pictures.study_radius(d), 55.0)
            d.nk = 2  # a later run has sized another mesh
            self.assertEqual(pictures.study_radius(d), 100.0)


class Titles(unittest.TestCase):
    def test_a_state_that_is_not_as_it_should_be(self):
        for state, text in ((1, ""), (None, ""), (2, " (NOT CONVERGED)"), (0, " (NOT FINISHED)")):
            self.assertEqual(pictures.title(direction(state)), "wind from 270°" + text)
        self.assertEqual(pictures.title(direction(angle=22.5)), "wind from 22.5°")


@unittest.skipUnless(HAS_MATPLOTLIB, "matplotlib is missing")
class Sites(unittest.TestCase):
    def test_sites_stand_at_their_places(self):
        figure, axes = pictures._pyplot().subplots()
        sites = [
            torvex.Site("A", None, 0, 0, 250.0, -500.0),
            torvex.Site("B", None, 0, 0, -1250.0, 0.0),
        ]
        pictures._draw_sites(axes, sites)
        drawn = [tuple(map(float, line.get_xydata()[0])) for line in axes.lines]
        self.assertEqual(drawn, [(0.25, -0.5), (-1.25, 0.0)])
        self.assertEqual(
            [(t.get_text(), t.xy) for t in axes.texts], [("A", (0.25, -0.5)), ("B", (-1.25, 0.0))]
        )
        pictures._pyplot().close(figure)


class Missing(unittest.TestCase):
    def test_a_package_that_is_not_there_is_named(self):
        with self.assertRaisesRegex(torvex.MissingPackage, "not_there.*install.*not_there"):
            packages.need("not_there.part")

    def test_the_package_of_the_distribution_is_named(self):
        with unittest.mock.patch.dict("sys.modules", {"matplotlib": None}):
            with self.assertRaisesRegex(torvex.MissingPackage, "install.*python3-matplotlib"):
                packages.need("matplotlib")


if __name__ == "__main__":
    unittest.main()
