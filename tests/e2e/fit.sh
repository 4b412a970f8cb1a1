#!/usr/bin/env bash
# A fit picked in the real fit menu: "fit, save & read" on a drawn plot,
# the straight line fit printed for both curves, then "EXIT sub menu".
VIEWER=$1
SRC=$2
source "$SRC/tests/e2e/lib/xsession.sh"

copy_example "$SRC"
start_x
start_viewer "$RUN" "$WORK/input" rfgun,1
wait_for "     Run number is:   001"

click_row_until 2 " rms Beam Size"
click_row 20
wait_for " fit, save & read"
wait_count "2: red (vertical)" 2   # the redraw is done: the fit menu waits next
sleep 0.5
click_world 0.03 0.80   # straight line fit
wait_for "     straight line fit: Y = a + b*x"
wait_for "     red line: "
click_row 20
wait_count "2: red (vertical)" 3
sleep 0.5
click_world 0.03 0.05   # EXIT sub menu
sleep 0.5
click_row 25
status=$(wait_exit)
[ "$status" = 0 ] || fail "exit status $status"
[ "$(grep -c "straight line fit" "$WORK/out.txt")" = 1 ] || fail "the exit pick fitted again"
echo "e2e fit: ok"
