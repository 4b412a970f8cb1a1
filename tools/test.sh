#!/usr/bin/env bash
# Builds the viewer and runs every test: the normal build (warnings as
# errors), then the tests again under AddressSanitizer and
# UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh
jobs=$(nproc 2>/dev/null || echo 2)

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVIEWER_WERROR=ON >/dev/null
cmake --build build -j"$jobs"
(cd build && ctest --output-on-failure -j"$jobs") | tee build/ctest.log

cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DVIEWER_WERROR=ON -DVIEWER_SANITIZE=ON >/dev/null
cmake --build build-asan -j"$jobs" --target viewer_tests viewer
# PGPLOT's own allocations are not ours to free; leaks there are not reported.
(cd build-asan && ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --output-on-failure -j"$jobs" -LE e2e) | tee build-asan/ctest.log
# One closing line for both runs.
total=$(cat build/ctest.log build-asan/ctest.log | sed -n 's/.*tests passed, \([0-9]*\) tests failed out of \([0-9]*\)/\1 \2/p' |
  awk '{ f += $1; n += $2 } END { print n - f, f }')
echo "tests: ${total% *} passed, ${total#* } failed" | tee build/summary.txt
