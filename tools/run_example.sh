#!/usr/bin/env bash
# Builds the viewer and opens it on the bundled example run.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc 2>/dev/null || echo 2)" --target viewer
if [ -z "${DISPLAY:-}" ]; then
  cat >&2 <<'MSG'
The viewer draws in X windows, and there is no X display here (DISPLAY is not set).
Log in with X forwarding (ssh -X), or start a virtual display and look at it with a VNC viewer:
    Xvfb :1 -screen 0 1600x1200x24 -dpi 100 &  export DISPLAY=:1
then run this script again.
MSG
  exit 1
fi
cd examples
exec ../build/viewer "rfgun,${1:-1}"
