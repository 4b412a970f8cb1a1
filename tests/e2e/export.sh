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
expect 2 "unknown option --color" rfgun,1 --plot 1:1 --out a.ps --color
expect 2 "it needs .Sigma" rfgun,3 --plot 5:1 --out a.ps
expect 1 "no data files of project nothere" nothere --plot 1:1 --out a.ps
RUN_ENV="PATH=$WORK/empty" expect 1 "needs ghostscript (gs)" rfgun,1 --plot 1:1 --out a.pdf

# Particle files: the listing, the statistics alone, each view in each
# format with its numbers, and a damaged file.
pf=$(awk '/^particle files/ { f = 1; next } f && $1 ~ /^rfgun\.[0-9][0-9][0-9][0-9]\.001$/ { print substr($1, 7, 4); exit }' list.txt)
[ -n "$pf" ] || fail "--list names no particle file of the bundled run"
"$VIEWER" rfgun,1 --particles "$pf" >pstats.txt || fail "--particles $pf"
grep -q "norm. emittance \[pi mrad mm\]:" pstats.txt || fail "no particle statistics: $(cat pstats.txt)"
"$VIEWER" rfgun,1 --particles "$pf" --plane x:xp --plane z:dE --out bunch.png --size 500x400 --csv bunch.csv \
  --stats bunch.json >/dev/null 2>err.txt || fail "particle planes to PNG: $(cat err.txt)"
for f in bunch.png bunch_2.png; do [ "$(png_size "$f")" = "500 400" ] || fail "$f: not 500 by 400 pixels"; done
[ "$(head -1 bunch.csv)" = "x [mm],xp [mrad]" ] || fail "bunch.csv: $(head -1 bunch.csv)"
[ "$(head -1 bunch_2.csv)" = "z [mm],dE [keV]" ] || fail "bunch_2.csv: $(head -1 bunch_2.csv)"
grep -q '"norm. emittance \[pi mrad mm\]"' bunch.json || fail "bunch.json holds no emittance"
"$VIEWER" rfgun,1 --particles "$pf" --sheet --out sheet.pdf >/dev/null || fail "particle sheet to PDF"
renders sheet.pdf
"$VIEWER" rfgun,1 --particles "$pf" --slices 12 --along z --out slices.eps --csv slices.csv >/dev/null ||
  fail "slices to EPS"
renders slices.eps
[ "$(wc -l <slices.csv)" = 13 ] || fail "slices.csv: not a line a slice"
printf ' 1 2 3 4 5 6 7 8 1 5\n 1 2 3\n' >bad.ini
expect 1 "bad.ini, line 2: 3 numbers where a particle has 10" rfgun,1 --particles bad.ini
expect 2 "--plane takes A:B" rfgun,1 --particles "$pf" --plane x:w

# A study of the real runs beside the repository, with its front and scatter.
real="$SRC/../shared/realdata"
if [ -d "$real" ]; then
  "$VIEWER" --study "$real" --front NX_EMIT,Z_RMS --out study.png --scatter NX_EMIT:Z_RMS --csv study.csv \
    >study.txt 2>err.txt || fail "--study: $(cat err.txt)"
  grep -q "^simframe-injector400 .* complete " study.txt || fail "the study misses a real run: $(cat study.txt)"
  grep -q "runs, [0-9]* on the front of NX_EMIT, Z_RMS$" study.txt || fail "no front in: $(cat study.txt)"
  png_size study.png >/dev/null
fi
mkdir -p "$WORK/empty-study"
expect 1 "no run with .Xemit, .Yemit or .Zemit tables under" --study "$WORK/empty-study"
[ ! -e win_config.dat ] || fail "the export wrote win_config.dat"
echo "e2e export: ok"
