#!/usr/bin/env bash
# The README's pictures can still be made: tools/make_pictures.sh into a
# scratch folder, each picture written and under its size limit.
set -euo pipefail
VIEWER=$1
SRC=$2
OUT=$(mktemp -d /tmp/viewer-pictures-XXXXXX)
trap 'rm -rf "$OUT"' EXIT
VIEWER=$VIEWER bash "$SRC/tools/make_pictures.sh" "$OUT" >"$OUT/log" 2>&1 || {
  tail -20 "$OUT/log" >&2
  echo "FAIL: tools/make_pictures.sh no longer runs" >&2
  exit 1
}
for p in overview runs particles slices notebook windows browser; do
  [ "$(head -c 8 "$OUT/$p.png" | od -An -tx1 | tr -d ' ')" = 89504e470d0a1a0a ] || {
    echo "FAIL: $p.png is not a PNG" >&2
    exit 1
  }
done
echo "e2e pictures: ok"
