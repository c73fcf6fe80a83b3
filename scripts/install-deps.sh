#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs the Debian packages a build needs, and only those missing.
# Usage: install-deps.sh GROUP...   (build, test, windows, tsan, bench, format)
set -euo pipefail
declare -A groups=(
  [build]="cmake ninja-build g++ make pkg-config zlib1g-dev libicu-dev libssl-dev libmagic-dev libcli11-dev libsystemd-dev"
  [test]="libgtest-dev coreutils gzip sharutils xsltproc libxml2-utils file media-types pigz qpdf dbus-daemon python3-dbusmock"
  [windows]="g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix libz-mingw-w64-dev libgtest-dev libcli11-dev wine64 wine"
  [tsan]="clang libclang-rt-dev libgtest-dev"
  [bench]="libbenchmark-dev libspdlog-dev hyperfine"
  [format]="clang-format git"
)
[ $# -gt 0 ] || set -- build
packages=()
for g in "$@"; do
  [ -n "${groups[$g]+x}" ] || { echo "install-deps.sh: unknown group '$g' (${!groups[*]})" >&2; exit 2; }
  read -ra list <<<"${groups[$g]}"
  packages+=("${list[@]}")
done
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
# Each package once, in the order first named.
mapfile -t missing < <(printf '%s\n' "${missing[@]}" | awk '!seen[$0]++')
if [ "$(id -u)" -ne 0 ]; then
  echo "Missing packages. Run as root:" >&2
  echo "  apt-get update && apt-get install -y ${missing[*]}" >&2
  exit 1
fi
echo "Installing: ${missing[*]}"
apt-get update -qq
DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}"
