#!/usr/bin/env bash
# The viewer installed: `cmake --install` into a scratch prefix, the
# installed binary's version, help and an export of the bundled run, the
# manual page without a warning, and, where dpkg-deb is at hand, the Debian
# package's dependencies and its binary unpacked and run.
set -euo pipefail
VIEWER=$1
SRC=$2
BUILD=$(dirname "$VIEWER")
unset DISPLAY
WORK=$(mktemp -d /tmp/viewer-install-XXXXXX)
trap 'rm -rf "$WORK"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
version=$(sed -n 's/^project(viewer VERSION \([0-9.]*\).*/\1/p' "$SRC/CMakeLists.txt")

cmake --install "$BUILD" --prefix "$WORK/prefix" >/dev/null || fail "cmake --install"
for f in bin/viewer share/man/man1/viewer.1.gz share/doc/viewer/README.md; do
  [ -f "$WORK/prefix/$f" ] || fail "$f not installed"
done
installed() {
  mkdir -p "$WORK/run"
  cp "$SRC"/examples/rfgun.* "$WORK/run/"
  [ "$("$1" --version)" = "viewer $version" ] || fail "$1 --version: $("$1" --version)"
  local help
  help=$("$1" --help) || fail "$1 --help failed"
  head -1 <<<"$help" | grep -qx "viewer $version" || fail "$1 --help has no version"
  (cd "$WORK/run" && "$1" rfgun,1 --plot 1:2 --out plot.png >/dev/null) || fail "$1 cannot export"
  [ -s "$WORK/run/plot.png" ] || fail "$1 wrote no plot"
}
installed "$WORK/prefix/bin/viewer"
# The notebook module, where it was built: imported from the installed tree, drawing a row.
module=$(ls "$BUILD"/python/viewer/_viewer*.so 2>/dev/null || true)
imports() {
  (cd "$WORK/run" && PYTHONPATH="$1" /usr/bin/python3 -c \
    'import viewer; assert viewer.Run(".", "rfgun", 1).plot("1:2").png[:4] == b"\x89PNG"; print(viewer.__file__)') |
    grep -q "^$1/viewer/__init__.py$" || fail "the module under $1 does not import and draw"
}
[ -z "$module" ] || imports "$WORK/prefix/lib/python3/dist-packages"

warnings=$(groff -ww -z -man "$SRC/docs/viewer.1" 2>&1)
[ -z "$warnings" ] || fail "the manual page: $warnings"
grep -q "^\.TH VIEWER 1 .* \"viewer $version\"" "$SRC/docs/viewer.1" || fail "the manual page is not of version $version"

if command -v dpkg-deb >/dev/null && command -v cpack >/dev/null; then
  (cd "$BUILD" && cpack -G DEB -B "$WORK/deb" >"$WORK/cpack.log" 2>&1) || fail "cpack -G DEB: $(cat "$WORK/cpack.log")"
  deb=$(ls "$WORK"/deb/viewer_*.deb)
  depends=$(dpkg-deb --field "$deb" Depends)
  for p in pgplot5 ghostscript libcpp-httplib ${module:+python3-numpy}; do
    grep -q "$p" <<<"$depends" || fail "the package does not depend on $p: $depends"
  done
  dpkg -x "$deb" "$WORK/root"
  installed "$WORK/root/usr/bin/viewer"
  [ -z "$module" ] || imports "$WORK/root/usr/lib/python3/dist-packages"
  [ -f "$WORK/root/usr/share/man/man1/viewer.1.gz" ] || fail "the package has no manual page"
  gzip -t "$WORK/root/usr/share/man/man1/viewer.1.gz" || fail "the manual page is no gzip file"
fi
echo "e2e install: ok"
