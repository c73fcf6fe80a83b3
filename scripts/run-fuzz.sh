#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs every fuzz target of a build for a number of seconds each, starting from the corpus
# in fuzz/corpus/<name>. New inputs go to a working corpus in the build folder, so the tree's
# corpus only changes by hand; a finding is saved there as crash-*, leak-* or timeout-*.
# Usage: run-fuzz.sh BUILD_DIR SECONDS
set -euo pipefail
build=${1:?build directory}
seconds=${2:?seconds per target}
src=$(cd "$(dirname "$0")/.." && pwd)

shopt -s nullglob
targets=("$build"/bin/kx_fuzz_*)
if [ ${#targets[@]} -eq 0 ]; then
  echo "no fuzz targets in $build/bin" >&2
  exit 1
fi
status=0
for exe in "${targets[@]}"; do
  name=${exe##*/kx_fuzz_}
  start=$src/fuzz/corpus/$name
  work=$build/corpus/$name
  findings=$build/findings/$name
  mkdir -p "$work" "$findings"
  echo "== $name: ${seconds}s"
  if ! "$exe" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=4096 \
      -print_final_stats=1 -artifact_prefix="$findings/" "$work" "$start" \
      >"$build/$name.log" 2>&1; then
    echo "   FAILED: see $build/$name.log and $findings/" >&2
    tail -n 30 "$build/$name.log" >&2
    status=1
  else
    grep -E '^stat::number_of_executed_units|^stat::peak_rss_mb' "$build/$name.log" | sed 's/^/   /'
  fi
done
exit $status
