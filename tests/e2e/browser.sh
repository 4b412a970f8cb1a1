#!/usr/bin/env bash
# The browser view in a real browser: headless Chromium through its driver,
# against the real viewer serving a copy of the bundled run, and a study of
# two projects in folders that grows while the page is open.
set -euo pipefail
VIEWER=$1
SRC=$2
unset DISPLAY
WORK=$(mktemp -d /tmp/viewer-browser-XXXXXX)
pid=""
trap '[ -n "$pid" ] && kill "$pid" 2>/dev/null; rm -rf "$WORK" /tmp/viewer-chromium-*' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
for tool in /usr/bin/chromium /usr/bin/chromedriver; do [ -x "$tool" ] || fail "$tool is not installed"; done
cp "$SRC"/examples/rfgun.* "$SRC"/examples/Geometry.dat "$WORK/"
# The particles tab wants a particle file of run 1: any one will do, whatever its name.
if ! compgen -G "$WORK/rfgun.[0-9][0-9][0-9][0-9].001" >/dev/null; then
  cp "$SRC/../shared/realdata/simframe-injector400/injector400.0330.001" "$WORK/rfgun.0330.001"
fi
cd "$WORK"
"$VIEWER" rfgun,1 --plot 1:2 --csv /dev/null >export.txt || fail "the export of 1:2"
"$VIEWER" rfgun,1 --serve 0 >serve.txt 2>serve.err &
pid=$!
for _ in $(seq 100); do grep -q "^viewer: serving" serve.txt && break; sleep 0.1; done
url=$(sed -n 's/^viewer: serving .* at //p' serve.txt)
[ -n "$url" ] || fail "no URL printed: $(cat serve.err)"
# A study: the bundled runs 1 and 2 at the top, run 3 as another project in
# a folder below with a particle file of its own.
mkdir -p study/mesh
cp "$SRC"/examples/rfgun.[XYZ]emit.00[12] study/
for f in "$SRC"/examples/rfgun.[XYZ]emit.003; do b=${f##*/}; cp "$f" "study/mesh/gun${b#rfgun}"; done
cp "$SRC/examples/rfgun.0500.001" study/mesh/gun.0500.003
(cd study && exec "$VIEWER" --serve 0 >serve.txt 2>serve.err) &
study_pid=$!
trap '[ -n "$pid" ] && kill "$pid" 2>/dev/null; kill "$study_pid" 2>/dev/null; rm -rf "$WORK" /tmp/viewer-chromium-*' EXIT
for _ in $(seq 100); do grep -q "^viewer: serving" study/serve.txt && break; sleep 0.1; done
study_url=$(sed -n 's/^viewer: serving .* at //p' study/serve.txt)
[ -n "$study_url" ] || fail "no URL printed for the study: $(cat study/serve.err)"
shot="$OLDPWD/browser.png"
timeout 120 /usr/bin/python3 "$SRC/tests/e2e/lib/browser.py" "$url" "$WORK" "$(cat export.txt)" "$shot" "$study_url"
echo "e2e browser: ok (screenshot $shot)"
