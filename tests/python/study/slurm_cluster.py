"""A cluster of one node on this machine, without systemd: controller, node and munge, begun and
ended by their process ids."""

from __future__ import annotations

import os
import shutil
import signal
import socket
import subprocess
import time
from pathlib import Path

PROGRAMS = ("slurmctld", "slurmd", "munged", "sbatch", "scontrol", "squeue", "sinfo")

CONF = """ClusterName=torvextest
SlurmctldHost={host}(127.0.0.1)
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
AuthInfo=socket={root}/run/munge.socket
CryptoType=crypto/munge
MpiDefault=none
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/linux
JobAcctGatherFrequency=task=1
JobAcctGatherParams=OverMemoryKill
AccountingStorageType=accounting_storage/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU_Memory
SchedulerParameters=batch_sched_delay=0,sched_interval=1
ReturnToService=2
KillWait=2
JobRequeue=1
SlurmctldPort={port}
SlurmdPort={next_port}
SlurmctldPidFile={root}/run/slurmctld.pid
SlurmdPidFile={root}/run/slurmd.pid
StateSaveLocation={root}/state
SlurmdSpoolDir={root}/spool
SlurmctldLogFile={root}/log/slurmctld.log
SlurmdLogFile={root}/log/slurmd.log
NodeName=localhost NodeAddr=127.0.0.1 CPUs={cores} RealMemory=1500 State=UNKNOWN
PartitionName=main Nodes=localhost Default=YES MaxTime=INFINITE State=UP
"""


def why_not():
    """Why no cluster can be had here; blank where one can."""
    missing = [name for name in PROGRAMS if shutil.which(name, path=_path()) is None]
    if missing:
        return f"not installed: {', '.join(missing)}"
    return "" if os.geteuid() == 0 else "a cluster of one's own needs root"


def _path():
    return os.environ.get("PATH", "") + ":/usr/sbin:/sbin"


class Cluster:
    def __init__(self, root):
        self.root = Path(root)
        for name in ("state", "spool", "log", "run"):
            (self.root / name).mkdir(mode=0o755)
        with socket.socket() as one, socket.socket() as other:
            one.bind(("127.0.0.1", 0))
            other.bind(("127.0.0.1", 0))
            ports = one.getsockname()[1], other.getsockname()[1]
        (self.root / "slurm.conf").write_text(
            CONF.format(
                root=self.root,
                host=socket.gethostname().split(".")[0],
                port=ports[0],
                next_port=ports[1],
                cores=len(os.sched_getaffinity(0)),
            )
        )
        self.environment = {"SLURM_CONF": str(self.root / "slurm.conf"), "PATH": _path()}

    def __enter__(self):
        try:
            self._begin()
        except BaseException:
            self.__exit__()
            raise
        return self

    def _begin(self):
        key = self.root / "munge.key"
        key.write_bytes(os.urandom(1024))
        key.chmod(0o400)
        run, log = self.root / "run", self.root / "log"
        self.call(
            "munged",
            "--force",
            f"--key-file={key}",
            f"--socket={run}/munge.socket",
            f"--pid-file={run}/munged.pid",
            f"--log-file={log}/munged.log",
            f"--seed-file={run}/munged.seed",
        )
        self.call("slurmctld", "-c", "-f", self.root / "slurm.conf")
        self.call("slurmd", "-N", "localhost", "-c", "-f", self.root / "slurm.conf")
        self.wait_for(lambda: "idle" in self.call("sinfo", "-h", "-o", "%T"), 60)

    def __exit__(self, *_):
        pids = []
        for name in ("slurmd", "slurmctld", "munged"):
            try:
                pids.append(int((self.root / f"run/{name}.pid").read_text()))
            except (OSError, ValueError):
                continue
        for what in (signal.SIGTERM, signal.SIGKILL):
            for pid in pids:
                try:
                    os.kill(pid, what)
                except ProcessLookupError:
                    pass
            until = time.monotonic() + 15
            while time.monotonic() < until and any(_lives(pid) for pid in pids):
                time.sleep(0.1)

    def call(self, *words):
        done = subprocess.run(
            [str(word) for word in words],
            env=os.environ | self.environment,
            capture_output=True,
            text=True,
            timeout=60,
        )
        if done.returncode != 0:
            raise RuntimeError(f"{words[0]}: {done.stdout} {done.stderr}")
        return done.stdout

    def is_empty(self):
        return self.call("squeue", "-h").strip() == ""

    @staticmethod
    def wait_for(condition, seconds):
        until = time.monotonic() + seconds
        while time.monotonic() < until:
            if condition():
                return
            time.sleep(0.1)
        raise TimeoutError("the cluster did not come to it")


def _lives(pid):
    try:
        return Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0] != "Z"
    except OSError:
        return False
