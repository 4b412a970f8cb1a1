#!/usr/bin/env bash
# Builds the viewer and its Debian package: build/viewer_VERSION_ARCH.deb.
#   tools/package.sh          then: sudo apt install ./build/viewer_*.deb
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh >/dev/null
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc 2>/dev/null || echo 2)" --target viewer _viewer >/dev/null
(cd build && cpack -G DEB >/dev/null)
ls build/viewer_*.deb
