#!/usr/bin/env bash
# The browser view in a real browser: headless Chromium through its driver,
# against the real viewer serving a copy of the bundled run.
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
cd "$WORK"
"$VIEWER" rfgun,1 --plot 1:2 --csv /dev/null >export.txt || fail "the export of 1:2"
"$VIEWER" rfgun,1 --serve 0 >serve.txt 2>serve.err &
pid=$!
for _ in $(seq 100); do grep -q "^viewer: serving" serve.txt && break; sleep 0.1; done
url=$(sed -n 's/^viewer: serving .* at //p' serve.txt)
[ -n "$url" ] || fail "no URL printed: $(cat serve.err)"
shot="$OLDPWD/browser.png"
timeout 120 /usr/bin/python3 "$SRC/tests/e2e/lib/browser.py" "$url" "$WORK" "$(cat export.txt)" "$shot"
echo "e2e browser: ok (screenshot $shot)"
