"""Which directions of a run may be looked at: its table, a mesh beside another one's result."""

import importlib.util
import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
import unittest.mock
import warnings
from pathlib import Path

import numpy as np

import small_case
import torvex

EXAMPLES = Path(__file__).resolve().parents[2] / "python" / "examples"


def setUpModule():
    global RUN
    directory = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(directory.cleanup)
    RUN = Path(directory.name)
    small_case.run(RUN)


class InCopy(unittest.TestCase):
    """In a copy of the run with the times of its files."""

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.run_copy = Path(directory.name) / "run"
        shutil.copytree(RUN, self.run_copy)

    def file(self, name, tag="270_0"):
        return self.run_copy / f"restart-{tag}-{name}"

    def table(self, *rows):
        slots = [f"{len(rows) + 1:8d}", *rows]
        text = "".join(f"{slot:<119}\n" for slot in slots)
        (self.run_copy / "view-wind_direction.dat").write_text(text)

    def age(self, path, by=100):
        then = path.stat().st_mtime - by
        os.utime(path, (then, then))

    def refused(self, *words, tag="270_0", **options):
        with self.assertRaises((FileNotFoundError, torvex.FormatError)) as caught:
            torvex.Direction(self.run_copy, tag, **options)
        for word in words:
            self.assertIn(word, str(caught.exception))


class MeshAndResult(InCopy):
    def setUp(self):
        super().setUp()
        self.result = self.file("vpkeout_00002.tuf")

    def test_a_whole_run_is_read_without_a_warning(self):
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            for tag in small_case.TAGS:
                torvex.Direction(self.run_copy, tag)
            torvex.Direction(self.run_copy, "270_0", iteration=2)

    def test_without_restart_info_no_result_is_taken(self):
        self.file("restart.info").unlink()
        shutil.copy2(self.result, self.file("vpkeout_00010.tuf"))
        self.refused(str(self.file("restart.info")), "run the direction again", "(there: 2, 10)")

    def test_without_restart_info_a_result_may_be_asked_for(self):
        self.file("restart.info").unlink()
        d = torvex.Direction(self.run_copy, 270, iteration=2)
        self.assertEqual(d.result.path, self.result)
        self.refused("vpkeout_00007.tuf", iteration=7)

    def test_without_any_result(self):
        self.file("restart.info").unlink()
        self.result.unlink()
        self.refused(str(self.file("restart.info")), "no finished result")

    def test_an_older_result_that_restart_info_names_is_told(self):
        self.age(self.result)
        with self.assertWarnsRegex(
            torvex.OldResultWarning, r"vpkeout_00002\.tuf: older than .*xyz"
        ):
            torvex.Direction(self.run_copy, 270)

    def test_an_older_result_that_nothing_names_is_refused(self):
        shutil.copy2(self.result, self.file("vpkeout_00001.tuf"))
        self.age(self.file("vpkeout_00001.tuf"))
        self.refused("vpkeout_00001.tuf: older than the mesh", iteration=1)
        self.file("restart.info").unlink()
        self.age(self.result)
        self.refused("vpkeout_00002.tuf: older than the mesh", iteration=2)

    def test_a_resume_renews_the_centres_and_not_the_nodes(self):
        self.age(self.result)
        for name in ("xyz.tuf", "z0.tuf", "vpkeinp.tuf"):
            self.age(self.file(name), by=200)
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            torvex.Direction(self.run_copy, 270)

    def shrunk(self, name):
        """One of the files with extents of another mesh."""
        path = self.file(name)
        data = bytearray(path.read_bytes())
        extents = np.frombuffer(data, "<i4", 3, offset=16)
        # As many values, so that only the extents differ.
        data[16:28] = extents[[1, 0, 2]].tobytes()
        path.unlink()
        path.write_bytes(data)

    def test_files_of_another_mesh_are_refused(self):
        for name in ("xyz.tuf", "vpkeinp.tuf", "vpkeout_00002.tuf"):
            with self.subTest(name=name):
                shutil.copytree(RUN, self.run_copy, dirs_exist_ok=True)
                self.shrunk(name)
                self.refused(name, "the extents are", "expected")

    def test_restart_info_of_another_mesh_is_refused(self):
        with self.file("restart.info").open("a") as out:
            out.write(" 4 5 6\n")
        self.refused("restart.info: line 3: the extents are (4, 5, 6)")

    def test_a_run_that_was_killed_on_a_new_mesh(self):
        # The first direction of a fresh run is broken off behind its mesh: the old result, of the
        # same counts, still lies there.
        endless = small_case.CASE.replace("MAXIT = 2", "MAXIT = 100000")
        self.assertNotEqual(endless, small_case.CASE)
        with unittest.mock.patch.object(small_case, "HILL_HEIGHT", 60.0):
            small_case.write_maps(self.run_copy)
        started = self.file("vpkeinp.tuf", "000_0").stat().st_mtime_ns
        with small_case.start(self.run_copy, endless, stdout=subprocess.DEVNULL) as running:
            deadline = time.monotonic() + 120
            while (
                self.file("vpkeinp.tuf", "000_0").stat().st_mtime_ns == started
                and running.poll() is None
                and time.monotonic() < deadline
            ):
                time.sleep(0.02)
            ended = running.poll()
            running.kill()
        self.assertIsNone(ended)
        self.assertTrue(self.file("vpkeout_00002.tuf", "000_0").exists())
        self.refused("restart.info is missing", "there: 2", tag="000_0")
        self.refused("older than the mesh", tag="000_0", iteration=2)
        usable, remarks = torvex.usable_directions(self.run_copy)
        self.assertEqual(usable, [])
        self.assertEqual(len(remarks), 3)
        self.assertIn("wind from 0.0 degrees: left out: ", remarks[0])
        self.assertIn("restart.info is missing", remarks[0])
        self.assertIn("022_5: left out: view-wind_direction.dat does not name it", remarks[1])


class Table(InCopy):
    def tags(self):
        return [(row.tag, row.state) for row in torvex.direction_states(self.run_copy)]

    def test_states_of_the_run(self):
        self.assertEqual(self.tags(), [(tag, 2) for tag in small_case.TAGS])
        self.assertEqual(torvex.Direction(self.run_copy, 22.5).state, 2)

    def test_each_state(self):
        self.table("  0.0 1", " 22.5 3", "270.0 0")
        self.assertEqual(self.tags(), [("000_0", 1), ("022_5", 3), ("270_0", 0)])
        self.assertEqual(torvex.Direction(self.run_copy, "022_5").state, 3)
        self.table("270.0 1")
        self.assertIsNone(torvex.Direction(self.run_copy, "022_5").state)
        (self.run_copy / "view-wind_direction.dat").unlink()
        self.assertIsNone(torvex.Direction(self.run_copy, "270_0").state)

    def test_a_prefix(self):
        (self.run_copy / "view-wind_direction.dat").rename(
            self.run_copy / "flat2-view-wind_direction.dat"
        )
        for path in self.run_copy.glob("restart-*"):
            path.rename(path.with_name("flat2-" + path.name))
        usable, remarks = torvex.usable_directions(self.run_copy, "flat2-")
        self.assertEqual([d.tag for d in usable], list(small_case.TAGS))
        self.assertEqual(remarks, [])
        with self.assertRaisesRegex(FileNotFoundError, "view-wind_direction.dat"):
            torvex.usable_directions(self.run_copy)

    def test_a_row_rounds_where_a_tag_cuts(self):
        # 11.28 degrees: 11.3 in the table, 011_2 in the names of files.
        self.table(" 11.3 1")
        self.assertEqual(self.tags(), [("011_3", 1)])  # no mesh of either
        self.file("xyzc.tuf", "011_2").touch()
        self.assertEqual(self.tags(), [("011_2", 1)])

    def test_the_case_tells_the_decimals_that_a_tag_cuts(self):
        for path in self.run_copy.glob("restart-270_0-*"):
            path.rename(path.with_name(path.name.replace("270_0", "270_2")))
        self.table("270.3 1")
        (row,), _ = torvex.usable_directions(self.run_copy)
        self.assertEqual(row.angle, 270.2)
        case = self.run_copy / "torvex.tin"
        case.write_text(case.read_text().replace("270.0", "270.25"))
        (row,), _ = torvex.usable_directions(self.run_copy)
        self.assertEqual(row.angle, 270.25)

    def test_of_two_meshes_the_newer_is_that_of_the_later_row(self):
        for tag, by in (("011_2", 20), ("011_3", 10)):
            self.file("xyzc.tuf", tag).touch()
            self.age(self.file("xyzc.tuf", tag), by)
        self.table(" 11.3 1", " 11.3 2")  # 11.28 and 11.3 degrees
        self.assertEqual(self.tags(), [("011_2", 1), ("011_3", 2)])
        self.table(" 11.3 1")  # 11.3, 11.28 being of an earlier run
        self.assertEqual(self.tags(), [("011_3", 1)])


class Scripts(InCopy):
    def call(self, script, *arguments):
        return subprocess.run(
            [sys.executable, EXAMPLES / script, self.run_copy, *arguments],
            capture_output=True,
            text=True,
        )

    def test_site_table_marks_and_leaves_out(self):
        self.table("270.0 2", "  0.0 3")
        done = self.call("site_table.py")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("wind from 270.0 degrees, 2 iterations, NOT CONVERGED\n", done.stdout)
        self.assertIn("wind from 0.0 degrees: left out: diverged\n", done.stdout)
        self.assertIn("022_5: left out: view-wind_direction.dat does not name it", done.stdout)
        self.assertEqual(done.stdout.count("iterations"), 1)

    def test_site_table_of_each_state(self):
        for state, text in (("0", "NOT FINISHED"), ("1", "converged")):
            self.table("270.0 " + state)
            self.assertIn(f"2 iterations, {text}\n", self.call("site_table.py").stdout)

    def test_a_doubtful_result_is_shown_with_a_line(self):
        self.age(self.file("vpkeout_00002.tuf"))
        done = self.call("site_table.py")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertRegex(done.stdout, r"wind from 270.0 degrees: .*vpkeout_00002\.tuf: older than")
        self.assertEqual(done.stdout.count("older than"), 1)

    def test_site_table_without_anything_to_show(self):
        self.table("  0.0 3")
        done = self.call("site_table.py")
        self.assertEqual(done.returncode, 1)
        self.assertIn("wind from 0.0 degrees: left out: diverged\n", done.stdout)
        self.assertIn("no direction", done.stderr)
        (self.run_copy / "view-wind_direction.dat").unlink()
        done = self.call("site_table.py")
        self.assertEqual(done.returncode, 1)
        self.assertIn("view-wind_direction.dat is missing", done.stderr)
        self.assertNotIn("Traceback", done.stderr)

    @unittest.skipUnless(importlib.util.find_spec("matplotlib"), "matplotlib is missing")
    def test_maps_of_what_the_table_names(self):
        self.table("270.0 1", "  0.0 3")
        done = self.call("speed_up_map.py", "--heights", "20")
        self.assertEqual(done.returncode, 0, done.stderr)
        drawn = sorted(path.name for path in self.run_copy.glob("*.png"))
        self.assertEqual(drawn, ["profiles_270_0.png", "speed_up_270_0.png"])
        self.assertIn("wind from 0.0 degrees: left out: diverged\n", done.stderr)
        self.assertIn("022_5: left out: ", done.stderr)

    @unittest.skipUnless(importlib.util.find_spec("matplotlib"), "matplotlib is missing")
    def test_maps_of_a_direction_that_diverged(self):
        self.table("270.0 1", "  0.0 3")
        done = self.call("speed_up_map.py", "--tag", "000_0")
        self.assertEqual(done.returncode, 1)
        self.assertIn("left out: diverged", done.stderr)
        self.assertEqual(list(self.run_copy.glob("*.png")), [])


if __name__ == "__main__":
    unittest.main()
