#!/bin/sh
# SPDX-License-Identifier: MIT
# Runs a Windows program under wine64 for CTest. The output goes through a file: Wine's
# service processes, when the program starts them, inherit its handles and live on, and
# must not hold CTest's pipe open after the program has ended.
out=$(mktemp)
# The program may read its own output (Wine's traces among it) through KX_TEST_OUTPUT_FILE.
KX_TEST_OUTPUT_FILE="$out" /usr/lib/wine/wine64 "$@" >"$out" 2>&1
rc=$?
cat "$out"
rm -f "$out"
exit $rc
