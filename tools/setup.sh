#!/usr/bin/env bash
# Installs what a fresh Debian 12 machine lacks to build, test and run the viewer.
# Idempotent: safe to run again when everything is already there.
set -euo pipefail

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  if command -v sudo >/dev/null 2>&1; then SUDO="sudo"; else
    echo "setup: run as root or install sudo" >&2; exit 1; fi
fi

packages=(pgplot5 xvfb xdotool x11-utils ghostscript cmake g++ make libgtest-dev libbenchmark-dev clang-format clang
  libclang-rt-14-dev nlohmann-json3-dev libcpp-httplib-dev chromium chromium-driver python3-selenium groff-base man-db
  dpkg-dev imagemagick pkg-config file curl
  pybind11-dev python3-pybind11 python3-dev python3-numpy python3-pandas python3-pytest python3-nbclient
  python3-ipykernel python3-nbformat)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
  echo "setup: all packages present"
  exit 0
fi

# PGPLOT lives in Debian's non-free component, which the default sources lack.
src=/etc/apt/sources.list.d/debian-non-free.sources
if [ ! -f "$src" ]; then
  uri=http://deb.debian.org/debian
  keyring=/usr/share/keyrings/debian-archive-keyring.gpg
  main=/etc/apt/sources.list.d/debian.sources
  if [ -f "$main" ]; then
    u=$(awk '/^URIs:/{print $2; exit}' "$main"); [ -n "$u" ] && uri=$u
    k=$(awk '/^Signed-By:/{print $2; exit}' "$main"); [ -n "$k" ] && keyring=$k
  fi
  $SUDO tee "$src" >/dev/null <<SRC
Types: deb
URIs: $uri
Suites: bookworm
Components: non-free
Signed-By: $keyring
SRC
fi

$SUDO apt-get update -qq
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}"
echo "setup: installed ${missing[*]}"
