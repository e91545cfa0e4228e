"""Studies run to their end, broken off, changed and gone on with, by real runs of small cases."""

import csv
import json
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

import numpy as np

import torvex
from study.commands import COMMAND, PROGRAM, environment, small_study, torvex_study
from study.made_rasters import needs_study

TIMES = ("time_s", "peak_memory_mb", "host")


def summary(study):
    with (study / "out/summary.csv").open(newline="") as file:
        return list(csv.DictReader(file))


def without_times(study):
    rows = [{k: v for k, v in row.items() if k not in TIMES} for row in summary(study)]
    told = json.loads((study / "out/summary.json").read_text())
    for row in told["directions"]:
        for key in TIMES:
            row.pop(key)
    return rows, told, (study / "out/sites.csv").read_bytes()


def record(study, tag):
    return json.loads((study / "wd" / tag / "direction.json").read_text())


def edit(study, old, new):
    path = study / "torvex.tin"
    text = path.read_text()
    assert old in text, old
    path.write_text(text.replace(old, new))


@needs_study
@unittest.skipUnless(Path(PROGRAM).is_file(), "torvex is not built")
def is_under_way(directory):
    """Whether a direction's log of iterations tells of several."""
    logs = directory.glob("restart-*-torvex.conv.log")
    return any(log.read_text().count("\n   p: n=") > 3 for log in logs)


class Runs(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def run_study(self, study, *more, status=0, **options):
        done = torvex_study("run", study.name, *more, folder=self.folder, **options)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.assertNotIn("Traceback", done.stderr)
        return done.stdout

    def started(self, study, *more):
        return subprocess.Popen(
            [*COMMAND, "run", study.name, *more],
            cwd=self.folder,
            env=environment(),
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
        )

    def wait_for(self, condition, seconds=60.0):
        until = time.monotonic() + seconds
        while time.monotonic() < until:
            if condition():
                return
            time.sleep(0.05)
        self.fail("nothing came of waiting")

    def test_what_a_run_leaves_and_what_it_does_not_do_again(self):
        study = small_study(self.folder, "hill", "--directions", "270,90")
        told = self.run_study(study, "-j", "2")
        self.assertIn("2 directions: 2 converged", told)
        rows = summary(study)
        self.assertEqual([row["tag"] for row in rows], ["270_0", "090_0"])
        for row in rows:
            self.assertEqual(row["state"], "converged")
            self.assertLess(float(row["resid_u"]), 1e-3)
            self.assertLess(abs(float(row["mass_balance"])), 1e-5)
            self.assertGreater(float(row["peak_memory_mb"]), 5.0)
            # The hill is as good as symmetric: its top is faster than the slope before it.
            self.assertEqual((row["lowest_at"], row["highest_at"]), ("WEST", "TOP"))
        values = [float(row["highest_speed_up"]) for row in rows]
        self.assertAlmostEqual(values[0], values[1], delta=0.01)
        # The table has what the reader finds in the results.
        d = torvex.Direction(study / "wd/270_0", 270, case=study / "torvex.tin")
        site = next(s for s in d.placed_sites() if s.label == "TOP")
        expected = site.profile.flow(100.0, d.profile(0, 0)).speed_up
        self.assertAlmostEqual(
            float(rows[0]["highest_speed_up"]), float(expected), places=5
        )
        # What was kept: neither nodes nor start fields.
        left = {path.name for path in (study / "wd/270_0").glob("*.tuf")}
        iterations = int(rows[0]["iterations"])
        self.assertEqual(
            left,
            {
                "restart-270_0-xyzc.tuf",
                "restart-270_0-z0.tuf",
                f"restart-270_0-vpkeout_{iterations:05d}.tuf",
            },
        )
        before = (study / "wd/270_0/torvex.log").stat().st_mtime_ns
        files = without_times(study)
        self.assertIn("all 2 directions are done already", self.run_study(study))
        self.assertEqual((study / "wd/270_0/torvex.log").stat().st_mtime_ns, before)
        self.assertEqual(without_times(study), files)
        # Blanks and comments are no change of a case; a spacing is.
        edit(study, "MESH_VRATIO = 1.15", "MESH_VRATIO =   1.15 ! as it was")
        self.assertIn("all 2 directions are done already", self.run_study(study))

    def test_status_reads_files_only(self):
        study = small_study(self.folder, "hill", "--directions", "270")
        told = torvex_study("status", "hill", folder=self.folder)
        self.assertEqual(told.returncode, 0)
        self.assertIn("1 direction: 1 waiting", told.stdout)
        self.assertFalse((study / "wd").exists())
        self.run_study(study)
        told = torvex_study("status", "hill", folder=self.folder).stdout
        self.assertRegex(told, r"270_0  converged +\d+ iterations")

    def test_every_edit_of_the_case_is_honoured(self):
        study = small_study(self.folder, "hill", "--directions", "270")
        told = self.run_study(study, "--keep", "all")
        first = summary(study)[0]
        # Sharper criteria: the saved state is gone on from.
        edit(study, "MAXIT = 1000", "CC_OUT_U = 0.0001\n  MAXIT = 1000")
        told = self.run_study(study, "--keep", "all")
        self.assertIn("270_0: is gone on with: the case changed", told)
        second = summary(study)[0]
        self.assertGreater(int(second["iterations"]), int(first["iterations"]))
        self.assertLess(float(second["resid_u"]), 1e-4)
        # Another map: the program's own fingerprint says that it begins anew.
        path = study / "maps/roughness.map"
        path.write_text(path.read_text().replace("0.03", "0.05"))
        told = self.run_study(study, "--keep", "all")
        self.assertIn("maps/roughness.map changed", told)
        self.assertRegex(told, r"BASIC_Z0_FILE changed since .* begins anew")
        third = summary(study)[0]
        self.assertNotEqual(third["highest_speed_up"], second["highest_speed_up"])
        # Another mesh: what is saved does not fit, and that is said too.
        edit(study, "MESH_VRATIO = 1.15", "MESH_VRATIO = 1.2")
        told = self.run_study(study, "--keep", "all")
        self.assertIn("270_0: begun anew", told)
        self.assertEqual(summary(study)[0]["state"], "converged")
        # Another direction: the one that is done stays done.
        edit(study, "N_WIND_DIRECTION = 1", "N_WIND_DIRECTION = 2")
        edit(
            study, "WIND_DIRECTION_ANGLE = 270.0", "WIND_DIRECTION_ANGLE = 270.0, 45.0"
        )
        told = self.run_study(study)
        self.assertIn("1 of 2 directions are done already", told)
        self.assertEqual(len(summary(study)), 2)

    def test_lists_that_count_directions_follow_their_direction(self):
        study = small_study(self.folder, "hill", "--directions", "270,90")
        edit(
            study,
            "&NML_ER\n",
            "&NML_ER\n  USE_EQUIVALENT_ROUGHNESS = T\n  EQUIVALENT_ROUGHNESS = 0.01, 0.2\n",
        )
        self.run_study(study)
        for tag, expected in (("270_0", 0.01), ("090_0", 0.2)):
            text = (study / f"wd/{tag}/log-upwind_roughness-{tag}").read_text()
            self.assertAlmostEqual(float(text), expected, places=6)

    def test_not_converged_and_the_ladder(self):
        study = small_study(self.folder, "hill", "--directions", "270")
        edit(study, "MAXIT = 1000", "MAXIT = 50")
        told = self.run_study(study, status=3)
        self.assertIn("1 not converged", told)
        self.assertEqual(summary(study)[0]["iterations"], "50")
        # What did not converge is not done again by itself, and keeps all its files.
        self.assertIn("the direction is done already", self.run_study(study, status=3))
        self.assertTrue((study / "wd/270_0/restart-270_0-xyz.tuf").exists())
        told = self.run_study(study, "--retry")
        self.assertIn("270_0: next step: as many iterations again", told)
        row = summary(study)[0]
        self.assertEqual(
            (row["state"], row["step"]), ("converged", "as many iterations again")
        )
        self.assertGreater(int(row["iterations"]), 50)
        self.assertLessEqual(int(row["iterations"]), 100)

    def test_a_diverged_direction_climbs_past_more_of_the_same(self):
        study = small_study(self.folder, "hill", "--directions", "270")
        edit(
            study,
            "MAXIT = 1000",
            "URFU = 0.99\n URFV = 0.99\n URFW = 0.99\n URFP = 1.9\n MAXIT = 300",
        )
        told = self.run_study(study, status=3)
        self.assertIn("1 diverged", told)
        told = self.run_study(study, "--retry")
        self.assertIn("next step: smaller relaxation factors", told)
        self.assertNotIn("as many iterations again", told)
        row = summary(study)[0]
        self.assertEqual(row["state"], "converged")
        self.assertEqual(row["step"], "smaller relaxation factors")

    def test_parts_give_the_same_bits_as_one_run(self):
        fields = []
        for save in "0", "40":
            study = small_study(self.folder, f"s{save}", "--directions", "270")
            self.run_study(study, "--save-every", save)
            name = (
                f"restart-270_0-vpkeout_{int(summary(study)[0]['iterations']):05d}.tuf"
            )
            fields.append((study / "wd/270_0" / name).read_bytes())
        self.assertEqual(fields[0], fields[1])

    def test_ctrl_c_loses_nothing(self):
        study = small_study(self.folder, "hill", "--directions", "270,90")
        edit(study, "MAXIT = 1000", "CC_OUT_U = 1e-30\n  MAXIT = 100000")
        process = self.started(study, "-j", "2")
        self.wait_for(lambda: sum(map(is_under_way, study.glob("wd/*"))) == 2)
        told = torvex_study("status", "hill", folder=self.folder).stdout
        self.assertIn("2 running", told)
        process.send_signal(signal.SIGINT)
        out, errors = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 130, out + errors)
        self.assertNotIn("Traceback", errors)
        for tag in "270_0", "090_0":
            self.assertEqual(record(study, tag)["state"], "interrupted")
            self.assertGreater(record(study, tag)["iterations"], 0)
        done = record(study, "270_0")["iterations"]
        # A case that can be met goes on from there.
        edit(study, "CC_OUT_U = 1e-30", "CC_OUT_U = 1e-3")
        told = self.run_study(study)
        self.assertIn("270_0: is gone on with", told)
        self.assertGreaterEqual(int(summary(study)[0]["iterations"]), done)

    def test_two_at_one_study_do_not_disturb_each_other(self):
        study = small_study(self.folder, "hill", "--directions", "270")
        edit(study, "MAXIT = 1000", "CC_OUT_U = 1e-30\n  MAXIT = 100000")
        process = self.started(study)
        self.wait_for(lambda: any(map(is_under_way, study.glob("wd/*"))))
        told = torvex_study("run", "hill", folder=self.folder)
        self.assertEqual(told.returncode, 130, told.stdout + told.stderr)
        self.assertIn(f"270_0: left alone: process {process.pid}", told.stdout)
        self.assertIsNone(process.poll())
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=60)
        self.assertEqual(record(study, "270_0")["state"], "interrupted")

    def test_a_second_ctrl_c_ends_at_once(self):
        study = small_study(self.folder, "hill", "--directions", "270")
        edit(study, "MAXIT = 1000", "CC_OUT_U = 1e-30\n  MAXIT = 100000")
        process = self.started(study)
        self.wait_for(lambda: any(map(is_under_way, study.glob("wd/*"))))
        for _ in range(2):
            process.send_signal(signal.SIGINT)
            time.sleep(0.02)
        process.communicate(timeout=60)
        self.assertEqual(process.returncode, 130)
        told = torvex_study("status", "hill", folder=self.folder).stdout
        self.assertIn("1 interrupted", told)

    def test_a_killed_child_is_told_and_done_again(self):
        study = small_study(self.folder, "hill", "--directions", "270")
        edit(study, "MAXIT = 1000", "CC_OUT_U = 1e-30\n  MAXIT = 100000")
        process = self.started(study)
        self.wait_for(lambda: any(map(is_under_way, study.glob("wd/*"))))
        kids = Path(f"/proc/{process.pid}/task").glob("*/children")
        children = [int(n) for path in kids for n in path.read_text().split()]
        self.assertEqual(len(children), 1)
        os.kill(children[0], signal.SIGKILL)
        out, errors = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 1, out + errors)
        self.assertIn("ended by signal 9", out)
        edit(study, "CC_OUT_U = 1e-30", "CC_OUT_U = 1e-3")
        self.run_study(study)
        self.assertEqual(summary(study)[0]["state"], "converged")

    def test_a_stop_of_one_direction_leaves_the_others(self):
        study = small_study(self.folder, "hill", "--directions", "270,90")
        self.run_study(study)
        edit(
            study,
            "USE_DEFAULT_MAX_Z = .true.",
            "USE_DEFAULT_MAX_Z = .true.\n  UP_BR = 0.31",
        )
        # A folder in the place of a file that a run must write.
        (study / "wd/090_0/log-meshnumber").unlink()
        (study / "wd/090_0/log-meshnumber").mkdir()
        told = self.run_study(study, status=1)
        self.assertRegex(told, r"090_0: failed")
        self.assertIn("1 converged, 1 failed", told)

    def test_keys_and_programs_that_are_not_there(self):
        study = small_study(self.folder, "hill", "--directions", "270")
        done = subprocess.run(
            [*COMMAND, "run", "hill"],
            cwd=self.folder,
            env=environment() | {"TORVEX": str(self.folder / "none")},
            capture_output=True,
            text=True,
        )
        self.assertEqual(done.returncode, 1)
        self.assertIn("TORVEX is", done.stderr)
        self.assertNotIn("Traceback", done.stderr)
        edit(study, "MESH_VRATIO", "MESH_VRATTIO")
        done = torvex_study("run", "hill", folder=self.folder)
        self.assertEqual(done.returncode, 1)
        self.assertIn("did you mean MESH_VRATIO", done.stderr)
        done = torvex_study("run", "nothing", folder=self.folder)
        self.assertEqual(done.returncode, 1)
        self.assertIn("no study is there", done.stderr)

    def test_forests_as_drag_slow_the_wind_among_them(self):
        from study.made_rasters import geotiff, to_crs

        e0, n0 = to_crs(32632, 10.9, 47.0)
        cover = np.full((700, 700), 30)
        cover[
            300:400, 320:345
        ] = 10  # 1000 m by 250 m, before the top in wind from 270 degrees
        corner = (e0 - 3500, n0 + 3500)
        geotiff(self.folder / "cover.tif", cover, 32632, *corner, (10, 10), kind="Byte")
        grass = small_study(self.folder, "grass", "--directions", "270")
        words = "--dem dem.tif --landcover cover.tif --sites turbines.csv --height 100 --canopy"
        words += " --size 1000,1000 --cells 18000 --directions 270"
        done = torvex_study("new", "wood", *words.split(), folder=self.folder)
        self.assertEqual(done.returncode, 0, done.stderr)
        wood = self.folder / "wood"
        for study in grass, wood:
            self.run_study(study, "--keep", "all")
        log = (wood / "wd/270_0/torvex-prep.log").read_text()
        area = float(re.search(r"plan area inside the mesh +([\d.]+) m2", log)[1])
        self.assertAlmostEqual(area / (1000 * 250), 1.0, delta=0.15)  # on a map of 60 m
        # Below the tops of the trees, in the middle of them: 61 m west of the case's centre.
        low, among = (
            float(
                torvex.Direction(s / "wd/270_0", 270)
                .flow_at(12.0, east=-61.0, north=0.0)
                .speed
            )
            for s in (grass, wood)
        )
        self.assertLess(among, 0.5 * low)

    def test_several_studies_and_a_table_on_a_terminal(self):
        import pty

        for name in "a", "b":
            edit(
                small_study(self.folder, name, "--directions", "270"),
                "MAXIT = 1000",
                "MAXIT = 20",
            )
        try:
            leader, follower = pty.openpty()
        except OSError as problem:
            self.skipTest(f"no terminal can be had: {problem}")
        process = subprocess.Popen(
            [*COMMAND, "run", "a", "b"],
            cwd=self.folder,
            env=environment(TERM="xterm", COLUMNS="100"),
            stdout=follower,
            stderr=follower,
        )
        os.close(follower)
        shown = b""
        while True:
            try:
                part = os.read(leader, 65536)
            except OSError:
                break
            if not part:
                break
            shown += part
        os.close(leader)
        self.assertEqual(process.wait(60), 3)
        text = shown.decode(errors="replace")
        self.assertIn("residuals over their criteria", text)
        self.assertEqual(text.count("1 not converged"), 2)

    def test_a_case_as_it_is_made_converges_as_its_plain_iteration_does(self):
        small_study(self.folder, "other")  # the raster and the sites
        words = "--dem dem.tif --roughness 0.03 --sites turbines.csv --height 100"
        words += " --size 1000,1000 --cells 18000 --directions 270"
        done = torvex_study("new", "made", *words.split(), folder=self.folder)
        self.assertEqual(done.returncode, 0, done.stderr)
        made, plain = self.folder / "made", self.folder / "plain"
        shutil.copytree(made, plain)
        edit(plain, "ACCEL = 1", "ACCEL = 0")
        parts = self.folder / "parts"
        shutil.copytree(made, parts)
        for study in plain, made:
            self.run_study(study)
        self.run_study(parts, "--save-every", "4")
        self.assertEqual(without_times(parts), without_times(made))
        one, other = (summary(study)[0] for study in (plain, made))
        self.assertLess(int(other["iterations"]), 0.6 * int(one["iterations"]))
        for key in "lowest_speed_up", "highest_speed_up":
            self.assertAlmostEqual(float(one[key]), float(other[key]), delta=0.005)

    def test_what_remains(self):
        for keep, kinds in (
            ("sites", set()),
            ("all", {"xyz", "xyzc", "z0", "vpkeinp", "vpkeout"}),
        ):
            study = small_study(self.folder, keep, "--directions", "270")
            self.run_study(study, "--keep", keep)
            names = [path.name for path in (study / "wd/270_0").glob("*.tuf")]
            left = {
                re.sub(r"restart-270_0-([a-z0-9]+).*", r"\1", name) for name in names
            }
            self.assertEqual(left, kinds)
            self.assertEqual(len(list((study / "wd/270_0").glob("sites-*.tpd"))), 3)
            self.assertIn("the direction is done already", self.run_study(study))


@needs_study
@unittest.skipUnless(Path(PROGRAM).is_file(), "torvex is not built")
class Butte(unittest.TestCase):
    """The butte of the demo: the same case over the map of the example, and over one made from a
    GeoTIFF of the same heights in plane coordinates."""

    def test_the_same_speed_ups_from_a_raster(self):
        from study.made_rasters import geotiff, positions, to_crs
        from torvex.study.map_file import write_map
        from torvex.study.map_grid import Centre, grid_of_step
        from torvex.study.raster import open_rasters
        from torvex.study.terrain import elevation_on_map

        example = Path(__file__).resolve().parents[3] / "examples/big_butte"
        folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        text = (example / "torvex_gentle.tin").read_text()
        given = torvex.read_map(example / "elevation.map")
        case = torvex.read_case(example / "torvex_gentle.tin")
        centre = Centre(case.longitude, case.latitude)
        # The heights on a lattice of UTM, six metres wide.
        e0, n0 = to_crs(32612, centre.longitude, centre.latitude)
        half, step = 6120.0, 6.0
        count = round(2 * half / step)
        import pyproj

        back = pyproj.Transformer.from_crs("EPSG:32612", "EPSG:4326", always_xy=True)
        e, n = positions((count, count), e0 - half, n0 + half, (step, step))
        lon, lat = back.transform(e, n)
        i = (lon - given.longitude[0]) / (given.longitude[1] - given.longitude[0])
        j = (lat - given.latitude[0]) / (given.latitude[1] - given.latitude[0])
        from scipy.ndimage import map_coordinates

        heights = map_coordinates(
            given.values.astype(float), [i, j], order=1, mode="nearest"
        )
        path = geotiff(
            folder / "dem.tif", heights, 32612, e0 - half, n0 + half, (step, step)
        )
        grid = grid_of_step(centre, 5810.0, 12.0)
        found = elevation_on_map(open_rasters([path], centre), grid, centre)
        speeds = {}
        for name in "text", "raster":
            run = folder / name
            run.mkdir()
            (run / "roughness.map").write_bytes(
                (example / "roughness.map").read_bytes()
            )
            (run / "torvex.tin").write_text(text)
            if name == "text":
                (run / "elevation.map").write_bytes(
                    (example / "elevation.map").read_bytes()
                )
            else:
                write_map(run / "elevation.map", grid, found.values, "%.2f")
            done = subprocess.run([PROGRAM], cwd=run, capture_output=True, timeout=280)
            self.assertEqual(done.returncode, 0)
            for angle in case.angles:
                d = torvex.Direction(run, angle)
                inflow = d.profile(0, 0)
                speeds[name, angle] = np.array(
                    [s.profile.flow(50.0, inflow).speed_up for s in d.placed_sites()]
                )
        for angle in case.angles:
            one, other = speeds["text", angle], speeds["raster", angle]
            self.assertEqual(one.size, 3)
            self.assertLess(np.abs(other / one - 1).max(), 0.002)


if __name__ == "__main__":
    unittest.main()
