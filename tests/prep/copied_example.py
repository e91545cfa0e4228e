"""A copy of folders under examples/, in which the commands of their README run as printed."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

EXAMPLES = Path(os.environ["TORVEX_EXAMPLES"])
PROGRAMS = {"torvex-prep": os.environ["TORVEX_PREP"], "torvex": os.environ["TORVEX_PROGRAM"]}


class CopiedExample(unittest.TestCase):
    """The first of `folders` is the example, the others are what it needs beside it."""

    folders = ()

    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory()
        root = Path(self.temporary.name)
        for folder in self.folders:
            shutil.copytree(EXAMPLES / folder, root / "examples" / folder)
        (root / "python").symlink_to(EXAMPLES.parent / "python")
        (root / "build/bin").mkdir(parents=True)
        for name, path in PROGRAMS.items():
            (root / "build/bin" / name).symlink_to(path)
        self.folder = root / "examples" / self.folders[0]
        self.readme = (self.folder / "README.md").read_text()

    def tearDown(self):
        self.temporary.cleanup()

    def commands(self):
        """The indented lines of the README."""
        return re.findall(r"^    (\S.*)$", self.readme, re.MULTILINE)

    def run_command(self, command):
        """Runs a command of the README, which must end well, and returns what it prints."""
        done = subprocess.run(command, shell=True, cwd=self.folder, capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertNotIn("151", done.stderr)
        return done.stdout
