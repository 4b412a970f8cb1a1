# Helpers for end-to-end tests of the real viewer under an Xvfb of their own.
set -euo pipefail
VIEWER=${VIEWER:?}
WORK=$(mktemp -d /tmp/viewer-e2e-XXXXXX)
XPID="" VPID=""
fail() { echo "FAIL: $*" >&2; [ -f "$WORK/out.txt" ] && sed 's/^/  | /' "$WORK/out.txt" >&2; exit 1; }
stop_all() {
  [ -n "$VPID" ] && kill "$VPID" 2>/dev/null || true
  [ -n "$XPID" ] && kill "$XPID" 2>/dev/null || true
  wait 2>/dev/null || true
  rm -rf "$WORK"
}
trap stop_all EXIT

# poll WHAT COMMAND...: runs COMMAND until it succeeds, for ten seconds (POLL_TENTHS tenths).
poll() {
  local what=$1
  shift
  for _ in $(seq 1 "${POLL_TENTHS:-100}"); do "$@" >/dev/null 2>&1 && return 0; sleep 0.1; done
  fail "$what"
}
shows() { [ "$(grep -cF -- "$1" "$WORK/out.txt" 2>/dev/null || true)" -ge "${2:-1}" ]; }
wait_for() { poll "console never showed '$1' ${2:-1} times" shows "$@"; }

# Xvfb picks a free display itself and names it once it accepts clients.
x_ready() { [ -s "$WORK/display" ] && export DISPLAY=":$(tr -dc '0-9' <"$WORK/display")" && xdpyinfo; }
start_x() {
  : >"$WORK/display"
  # -noreset: the server would start anew after xdpyinfo leaves, refusing the viewer meanwhile.
  Xvfb -displayfd 4 -screen 0 1600x1200x24 -dpi 100 -nolisten tcp -noreset 4>"$WORK/display" >/dev/null 2>&1 &
  XPID=$!
  poll "Xvfb did not start" x_ready
}

# copy_example SRC: the bundled run in $RUN, answers of standard input in $WORK/input.
copy_example() {
  RUN="$WORK/run"
  mkdir -p "$RUN"
  cp "$1"/examples/rfgun.* "$1"/examples/Geometry.dat "$RUN"/ 2>/dev/null || fail "no bundled example run"
  : >"$WORK/input"
}

# start_viewer DIR INPUTFILE ARGS...: the viewer in DIR, standard input from INPUTFILE.
start_viewer() {
  local dir=$1 input=$2
  shift 2
  (cd "$dir" && "$VIEWER" "$@" <"$input" >"$WORK/out.txt" 2>&1; echo "$?" >"$WORK/status") &
  VPID=$!
  # The library's window server starts with the first window: a busy machine takes its time.
  POLL_TENTHS=400 poll "window 101 did not open" xdotool search --name "PGPLOT Window 101"
  POLL_TENTHS=400 poll "window 102 did not open" xdotool search --name "PGPLOT Window 102"
  MENU=$(xdotool search --name "PGPLOT Window 101" | head -1)
  read -r MW MH < <(xdotool getwindowgeometry "$MENU" | awk '/Geometry/ {split($2, a, "x"); print a[1], a[2]}')
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
turn_page() { click_world 0.2 0.99; }

# click_row_until N TEXT: a pick made before the menu waits for the pointer
# is lost, so the row is clicked again until the console echoes TEXT.
click_row_until() {
  for _ in 1 2 3 4 5; do
    click_row "$1"
    for _ in $(seq 1 30); do shows "$2" && return 0; sleep 0.1; done
  done
  fail "console never showed '$2'"
}

wait_exit() { poll "viewer did not end" test -f "$WORK/status"; cat "$WORK/status"; }
