"""Studies as arrays of jobs, under a real scheduler on this machine."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from study.commands import COMMAND, PROGRAM, environment, small_study, torvex_study
from study.made_rasters import needs_study
from study.slurm_cluster import Cluster, why_not
from study.test_run import edit, record, summary, without_times

BUILT = Path(PROGRAM).is_file()


@needs_study
@unittest.skipUnless(BUILT, "torvex is not built")
class DryRun(unittest.TestCase):
    def files(self, study):
        # The check of the case keeps a log.
        return sorted(path for path in study.rglob("*") if path.suffix != ".log")

    def test_scripts_are_shown_and_nothing_is_written(self):
        with tempfile.TemporaryDirectory() as folder:
            study = small_study(folder, "hill", "--directions", "270,90")
            before = self.files(study)
            words = ["--slurm", "--dry-run", "--partition", "main", "--time", "30", "--mem", "1G"]
            done = torvex_study("run", "hill", *words, folder=folder)
            self.assertEqual(done.returncode, 0, done.stderr)
            for text in ("--array=1-2", "--partition=main", "--time=30", "--mem=1G", "gather"):
                self.assertIn(text, done.stdout)
            self.assertEqual(self.files(study), before)

    def test_no_array_is_larger_than_the_scheduler_takes(self):
        with tempfile.TemporaryDirectory() as folder:
            small_study(folder, "hill", "--sectors", "5")
            tools = Path(folder) / "tools"
            tools.mkdir()
            (tools / "scontrol").write_text("#!/bin/sh\necho 'MaxArraySize            = 3'\n")
            (tools / "scontrol").chmod(0o755)
            path = f"{tools}:{os.environ['PATH']}"
            done = torvex_study("run", "hill", "--slurm", "--dry-run", folder=folder, PATH=path)
            self.assertEqual(done.returncode, 0, done.stderr)
            counts = re.findall(r"--array=1-(\d+)", done.stdout)
            self.assertEqual(counts, ["2", "2", "1"])
            for tag in "000_0", "072_0", "144_0", "216_0", "288_0":
                self.assertEqual(done.stdout.count(f"\t{tag}\n"), 1)

    def test_without_a_scheduler(self):
        with tempfile.TemporaryDirectory() as folder:
            small_study(folder, "hill", "--directions", "270")
            done = torvex_study("run", "hill", "--slurm", folder=folder, PATH="/nonexistent")
            self.assertEqual(done.returncode, 1)
            self.assertIn("sbatch is not on the path", done.stderr)
            done = torvex_study("run", "hill", "--time", "30", folder=folder)
            self.assertEqual(done.returncode, 1)
            self.assertIn("need --slurm", done.stderr)


@needs_study
@unittest.skipUnless(BUILT, "torvex is not built")
@unittest.skipIf(why_not(), why_not())
class Arrays(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        cluster = self.folder / "cluster"
        cluster.mkdir()
        self.cluster = self.enterContext(Cluster(cluster))

    def study(self, name, *more):
        study = small_study(self.folder, name, *more)
        criteria = "".join(f"CC_OUT_{q} = 0.01\n  " for q in "UVW")
        edit(study, "MAXIT = 1000", f"{criteria}MAXIT = 200")
        return study

    def submit(self, *words):
        done = subprocess.run(
            [*COMMAND, "run", "--slurm", *words],
            cwd=self.folder,
            env=environment() | self.cluster.environment,
            capture_output=True,
            text=True,
            timeout=120,
        )
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return done.stdout

    def array_of(self, study, number=1):
        text = (study / f"slurm/{number:03d}/jobs.txt").read_text()
        return text.split()[1]

    def test_an_array_gives_what_a_local_run_gives_though_a_task_is_killed(self):
        local = self.study("local", "--sectors", "12")
        cluster = self.folder / "cluster-study"
        shutil.copytree(local, cluster)
        self.submit("cluster-study", "--save-every", "10", "--at-most", "1", "--time", "30")
        job = self.array_of(cluster)
        first = cluster / "wd/000_0"
        saved = first / "restart-000_0-restart.info"
        self.cluster.wait_for(saved.exists, 120)
        self.cluster.call("scontrol", "requeue", f"{job}_1")
        told = f"array task 1 of {job} was not broken off in the middle"

        def is_waiting():
            shown = self.cluster.call("scontrol", "show", "job", f"{job}_1")
            return "JobState=PENDING" in shown and "Restarts=1" in shown

        self.cluster.wait_for(is_waiting, 60)
        self.assertEqual(record(cluster, "000_0")["state"], "interrupted", told)
        self.cluster.call("scontrol", "update", f"JobId={job}_1", "StartTime=now")
        self.cluster.wait_for(self.cluster.is_empty, 600)
        output = (cluster / "slurm/001/task1-1.txt").read_text()
        self.assertIn("000_0: resume: it was broken off", output)
        self.assertIn("12 directions: 12 converged", (cluster / "slurm/001/gather.txt").read_text())
        done = torvex_study("run", "local", folder=self.folder, timeout=600)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertEqual(len(summary(local)), 12)
        self.assertEqual(without_times(cluster), without_times(local))

    def test_too_little_memory_ends_tasks_and_more_of_it_ends_the_study(self):
        one, other = self.study("one", "--directions", "270"), self.study(
            "two", "--directions", "90"
        )
        # A task that does not end by itself, since memory is looked at every second or so only; and
        # more than enough for the shell that is begun first, not for what comes of it.
        for study in one, other:
            edit(study, "MAXIT = 200", "CC_OUT_M = 1e-30\n  MAXIT = 100000")
        self.submit("one", "two", "--mem", "12M", "--time", "30")
        self.cluster.wait_for(self.cluster.is_empty, 300)
        for study in one, other:
            rows = summary(study)
            self.assertEqual(len(rows), 1)
            self.assertIn(rows[0]["state"], ("killed", "waiting"))
            edit(study, "CC_OUT_M = 1e-30\n  MAXIT = 100000", "MAXIT = 200")
        told = self.submit("one", "two", "--time", "30")
        self.assertIn("2 directions submitted", told)
        self.cluster.wait_for(self.cluster.is_empty, 300)
        for study in one, other:
            self.assertEqual([row["state"] for row in summary(study)], ["converged"])
        self.assertIn("all directions are done", self.submit("one", "two"))


if __name__ == "__main__":
    unittest.main()
