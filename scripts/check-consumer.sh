#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Consumes kxcommon as a user outside the tree would. The shared library is installed into a
# temporary prefix; the static one is built as a subdirectory of the consumer project and
# installed from there. tests/consumer is then built against each installed prefix with
# find_package and with pkg-config, and every program runs (they check that the library's
# start-up ran, which a static link could lose); examples/ is built and run the same way.
# Also: every installed header compiles on its own, a C++17 compiler is stopped with a clear
# message, and no installed file names the source or build folders.
# Usage: check-consumer.sh [SHARED_BUILD]
#   SHARED_BUILD: an existing Release build of the shared library (as `make` leaves in
#   build/release); configured here when not given. The work goes to build/consumer.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
work=$root/build/consumer
shared_build=${1:-$work/lib-shared}
rm -rf "$work"
mkdir -p "$work"
gen=(-G Ninja)
cxx=${CXX:-c++}
app_src=$root/tests/consumer

step() { echo "== $*"; }

step "kxcommon (shared): build in $shared_build, install"
[ -f "$shared_build/CMakeCache.txt" ] ||
  cmake -S "$root" -B "$shared_build" "${gen[@]}" -DCMAKE_BUILD_TYPE=Release \
    -DKX_BUILD_TESTS=OFF -DKX_WERROR=ON >/dev/null
cmake --build "$shared_build"
cmake --install "$shared_build" --prefix "$work/prefix-shared" >/dev/null

step "kxcommon (static) as a subdirectory of the consumer, then installed from there"
cmake -S "$app_src" -B "$work/app-subdir" "${gen[@]}" -DCMAKE_BUILD_TYPE=Release \
  -DKXCOMMON_SOURCE_DIR="$root" -DBUILD_SHARED_LIBS=OFF -DKX_INSTALL=ON >/dev/null
cmake --build "$work/app-subdir"
"$work/app-subdir/app"
cmake --install "$work/app-subdir" --prefix "$work/prefix-static" >/dev/null

for kind in shared static; do
  prefix=$work/prefix-$kind
  step "consumer ($kind): find_package(kxcommon 0.1) and kxcommon::kxcommon"
  cmake -S "$app_src" -B "$work/app-cmake-$kind" "${gen[@]}" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
  cmake --build "$work/app-cmake-$kind"
  "$work/app-cmake-$kind/app"

  step "consumer ($kind): pkg-config"
  static=()
  [ "$kind" = static ] && static=(--static)
  flags=$(PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config "${static[@]}" --cflags --libs kxcommon)
  echo "$cxx -std=c++20 app.cpp $flags"
  # shellcheck disable=SC2086 # the flags are words
  "$cxx" -std=c++20 "$app_src/app.cpp" $flags -o "$work/app-pc-$kind"
  LD_LIBRARY_PATH="$prefix/lib" "$work/app-pc-$kind"

  step "examples ($kind): examples/ on its own against the installed kxcommon"
  ex=$work/examples-$kind
  cmake -S "$root/examples" -B "$ex" "${gen[@]}" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
  cmake --build "$ex"
  (
    cd "$ex"
    printf kxcommon >sample.txt
    ./ObjectsDemo >/dev/null
    ./CodePages codepages.txt >/dev/null
    ./Locks >/dev/null
    [ "$(./EncodeFile base64 sample.txt)" = a3hjb21tb24= ]
  )
done

step "installed files name no source or build folder"
if grep -rlF "$root" "$work/prefix-shared" "$work/prefix-static"; then
  echo "the installed files above contain build paths" >&2
  exit 1
fi

step "each installed header compiles on its own"
prefix=$work/prefix-shared
find "$prefix/include" -name '*.h' | sort | sed "s|^$prefix/include/||" >"$work/headers.txt"
xargs -P 2 -I{} sh -c 'printf "#include <%s>\n" "$1" | "$2" -std=c++20 -fsyntax-only -Wall \
  -Wextra -Werror -I"$3" -x c++ - || { echo "does not compile alone: $1" >&2; exit 255; }' \
  _ {} "$cxx" "$prefix/include" <"$work/headers.txt"
echo "$(wc -l <"$work/headers.txt") headers"

step "a C++17 consumer is stopped with a clear message"
if printf '#include <kx/uKxClasses.h>\n' |
  "$cxx" -std=c++17 -fsyntax-only -I"$prefix/include" -x c++ - 2>"$work/cxx17.txt"; then
  echo "a C++17 compile of the headers succeeded" >&2
  exit 1
fi
grep -m1 'kxcommon needs C++20' "$work/cxx17.txt"

step "installed tree"
for kind in shared static; do
  echo "$kind: $(find "$work/prefix-$kind" -type f | wc -l) files, $(du -sb "$work/prefix-$kind" | cut -f1) bytes"
done
ls -l "$work/prefix-shared/lib/" "$work/prefix-static/lib/" | grep -E 'libkxcommon'
echo "consumer checks passed"
