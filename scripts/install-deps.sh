#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, and only those missing.
set -euo pipefail
packages=(
  cmake ninja-build g++ make pkg-config clang-format clang libclang-rt-dev
  zlib1g-dev libicu-dev libssl-dev libgtest-dev libbenchmark-dev
  g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix libz-mingw-w64-dev
  wine64 wine
  coreutils gzip sharutils xsltproc
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
if [ "$(id -u)" -ne 0 ]; then
  echo "Missing packages. Run as root:" >&2
  echo "  apt-get update && apt-get install -y ${missing[*]}" >&2
  exit 1
fi
echo "Installing: ${missing[*]}"
apt-get update -qq
DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}"
