"""The command, where it is called through the package: python3 -m torvex.study."""

import sys

from torvex.study.command import run_command

sys.exit(run_command())
