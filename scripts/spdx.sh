#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Every tracked source, header and script file begins with the licence line: "// ..." in
# C and C++ files, "# ..." in CMake, shell and Python files and Makefiles, after the "#!"
# line when there is one.
# Usage: spdx.sh         names the files without it and fails when there are any
#        spdx.sh --add   adds it where it is missing
set -euo pipefail
cd "$(dirname "$0")/.."
tag='SPDX-License-Identifier: MIT'
add=false
case ${1:-} in
  --add) add=true ;;
  "") ;;
  *)
    echo "usage: $0 [--add]" >&2
    exit 2
    ;;
esac

# The files of each kind, NUL-separated; deleted ones are skipped.
existing() { while IFS= read -r -d '' f; do [ -f "$f" ] && printf '%s\0' "$f"; done; }
c_files() { git ls-files -z -- '*.h' '*.hpp' '*.c' '*.cc' '*.cpp' '*.h.in' | existing; }
hash_files() {
  git ls-files -z -- '*CMakeLists.txt' '*.cmake' '*.cmake.in' '*.sh' '*.py' '*Makefile' | existing
  # Scripts without an extension (.ci/run) are known by their "#!" line.
  git ls-files -z | existing | grep -zv '\.[^/]*$' |
    xargs -0r awk 'FNR == 1 { if (substr($0, 1, 2) == "#!") printf "%s%c", FILENAME, 0; nextfile }'
}

# Names the files whose first line (second after "#!") is not the wanted one.
lacking() {
  xargs -0r awk -v want="$1" '
    FNR == 1 && /^#!/ { next }
    { if ($0 != want) print FILENAME; nextfile }'
}

missing=$( (c_files | lacking "// $tag"; hash_files | lacking "# $tag") | sort -u)
[ -n "$missing" ] || exit 0
if ! $add; then
  echo "$missing"
  echo "$(echo "$missing" | wc -l) files lack the line \"$tag\" (scripts/spdx.sh --add adds it)" >&2
  exit 1
fi
while IFS= read -r f; do
  case $f in
    *.h | *.hpp | *.c | *.cc | *.cpp | *.h.in) line="// $tag" ;;
    *) line="# $tag" ;;
  esac
  if [[ $(head -n1 -- "$f") == '#!'* ]]; then
    sed -i "1a\\$line" -- "$f"
  else
    sed -i "1i\\$line" -- "$f"
  fi
  echo "added to $f"
done <<<"$missing"
