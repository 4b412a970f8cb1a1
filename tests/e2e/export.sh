#!/usr/bin/env bash
# The headless export of the real viewer with no display: every available
# row of the bundled run to PNG, one row to each of PS, EPS and PDF, the
# overview sheet of every page, runs 1 to 3 on one plot, several plots to
# PNG files with nothing of the library's on the terminal, and the exit
# status of each kind of error.
set -euo pipefail
VIEWER=$1
SRC=$2
unset DISPLAY
WORK=$(mktemp -d /tmp/viewer-export-XXXXXX)
trap 'rm -rf "$WORK"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
cp "$SRC"/examples/rfgun.* "$SRC"/examples/Geometry.dat "$WORK"/
cd "$WORK"

# "WIDTH HEIGHT" from the header of a PNG file, after checking its signature.
png_size() {
  [ "$(od -An -tx1 -N8 "$1" | tr -d ' \n')" = 89504e470d0a1a0a ] ||
    fail "$1 is no PNG file: $(ls -l "$1" 2>&1; od -c -N16 "$1" 2>&1 | head -1); the viewer said: $(cat err.txt)"
  od -An -tu1 -j16 -N8 "$1" | awk '{ print $1*16777216 + $2*65536 + $3*256 + $4, $5*16777216 + $6*65536 + $7*256 + $8 }'
}
renders() { gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=png16m -r30 -sOutputFile="$WORK/r.png" "$1" >/dev/null 2>&1 ||
  fail "ghostscript cannot render $1"; }

"$VIEWER" rfgun,1 --list >list.txt || fail "--list failed"
rows=$(awk '$1 ~ /^[0-9]+:[0-9]+$/ { print $1 }' list.txt)
[ "$(wc -w <<<"$rows")" -ge 40 ] || fail "--list names too few rows: $rows"
for r in $rows; do
  "$VIEWER" rfgun,1 --plot "$r" --out "row-${r/:/-}.png" --size 400x300 >/dev/null 2>err.txt ||
    fail "--plot $r: $(cat err.txt)"
  [ "$(png_size "row-${r/:/-}.png")" = "400 300" ] || fail "row $r: not 400 by 300 pixels"
done

"$VIEWER" rfgun,1 --plot 1:2 --out one.ps >ps.txt || fail "PostScript"
renders one.ps
"$VIEWER" rfgun,1 --plot 1:2 --out one.eps >/dev/null || fail "EPS"
head -1 one.eps | grep -q EPSF || fail "one.eps is not encapsulated"
renders one.eps
"$VIEWER" rfgun,1 --plot 1:2 --plot 1:12 --out two.pdf --mono --geometry >/dev/null || fail "PDF"
head -c 5 two.pdf | grep -q '%PDF' || fail "two.pdf is no PDF"
renders two.pdf
for p in 1 2 3 4 5; do
  "$VIEWER" rfgun,1 --overview "$p" --out "sheet$p.ps" >/dev/null || fail "overview of page $p"
  renders "sheet$p.ps"
done
grep -q "     1: black (horizontal): " ps.txt || fail "no statistics on standard output"

"$VIEWER" rfgun,1 --plot 1:2 --runs 1-3 --out runs.ps >runs.txt || fail "--runs to PostScript"
renders runs.ps
[ "$(grep -c '^     run 00[123]$' runs.txt)" = 3 ] || fail "not one statistics block a run"
# black, red and blue: a colour a run
for c in "0 0 0 K" "1024 0 0 K" "0 0 1024 K"; do grep -q "$c" runs.ps || fail "runs.ps lacks the colour $c"; done
"$VIEWER" rfgun,1 --overview 1 --runs 1-3 --out runs.png >/dev/null || fail "--runs overview to PNG"
png_size runs.png >/dev/null
"$VIEWER" rfgun,1 --plot 1:1 --plot 1:2 --plot 1:3 --out many.png >/dev/null 2>err.txt || fail "three PNG files"
for f in many.png many_2.png many_3.png; do png_size "$f" >/dev/null; done
[ ! -s err.txt ] || fail "the terminal got: $(cat err.txt)"

# status and the words of each error
expect() {
  local want=$1 words=$2
  shift 2
  set +e
  env ${RUN_ENV:-} "$VIEWER" "$@" >/dev/null 2>err.txt
  local got=$?
  set -e
  [ "$got" = "$want" ] || fail "'$*' ended with $got, not $want"
  grep -qF -- "$words" err.txt || fail "'$*' said '$(cat err.txt)', not '$words'"
}
expect 2 "unknown option --colour" rfgun,1 --plot 1:1 --out a.ps --colour
expect 2 "it needs .Sigma" rfgun,3 --plot 5:1 --out a.ps
expect 1 "no data files of project nothere" nothere --plot 1:1 --out a.ps
RUN_ENV="PATH=$WORK/empty" expect 1 "needs ghostscript (gs)" rfgun,1 --plot 1:1 --out a.pdf
[ ! -e win_config.dat ] || fail "the export wrote win_config.dat"
echo "e2e export: ok"
