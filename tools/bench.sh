#!/usr/bin/env bash
# Builds the benchmarks and prints one table: every row of the five pages
# redrawn through PGPLOT's /NULL device, and into graphics that do nothing
# (the viewer's own share, without the library), beside the plain read of its tables
# (the bundled run scaled up: PKT records along z, 10^5 of .ref, 10^6 of
# .track), their ratio, and the peak resident memory of the redraw and of
# the read, each measured in a process of its own.
#   tools/bench.sh [FILTER]      FILTER: a regular expression of rows, such as '1:1[0-6]'
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh >/dev/null
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc 2>/dev/null || echo 2)" --target viewer_bench >/dev/null
export VIEWER_ROWS_DIR
VIEWER_ROWS_DIR=$(mktemp -d /tmp/viewer-rows-XXXXXX)
trap 'rm -rf "$VIEWER_ROWS_DIR"' EXIT
/usr/bin/python3 - "${1:-.*}" <<'PY'
import json, os, re, subprocess, sys

bench = "build/viewer_bench"
rows_filter = sys.argv[1]

def run(filter_, min_time="0.5"):
    """Runs the benchmarks of `filter_` in a process of its own: their times and its peak memory."""
    proc = subprocess.Popen([bench, "--benchmark_filter=" + filter_, "--benchmark_format=json",
                             "--benchmark_min_time=" + min_time], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    out = proc.stdout.read()
    _, status, usage = os.wait4(proc.pid, 0)
    if status != 0:
        sys.exit("benchmark %s failed" % filter_)
    times = {b["name"]: b["real_time"] for b in json.loads(out)["benchmarks"]}
    return times, usage.ru_maxrss / 1024.0  # MiB

times, _ = run("^rows/(%s)/" % rows_filter)
rows = sorted({n.split("/")[1] for n in times}, key=lambda r: tuple(int(x) for x in r.split(":")))
print("%-7s %10s %10s %10s %7s %7s %11s %9s" %
      ("row", "redraw ms", "own ms", "read ms", "ratio", "own", "redraw MiB", "read MiB"))
over, own_over = [], []
for r in rows:
    redraw, own, read = times["rows/%s/redraw" % r], times["rows/%s/own" % r], times["rows/%s/read" % r]
    _, rss_redraw = run("^rows/%s/redraw$" % re.escape(r), "0.05")
    _, rss_read = run("^rows/%s/read$" % re.escape(r), "0.05")
    ratio = redraw / read if read > 0 else float("inf")
    own_ratio = own / read if read > 0 else float("inf")
    if ratio > 1.5:
        over.append(r)
    if own_ratio > 1.5:
        own_over.append(r)
    print("%-7s %10.3f %10.3f %10.3f %7.2f %7.2f %11.1f %9.1f" %
          (r, redraw, own, read, ratio, own_ratio, rss_redraw, rss_read))
print("rows above 1.5 times their read: %s" % (", ".join(over) if over else "none"))
print("of those, without the library's drawing: %s" % (", ".join(own_over) if own_over else "none"))
PY
