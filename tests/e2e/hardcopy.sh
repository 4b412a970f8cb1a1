#!/usr/bin/env bash
# "to file" from the real viewer writes a PostScript page that ghostscript
# renders; "overview to file" writes the sheet under its own name.
VIEWER=$1
SRC=$2
source "$SRC/tests/e2e/lib/xsession.sh"

copy_example "$SRC"
printf 'page.cps\n' >"$WORK/input"

start_x
start_viewer "$RUN" "$WORK/input" rfgun,1
wait_for "     Run number is:   001"
click_row_until 1 " Trans. Emittance"
click_row 21
wait_for "saved to file:"
click_row 22
wait_for "rfgun1.001.ps"
click_row 25
status=$(wait_exit)
[ "$status" = 0 ] || fail "exit status $status"
[ -s "$RUN/page.ps" ] || fail "page.ps not written"
[ -s "$RUN/rfgun1.001.ps" ] || fail "overview not written"
gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=png16m -r40 -sOutputFile="$WORK/page.png" "$RUN/page.ps" >/dev/null 2>&1 ||
  fail "ghostscript could not render page.ps"
[ -s "$WORK/page.png" ] || fail "no rendering"
echo "e2e hardcopy: ok"
