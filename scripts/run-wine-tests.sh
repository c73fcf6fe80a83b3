#!/usr/bin/env bash
# Runs the Windows test build's CTest suite under wine64 with one wineserver kept alive.
set -euo pipefail
build=${1:?build directory}
export WINEPREFIX=${WINEPREFIX:-$PWD/$build/wineprefix}
export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES="mscoree,mshtml="
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  echo "Creating Wine prefix in $WINEPREFIX"
  /usr/lib/wine/wine64 wineboot --init >/dev/null 2>&1 || true
fi
/usr/lib/wine/wineserver -p >/dev/null 2>&1 || true
trap '/usr/lib/wine/wineserver -k >/dev/null 2>&1 || true' EXIT
ctest --test-dir "$build" --output-on-failure
