#!/usr/bin/env bash
# The real viewer under Xvfb: both windows open, project and run are
# printed, a row is echoed, a page turns, "EXIT" ends with status 0 and
# writes win_config.dat.
VIEWER=$1
SRC=$2
source "$SRC/tests/e2e/lib/xsession.sh"

copy_example "$SRC"

start_x
start_viewer "$RUN" "$WORK/input" rfgun,1
wait_for "     Project name is: rfgun"
wait_for "     Run number is:   001"

click_row_until 2 " rms Beam Size"
turn_page
click_row 1
wait_for " Energy vs. Phase"
click_row 25
wait_for " EXIT"
status=$(wait_exit)
[ "$status" = 0 ] || fail "exit status $status"
[ -s "$RUN/win_config.dat" ] || fail "win_config.dat not written"
grep -q "&WIN_CONFIG" "$RUN/win_config.dat" || fail "win_config.dat has no group"
echo "e2e session: ok"
