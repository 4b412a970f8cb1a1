# Helpers for end-to-end tests of the real viewer under an Xvfb of their own.
# Source it; then: start_x; start_viewer ARGS < input; click_row N; ... ; stop_all.

set -euo pipefail

VIEWER=${VIEWER:?}
WORK=$(mktemp -d /tmp/viewer-e2e-XXXXXX)
XPID=""
VPID=""

fail() { echo "FAIL: $*" >&2; [ -f "$WORK/out.txt" ] && sed 's/^/  | /' "$WORK/out.txt" >&2; exit 1; }

stop_all() {
  [ -n "$VPID" ] && kill "$VPID" 2>/dev/null || true
  [ -n "$XPID" ] && kill "$XPID" 2>/dev/null || true
  wait 2>/dev/null || true
  rm -rf "$WORK"
}
trap stop_all EXIT

start_x() {
  # Xvfb picks a free display itself and names it once it accepts clients.
  : >"$WORK/display"
  Xvfb -displayfd 4 -screen 0 1600x1200x24 -dpi 100 -nolisten tcp 4>"$WORK/display" >/dev/null 2>&1 &
  XPID=$!
  for _ in $(seq 1 100); do
    if [ -s "$WORK/display" ]; then
      export DISPLAY=":$(tr -dc '0-9' <"$WORK/display")"
      xdpyinfo >/dev/null 2>&1 && return 0
    fi
    sleep 0.1
  done
  fail "Xvfb did not start"
}

# copy_example SRC: the bundled run in $WORK/run, with the answers of
# standard input in $WORK/input.
copy_example() {
  RUN="$WORK/run"
  mkdir -p "$RUN"
  cp "$1"/examples/rfgun.* "$1"/examples/Geometry.dat "$RUN"/ 2>/dev/null || fail "no bundled example run"
  : >"$WORK/input"
}

# start_viewer DIR INPUTFILE ARGS...: runs the viewer in DIR with standard input from INPUTFILE.
start_viewer() {
  local dir=$1 input=$2
  shift 2
  (cd "$dir" && "$VIEWER" "$@" <"$input" >"$WORK/out.txt" 2>&1; echo "$?" >"$WORK/status") &
  VPID=$!
  wait_window "PGPLOT Window 101"
  wait_window "PGPLOT Window 102"
  MENU=$(xdotool search --name "PGPLOT Window 101" | head -1)
  read -r MW MH < <(xdotool getwindowgeometry "$MENU" | awk '/Geometry/ {split($2, a, "x"); print a[1], a[2]}')
}

wait_window() {
  for _ in $(seq 1 100); do
    xdotool search --name "$1" >/dev/null 2>&1 && return 0
    sleep 0.1
  done
  fail "window '$1' did not open"
}

# wait_for TEXT: until the console holds TEXT.
wait_for() {
  for _ in $(seq 1 100); do
    grep -qF -- "$1" "$WORK/out.txt" 2>/dev/null && return 0
    sleep 0.1
  done
  fail "console never showed '$1'"
}

# wait_count TEXT N: until the console holds TEXT at least N times.
wait_count() {
  for _ in $(seq 1 100); do
    [ "$(grep -cF -- "$1" "$WORK/out.txt" 2>/dev/null || true)" -ge "$2" ] && return 0
    sleep 0.1
  done
  fail "console never showed '$1' $2 times"
}

# Clicks world position (x, y) of the menu window: the view surface lies a
# quarter inch inside the window, x 0 to 0.37 and y 0 to 1.
click_world() {
  local px py
  px=$(awk -v x="$1" -v w="$MW" 'BEGIN { printf "%d", 25 + x / 0.37 * (w - 50) }')
  py=$(awk -v y="$2" -v h="$MH" 'BEGIN { printf "%d", 25 + (1 - y) * (h - 50) }')
  xdotool mousemove --window "$MENU" "$px" "$((py + 3))"
  sleep 0.2
  xdotool mousemove --window "$MENU" "$px" "$py" click 1
}

click_row() { click_world 0.03 "$(awk -v i="$1" 'BEGIN { print 1 - (i + 0.5) / 26 }')"; }

# click_row_until N TEXT: the first pick of a session. The menu may not wait
# for the pointer yet when the window is up, and a click before that is lost,
# so the row is clicked again until the console echoes TEXT.
click_row_until() {
  for _ in 1 2 3 4 5; do
    click_row "$1"
    for _ in $(seq 1 30); do
      grep -qF -- "$2" "$WORK/out.txt" 2>/dev/null && return 0
      sleep 0.1
    done
  done
  fail "console never showed '$2'"
}
turn_page() { click_world 0.2 0.99; }

# wait_exit: the viewer's exit status.
wait_exit() {
  for _ in $(seq 1 100); do
    [ -f "$WORK/status" ] && { cat "$WORK/status"; return 0; }
    sleep 0.1
  done
  fail "viewer did not end"
}
