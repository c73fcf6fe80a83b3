#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs a build's CTest suite and closes with the GoogleTest totals of all its executables.
# Usage: run-tests.sh BUILD_DIR LABEL [wine]
set -uo pipefail
build=${1:?build directory}
label=${2:?label}
mode=${3:-native}

if [ "$mode" = wine ]; then
  export WINEPREFIX=${WINEPREFIX:-$PWD/$build/wineprefix}
  export WINEDEBUG=${WINEDEBUG:--all}
  export WINEDLLOVERRIDES="mscoree,mshtml="
  if [ ! -f "$WINEPREFIX/system.reg" ]; then
    echo "Creating Wine prefix in $WINEPREFIX"
    /usr/lib/wine/wine64 wineboot --init >/dev/null 2>&1 || true
  fi
  # No display here: the null graphics driver lets tests create (hidden) windows.
  if ! grep -q '"Graphics"="null"' "$WINEPREFIX/user.reg" 2>/dev/null; then
    /usr/lib/wine/wine64 reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1 || true
    # The desktop process started by the prefix's creation keeps the driver it found then.
    /usr/lib/wine/wineserver -w >/dev/null 2>&1 || true
  fi
  # One wineserver for the whole run: each Wine start would otherwise pay for its own.
  /usr/lib/wine/wineserver -p >/dev/null 2>&1 || true
  trap '/usr/lib/wine/wineserver -k >/dev/null 2>&1 || true' EXIT
fi

log=$(mktemp)
# No "|| true" here: under pipefail it would run, and PIPESTATUS would then be its own.
ctest --test-dir "$build" --output-on-failure -V 2>&1 | tee "$log" |
  grep -E '^[0-9]+: \[  (PASSED  |FAILED  |SKIPPED )\]|tests passed|Test +#|\*\*\*'
rc=${PIPESTATUS[0]}
passed=$(grep -E '^[0-9]+: \[  PASSED  \] [0-9]+ test' "$log" | awk '{s+=$5} END {print s+0}')
# Brief output names each failed test and prints no count of them.
failed=$(grep -cE '^[0-9]+: \[  FAILED  \] [^ ]+ \([0-9]+ ms\)' "$log")
skipped=$(grep -E '^[0-9]+: \[  SKIPPED \] [0-9]+ test' "$log" | awk '{s+=$5} END {print s+0}')
if [ "$rc" -ne 0 ] && [ "$failed" -eq 0 ]; then failed=1; fi # a crash reports no totals
rm -f "$log"
echo "$label: $passed passed, $failed failed, $skipped skipped"
exit "$rc"
