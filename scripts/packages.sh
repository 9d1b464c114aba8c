#!/usr/bin/env bash
# Makes sure the Debian packages a step needs are there, and installs those that are not.
#   packages.sh build   what building and running the program takes
#   packages.sh check   what proving the project takes besides
#   packages.sh long    what its longer proofs take besides
set -euo pipefail

build=(cmake ninja-build g++ libsqlite3-dev libicu-dev libfmt-dev libboost-json1.81-dev libcli11-dev libexpected-dev
  libcsv-dev libboost-locale1.81-dev gettext libgd-dev libcurl4-openssl-dev libsystemd-dev
  ca-certificates)
check=(clang-format-14 clang-tidy-14 libgtest-dev librapidcheck-dev libbenchmark-dev sqlite3 groff zsh fish
  hledger ledger libssl-dev dbus-daemon)
long=(clang-14 libclang-rt-14-dev)

case "${1:-}" in
  build) wanted=("${build[@]}") ;;
  check) wanted=("${build[@]}" "${check[@]}") ;;
  long) wanted=("${build[@]}" "${check[@]}" "${long[@]}") ;;
  *) echo "usage: packages.sh build|check|long" >&2; exit 2 ;;
esac

if ! command -v dpkg-query >/dev/null; then
  # Another kind of host: CMake tells what it misses. Said once, before there is a build.
  [ -d "$(dirname "${BASH_SOURCE[0]}")/../build" ] || echo "moniva: this is no Debian; it takes what is in ${wanted[*]}" >&2
  exit 0
fi
installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null || true)
missing=()
for package in "${wanted[@]}"; do
  grep -qxF "$package installed" <<<"$installed" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if ! command -v apt-get >/dev/null; then
  echo "moniva: needs the Debian packages ${missing[*]}, and there is no apt-get to install them" >&2
  exit 1
fi
root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "moniva: needs the packages ${missing[*]}; as root run: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  root=(sudo)
fi
echo "Installing ${missing[*]} ..." >&2
{
  "${root[@]}" apt-get update -q
  "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
} >&2
