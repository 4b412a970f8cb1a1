#!/usr/bin/env bash
# The pictures of the README, made from the bundled example: the overview
# sheet of page 1, runs 1 to 3 of the beam size, the density of a particle
# file and its slices (the export), the tour notebook, the menu
# window beside a plot (the viewer under an Xvfb of its own, screenshot),
# and the browser view (headless Chromium). Each under 150 kB.
#   tools/make_pictures.sh [OUTDIR]      (default docs/; the viewer from build/)
set -euo pipefail
cd "$(dirname "$0")/.."
SRC=$PWD
OUT=$(realpath -m "${1:-docs}")
export VIEWER=${VIEWER:-$SRC/build/viewer}
[ -x "$VIEWER" ] || { echo "make_pictures: build the viewer first ($VIEWER)" >&2; exit 1; }
mkdir -p "$OUT"
source "$SRC/tests/e2e/lib/xsession.sh"  # WORK, start_x, start_viewer, click_row_until, fail
copy_example "$SRC"
cd "$RUN"

# Line art in a few colours keeps a picture small.
small() { convert "$1" -resize "${2:-100%}" -colors 32 -strip "PNG8:$3"; }

"$VIEWER" rfgun,1 --overview 1 --out "$WORK/overview.png" --size 1200x850 >/dev/null
small "$WORK/overview.png" 75% "$OUT/overview.png"
"$VIEWER" rfgun --plot 1:2 --runs 1-3 --out "$WORK/runs.png" --size 1000x700 >/dev/null
small "$WORK/runs.png" 80% "$OUT/runs.png"
"$VIEWER" rfgun,1 --particles 0500 --plane x:xp --density --bins 50 --out "$WORK/particles.png" --size 900x650 >/dev/null
small "$WORK/particles.png" 80% "$OUT/particles.png"
"$VIEWER" rfgun,1 --particles 0500 --slices 25 --out "$WORK/slices.png" --size 1000x700 >/dev/null
small "$WORK/slices.png" 80% "$OUT/slices.png"

# The tour notebook, its first cells run by the module of the same build.
PYTHONPATH="$(dirname "$VIEWER")/python" /usr/bin/python3 "$SRC/tools/notebook_picture.py" \
  "$SRC/examples/tour.ipynb" "$RUN" "$WORK/notebook.html"
chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --window-size=1040,900 \
  --user-data-dir="$WORK/chromium-notebook" --screenshot="$WORK/notebook.png" "file://$WORK/notebook.html" \
  >/dev/null 2>&1 || fail "chromium took no screenshot of the notebook"
small "$WORK/notebook.png" 70% "$OUT/notebook.png"

# The windows: the menu beside the beam size drawn from a click. Without a
# window manager the two overlap: the plot window is moved clear of the menu
# first, then each is taken alone and laid side by side.
start_x
start_viewer "$RUN" "$WORK/input" rfgun,1
wait_for "     Project name is: rfgun"
PLOT=$(xdotool search --name "PGPLOT Window 102" | head -1)
read -r MX MY < <(xdotool getwindowgeometry "$MENU" | awk '/Position/ {split($2, a, ","); print a[1], a[2]}')
xdotool windowmove "$PLOT" "$((MX + MW + 20))" "$MY"
click_row_until 2 " rms Beam Size"
sleep 1
import -window "$MENU" "$WORK/menu.png"
import -window "$PLOT" "$WORK/plot.png"
convert "$WORK/menu.png" "$WORK/plot.png" -background white -gravity north -splice 0x0 +append "$WORK/windows.png"
small "$WORK/windows.png" 60% "$OUT/windows.png"

# The browser view of the same row, as a page opened from the printed URL.
"$VIEWER" rfgun,1 --serve 0 >"$WORK/serve.txt" 2>/dev/null &
SERVER=$!
trap 'kill $SERVER 2>/dev/null || true; stop_all' EXIT
for _ in $(seq 100); do grep -q "^viewer: serving" "$WORK/serve.txt" && break; sleep 0.1; done
url=$(sed -n 's/^viewer: serving .* at //p' "$WORK/serve.txt")
[ -n "$url" ] || fail "the server printed no URL"
# Through the driver: the page keeps its event stream open, so a plain
# headless screenshot would wait for ever for the page to settle.
timeout 120 /usr/bin/python3 - "$url&page=1&row=2&run=1" "$WORK/browser.png" "$WORK/chromium" <<'PY' || fail "chromium took no screenshot"
import sys
from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.ui import WebDriverWait

url, shot, profile = sys.argv[1:4]
options = webdriver.ChromeOptions()
options.binary_location = "/usr/bin/chromium"
for flag in ("--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--disable-sync",
             "--window-size=1280,860", "--user-data-dir=" + profile):
    options.add_argument(flag)
driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
try:
    driver.get(url)
    WebDriverWait(driver, 30).until(lambda d: d.execute_script(
        "const i = document.getElementById('image');"
        "return i && i.src.includes('1:2.png') && i.complete && i.naturalWidth > 0;"))
    WebDriverWait(driver, 30).until(lambda d: "rms Beam Size" in d.find_element("id", "console").text)
    driver.save_screenshot(shot)
finally:
    driver.quit()
PY
small "$WORK/browser.png" 80% "$OUT/browser.png"

for p in overview runs particles slices windows browser; do
  size=$(stat -c %s "$OUT/$p.png")
  [ "$size" -lt 153600 ] || fail "$OUT/$p.png is $size bytes, over 150 kB"
  echo "make_pictures: $OUT/$p.png $((size / 1024)) kB"
done
