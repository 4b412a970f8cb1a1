#!/usr/bin/python3
"""By hand, not a test: the notebook module against numpy.loadtxt, side by side in one run.

    PYTHONPATH=build/python tools/python_vs_numpy.py [BUILD_DIR]

- Run.table("track") of a 10^6-record .track and Run.table("Xemit") of a
  10^5-record .Xemit, against numpy.loadtxt of the same files;
- Run.plot("1:2") of the bundled run against the command line's export of
  the same row, each timed from inside (process start-up aside: the command
  line's start-up is measured alone, with --version, and taken off).
"""
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time

import numpy as np

here = os.path.dirname(os.path.abspath(__file__))
build = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "build"))
sys.path.insert(0, os.path.join(build, "python"))
import viewer  # noqa: E402


def best(f, n=3):
    times = []
    for _ in range(n):
        t = time.perf_counter()
        f()
        times.append(time.perf_counter() - t)
    return min(times)


def line(what, ours, theirs):
    print(f"{what:44s} {ours:8.3f} s {theirs:8.3f} s {theirs / ours:7.1f}x")


work = tempfile.mkdtemp(prefix="viewer-python-")
try:
    rnd = random.Random(7)
    with open(os.path.join(work, "big.track.001"), "w") as f:
        for i in range(1_000_000):
            values = (i * 1e-9, rnd.gauss(0, 1e-3), rnd.gauss(0, 1e-3), rnd.gauss(0, 1e5), rnd.gauss(0, 1e5), 0)
            f.write(f"{i % 1000 + 1:5d}{0:5d}" + "".join(f"{v:12.4E}" for v in values) + "\n")
    with open(os.path.join(work, "big.Xemit.001"), "w") as f:
        for i in range(100_000):
            f.write("".join(f"{v:12.4E}" for v in (i * 1e-4, i * 3e-4, rnd.gauss(0, 1e-3), 1 + rnd.random(),
                                                     5 + rnd.random(), 0.5 + rnd.random(), 6 * rnd.random())))
            f.write("\n")
    run = viewer.Run(work, "big", 1)
    print(f"{'':44s} {'viewer':>10s} {'numpy':>10s}  ratio")
    for kind, name in (("track", "big.track.001"), ("Xemit", "big.Xemit.001")):
        path = os.path.join(work, name)
        ours = best(lambda: run.table(kind))
        theirs = best(lambda: np.loadtxt(path), 2)
        assert len(run.table(kind)) == len(np.loadtxt(path))
        line(f'Run.table("{kind}"), {len(run.table(kind))} records', ours, theirs)

    example = os.path.join(here, "..", "examples")
    rfgun = viewer.Run(example, "rfgun", 1)
    binary = os.path.join(build, "viewer")
    out = os.path.join(work, "row.png")
    ours = best(lambda: rfgun.plot("1:2"), 5)
    start = best(lambda: subprocess.run([binary, "--version"], check=True, capture_output=True), 5)
    cli = best(lambda: subprocess.run([binary, "rfgun,1", "--plot", "1:2", "--size", "1000x700", "--out", out,
                                       "--csv", out + ".csv", "--stats", out + ".json"], cwd=example,
                                      check=True, capture_output=True), 5)
    print(f'Run.plot("1:2") {ours:.3f} s; the command line {cli:.3f} s less its start-up {start:.3f} s: '
          f"{ours / max(cli - start, 1e-6):.2f} of it")
finally:
    shutil.rmtree(work)
