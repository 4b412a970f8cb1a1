#!/usr/bin/env bash
# The real viewer serving the bundled run: the line it prints, an answer
# behind the token, a second server refused on the same port, status 0 on
# SIGTERM, and a run directory left as it was.
set -euo pipefail
VIEWER=$1
SRC=$2
unset DISPLAY
WORK=$(mktemp -d /tmp/viewer-serve-XXXXXX)
pid=""
trap '[ -n "$pid" ] && kill "$pid" 2>/dev/null; rm -rf "$WORK"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
mkdir "$WORK/run"
cp "$SRC"/examples/rfgun.* "$SRC"/examples/Geometry.dat "$WORK/run/"
cd "$WORK/run"
before=$(ls -l --time-style=+%s.%N)

"$VIEWER" rfgun,2 --serve 0 >"$WORK/out.txt" 2>"$WORK/err.txt" &
pid=$!
for _ in $(seq 100); do grep -q "^viewer: serving" "$WORK/out.txt" && break; sleep 0.1; done
line=$(head -1 "$WORK/out.txt")
[[ "$line" =~ ^viewer:\ serving\ rfgun\ run\ 002\ at\ http://127\.0\.0\.1:([0-9]+)/\?token=([0-9a-f]{32})$ ]] ||
  fail "printed '$line'"
port=${BASH_REMATCH[1]} token=${BASH_REMATCH[2]}
[ "$(curl -s -o /dev/null -w '%{http_code}' "http://127.0.0.1:$port/api/runs")" = 403 ] || fail "no token, yet an answer"
curl -sf "http://127.0.0.1:$port/api/plot/1:2.txt?token=$token&geometry=1" | grep -q " rms Beam Size" ||
  fail "no plot text behind the token"

set +e
"$VIEWER" rfgun,1 --serve "127.0.0.1:$port" >/dev/null 2>"$WORK/err2.txt"
status=$?
set -e
[ "$status" = 1 ] || fail "a second server on port $port ended with $status"
grep -qF "cannot serve on 127.0.0.1:$port" "$WORK/err2.txt" || fail "said '$(cat "$WORK/err2.txt")'"

kill -TERM "$pid"
set +e
wait "$pid"
status=$?
set -e
pid=""
[ "$status" = 0 ] || fail "SIGTERM ended the server with $status"
[ ! -s "$WORK/err.txt" ] || fail "the terminal got: $(cat "$WORK/err.txt")"
[ "$(ls -l --time-style=+%s.%N)" = "$before" ] || fail "the server wrote into the run directory"
echo "e2e serve: ok"
