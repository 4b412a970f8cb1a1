#!/usr/bin/env bash
# The real viewer under Xvfb, driven by clicks: both windows open, a row is
# echoed, a fit is picked in the fit menu and its exit pick fits nothing,
# "to file" and "overview to file" write PostScript that ghostscript renders,
# a page turns, and "EXIT" ends with status 0 and writes win_config.dat.
VIEWER=$1
SRC=$2
source "$SRC/tests/e2e/lib/xsession.sh"
copy_example "$SRC"
printf 'page.cps\n' >"$WORK/input"
start_x
start_viewer "$RUN" "$WORK/input" rfgun,1
wait_for "     Project name is: rfgun"

click_row_until 2 " rms Beam Size"
click_row 20
wait_for " fit, save & read"
wait_for "2: red (vertical)" 2 # the redraw is done: the fit menu waits next
sleep 0.5
click_world 0.03 0.80 # straight line fit
wait_for "     straight line fit: Y = a + b*x"
wait_for "     red line: "
click_row 20
wait_for "2: red (vertical)" 3
sleep 0.5
click_world 0.03 0.05 # EXIT sub menu
sleep 0.5
click_row 21
wait_for "saved to file:"
click_row 22
wait_for "rfgun1.001.ps"
turn_page
click_row 1
wait_for " Energy vs. Phase"
click_row 25
status=$(wait_exit)
[ "$status" = 0 ] || fail "exit status $status"
[ "$(grep -c "straight line fit" "$WORK/out.txt")" = 1 ] || fail "the exit pick fitted again"
[ -s "$RUN/rfgun1.001.ps" ] || fail "overview not written"
gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=png16m -r40 -sOutputFile="$WORK/page.png" "$RUN/page.ps" >/dev/null 2>&1 ||
  fail "ghostscript could not render page.ps"
grep -q "&WIN_CONFIG" "$RUN/win_config.dat" || fail "win_config.dat has no group"
echo "e2e interactive: ok"
