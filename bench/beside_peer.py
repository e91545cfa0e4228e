#!/usr/bin/python3
"""The accelerated iteration beside a general-purpose solver on the same hill, in the same hour.

    bench/beside_peer.py [--build BUILD] [--sizes 50000 300000 1000000] [--runs 3]

For each size: the hill of torvex_bench_acceleration to its answer on two threads, the best of several
runs; then the kit in bench/peer, simpleFoam of Debian's package openfoam on two processes, once. The
answer is there when the speeds at twelve points stay within 1 % of what they come to; both are timed
from their launch. Without the package a line says so and the peer's columns stay empty.
"""

import argparse
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
ITERATIONS = {50000: 60, 300000: 70, 1000000: 90}


def own_answer(build, cells, runs):
    """The quickest of several runs, as torvex_bench_acceleration tells it."""
    program = build / "bin" / "torvex_bench_acceleration"
    answers = []
    for _ in range(runs):
        done = subprocess.run(
            [program, "answer", str(cells), "2"], check=True, capture_output=True, text=True
        )
        answers.append(json.loads(done.stdout.splitlines()[-1]))
    return min(answers, key=lambda answer: answer["answer_s"])


def peer_answer(cells):
    """One run of the peer, or None where it is not installed."""
    if not shutil.which("simpleFoam"):
        return None
    kit = HERE / "peer"
    with tempfile.TemporaryDirectory() as directory:

        def call(*command):
            done = subprocess.run(
                command, cwd=directory, check=True, capture_output=True, text=True
            )
            return done.stdout

        call(kit / "make_hill.py", "h-", "--cells", str(cells))
        call(kit / "tuf2foam.py", "h-", "case", "--simplec")
        iterations = ITERATIONS.get(cells, 90)
        return json.loads(call(kit / "run_peer.sh", "case", "mpi2", str(iterations)))


def main():
    """Prints a table."""
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--build", type=pathlib.Path, default=HERE.parent / "build")
    parser.add_argument("--sizes", type=int, nargs="+", default=[50000, 300000, 1000000])
    parser.add_argument("--runs", type=int, default=3)
    args = parser.parse_args()
    if not shutil.which("simpleFoam"):
        print("no simpleFoam: apt-get install -y --no-install-recommends openfoam; the peer is left out")
    print("| Cells | accelerated: iterations, s | peer: cells, iterations, s | ratio |")
    print("| ---: | ---: | ---: | ---: |")
    for cells in args.sizes:
        own = own_answer(args.build, cells, args.runs)
        line = f"| {own['cells']:.0f} | {own['answer_iter']}, {own['answer_s']:.2f} |"
        peer = peer_answer(cells)
        if peer is None:
            print(line + " | |")
        else:
            busy = f" (others took {peer['others_cores']} cores)" if peer["others_cores"] > 0.1 else ""
            print(
                f"{line} {peer['cells']}, {peer['answer_iter']}, {peer['answer_s']:.1f}{busy} | "
                f"{peer['answer_s'] / own['answer_s']:.0f} |"
            )
        sys.stdout.flush()


if __name__ == "__main__":
    main()
