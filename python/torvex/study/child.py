"""A program as a process of its own: watched, told to stop, ended."""

from __future__ import annotations

import os
import signal
import subprocess
import threading
import time
from collections.abc import Callable, Sequence
from dataclasses import dataclass, field
from pathlib import Path

_POLL = 0.05  # seconds; memory is taken within the first tenths of a second
_SLOWER = 0.25
STOP_FILE = "#stop_message"
CONSOLE, ERRORS = "console.txt", "errors.txt"


@dataclass
class Control:
    """What is asked of those who work: to come to an end, or to end at once."""

    stop: threading.Event = field(default_factory=threading.Event)
    kill: threading.Event = field(default_factory=threading.Event)


@dataclass(frozen=True)
class Ended:
    status: int  # below 0: by this signal
    seconds: float
    peak_memory: int  # bytes; 0 where it was too short to be seen


def run_child(
    words: Sequence[str],
    folder: Path,
    threads: int,
    control: Control,
    beat: Callable[[], None],
) -> Ended:
    """Its output goes to files in the folder. It is no part of the terminal's group of processes,
    so that Ctrl-C there reaches it only through `control`: the run ends behind the iteration in
    hand, and its state is saved."""
    began = time.monotonic()
    environment = dict(os.environ, OMP_NUM_THREADS=str(threads))
    (folder / STOP_FILE).unlink(missing_ok=True)
    with (folder / CONSOLE).open("wb") as console, (folder / ERRORS).open("wb") as errors:
        process = subprocess.Popen(
            words,
            cwd=folder,
            stdin=subprocess.DEVNULL,
            stdout=console,
            stderr=errors,
            env=environment,
            start_new_session=True,
        )
    peak, last_beat = 0, began
    try:
        while True:
            peak = max(peak, _high_water(process.pid))
            now = time.monotonic()
            try:
                process.wait(_POLL if now - began < 3 else _SLOWER)
                break
            except subprocess.TimeoutExpired:
                pass
            if control.kill.is_set():
                end(process)
                break
            if control.stop.is_set():
                # A run that is still sizing its domain deletes the file: it is put there again.
                (folder / STOP_FILE).touch()
            if now - last_beat > 2:
                beat()
                last_beat = now
    except BaseException:
        end(process)
        raise
    finally:
        (folder / STOP_FILE).unlink(missing_ok=True)
    return Ended(process.returncode, time.monotonic() - began, peak)


def end(process: subprocess.Popen[bytes]) -> None:
    """The process and all it began."""
    for what in (signal.SIGTERM, signal.SIGKILL):
        try:
            os.killpg(process.pid, what)
        except ProcessLookupError:
            pass
        try:
            process.wait(2.0)
            return
        except subprocess.TimeoutExpired:
            continue


def _high_water(pid: int) -> int:
    """The most memory that a process has had so far. The resources that wait() tells of a child
    would count what its parent had when it was begun."""
    try:
        for line in Path(f"/proc/{pid}/status").read_text().splitlines():
            if line.startswith("VmHWM:"):
                return int(line.split()[1]) * 1024
    except (OSError, ValueError, IndexError):
        pass
    return 0


def last_words(folder: Path, lines: int = 3) -> str:
    """Why a program ended, from its standard error."""
    try:
        text = (folder / ERRORS).read_text(encoding="utf-8", errors="replace")
    except OSError:
        return ""
    told = [line.strip() for line in text.splitlines() if line.strip()]
    told = [line for line in told if not line.startswith(("torvex: ", "Warning:", "(Warning)"))]
    return "; ".join(told[-lines:])


def warnings(folder: Path) -> list[str]:
    try:
        text = (folder / ERRORS).read_text(encoding="utf-8", errors="replace")
    except OSError:
        return []
    return [line.strip() for line in text.splitlines() if "arning" in line]
