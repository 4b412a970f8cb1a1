#!/usr/bin/env bash
# Builds the fuzz targets (clang, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer) and runs each of them a fixed number of times
# over seeds from the bundled run, the real tables beside the repository
# and the regression cases in fuzz/regressions/<target>/.
#   tools/fuzz.sh [RUNS] [TARGET...]     RUNS per target, default 2000
# A crash, a sanitizer report or a hang fails the script; the input that
# did it is left in fuzz/found/ to become a regression case.
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-2000}
shift || true
jobs=$(nproc 2>/dev/null || echo 2)

CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVIEWER_FUZZ=ON \
  -DVIEWER_BENCH=OFF >/dev/null
cmake --build build-fuzz -j"$jobs" --target fuzz_targets >/dev/null

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  mapfile -t targets < <(cd build-fuzz && ls -1 ./*_fuzz | sed 's#^\./##; s#_fuzz$##')
fi

realdata=../shared/realdata
# The table targets rewrite their run's files for every input: keep them in
# memory where the system has a memory file system.
if [ -z "${TMPDIR:-}" ] && [ -d /dev/shm ] && [ -w /dev/shm ]; then export TMPDIR=/dev/shm; fi
work=$(mktemp -d /tmp/viewer-fuzz-XXXXXX)
trap 'rm -rf "$work"' EXIT
mkdir -p fuzz/found

# seeds TARGET DIR: files that show the target its kind of input.
seeds() {
  local t=$1 dir=$2 suffix=""
  case "$t" in
    fixed_record) suffix='.Xemit. .Cathode. .C99emit. .lab.' ;;
    fast_field) printf '  1.2345E+00' >"$dir/f1"; printf ' -9.9999D-10' >"$dir/f2"; printf '  0.0000e+00' >"$dir/f3" ;;
    free_record) suffix='.ref. .track. .tcheck. .Sigma.' ;;
    aperture) cp examples/Geometry.dat "$dir/" ;;
    reference) printf ' 0.1 2.0 3.0\n 0.2 2.5 3.5\n' >"$dir/ref" ;;
    namelist) printf '&WIN_CONFIG\n FIXED = F,\n LINE_WIDTH = 2,\n CHARACTER_HEIGHT = 1.2,\n/\n' >"$dir/cfg" ;;
    arguments) printf 'rfgun.,7' >"$dir/a1"; printf -- '--plot\n1:2\n--out\nx.png\n--size\n400x300' >"$dir/a2" ;;
    query) printf '/api/plot/1:2.png?zoom=0:1.5&fit=3&size=800x600&runs=1-3,7' >"$dir/q1"
           printf '/api/overview/4.pdf?run=2&mono=1&geometry=1&bins=20' >"$dir/q2" ;;
    particles) for f in examples/*.[0-9][0-9][0-9][0-9].[0-9][0-9][0-9] "$realdata"/*/*.[0-9][0-9][0-9][0-9].[0-9][0-9][0-9]; do
                 [ -f "$f" ] && head -c 65536 "$f" >"$dir/$(basename "$f")"
               done
               printf '%s\n' '  1.0000E-03  0.0000E+00  2.5000E+00  1.0000E+02  0.0000E+00  5.0000E+06  1.0000E+00 -1.0000E-03   1   5' \
                 ' -2.0000E-04  1.0000E-04  1.0000E-05 -3.0000E+01  2.0000E+01  1.0000E+03  0.0000E+00 -1.0000E-03   1   3' \
                 '  1.0000E-04 -1.0000E-04  0.0000E+00  1.0000E+01  1.0000E+00 -5.0000E+02  1.0000E-03 -1.0000E-03   1 -15' >"$dir/p1"
               printf '0 0 1.5 0 0 2.0e7 0 -1e-3 3 5\r\n1D-3,2.5d-4,0,1,2,3,0,-1.0D-3,3,-1\r\n\t5e-4 0 0 0 0 0 0 -1e-3 4 5\n1 2 3' >"$dir/p2" ;;
    table_lab_E) suffix='.lab-E.' ;;
    table_*) suffix=".${t#table_}." ;;
  esac
  for s in $suffix; do
    for f in examples/*"$s"* "$realdata"/*/*"$s"*; do
      [ -f "$f" ] && head -c 65536 "$f" >"$dir/$(basename "$f")"
    done
  done
  return 0
}

failed=0
for t in "${targets[@]}"; do
  corpus="$work/$t" seed="$work/$t.seed" regress="$PWD/fuzz/regressions/$t"
  mkdir -p "$corpus" "$seed" "$regress"
  seeds "$t" "$seed"
  if ! ASAN_OPTIONS=detect_leaks=0 "build-fuzz/${t}_fuzz" -runs="$runs" -max_len=65536 -timeout=10 \
      -rss_limit_mb=2048 -seed="${FUZZ_SEED:-1}" -dict=fuzz/readers.dict -artifact_prefix="$PWD/fuzz/found/$t-" \
      "$corpus" "$seed" "$regress" >"$work/$t.log" 2>&1; then
    echo "fuzz: $t FAILED" >&2
    grep -E "ERROR|SUMMARY|Test unit written" "$work/$t.log" >&2 || tail -20 "$work/$t.log" >&2
    failed=1
  else
    echo "fuzz: $t $(grep -E '^Done' "$work/$t.log")"
  fi
done
exit $failed
