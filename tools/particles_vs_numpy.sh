#!/usr/bin/env bash
# By hand, not a test: the density picture of x:xp of a particle file of
# 10^6 particles (20-column fields) drawn by the viewer, and the same drawn
# the way users do it in a notebook (numpy.loadtxt, then matplotlib's hist2d
# into a PNG), each as a whole process, side by side in one run.
#   tools/particles_vs_numpy.sh [BUILD_DIR]     (default build)
# Needs python3-numpy and python3-matplotlib (apt-get install them).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
viewer=$PWD/$build/viewer
[ -x "$viewer" ] || { echo "no $viewer: build it first" >&2; exit 1; }
/usr/bin/python3 -c "import numpy, matplotlib" 2>/dev/null ||
  { echo "needs python3-numpy and python3-matplotlib" >&2; exit 1; }
work=$(mktemp -d /tmp/viewer-numpy-XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

# A Gaussian bunch with a correlated x:x', as the tracker writes it.
awk 'BEGIN {
  srand(7); pi = 3.141592653589793
  for (i = 0; i < 1000000; i++) {
    u = sqrt(-2 * log(1 - rand())); v = 2 * pi * rand()
    a = u * cos(v); b = u * sin(v)
    x = 1e-3 * a; px = 2e3 * b + 1e6 * x
    z = i ? 1e-4 * a * b : 1.5; pz = i ? 1e4 * b : 5e6; t = i ? 1e-3 * a : 5
    printf "%20.12E%20.12E%20.12E%20.12E%20.12E%20.12E%20.12E%20.12E%4d%4d\n", x, 0.5 * x, z, px, 0.5 * px, pz, t, -1e-6, 1, 5
  }
}' >bunch.0150.001
echo "file: $(du -h bunch.0150.001 | cut -f1), 10^6 particles"

cat >hist.py <<'PY'
import sys
import numpy as np
import matplotlib
matplotlib.use("Agg")
import matplotlib.pyplot as plt
d = np.loadtxt(sys.argv[1])
ref = d[0]
pz = d[:, 5] + np.where(np.arange(len(d)) > 0, ref[5], 0)
active = d[:, 9] > 0
xp = d[active, 3] / pz[active].mean() * 1e3
plt.hist2d(d[active, 0] * 1e3, xp, bins=100, weights=np.abs(d[active, 7]))
plt.savefig("numpy.png")
PY

clock() { date +%s.%N; }
t0=$(clock); "$viewer" bunch --particles 0150 --plane x:xp --out viewer.png >/dev/null; t1=$(clock)
/usr/bin/python3 hist.py bunch.0150.001; t2=$(clock)
awk -v a="$t0" -v b="$t1" -v c="$t2" 'BEGIN {
  v = b - a; n = c - b
  printf "viewer --particles --plane x:xp --out .png   %7.2f s\n", v
  printf "numpy.loadtxt + matplotlib hist2d (Agg)      %7.2f s\n", n
  printf "ratio                                        %7.1f x\n", n / v
}'
