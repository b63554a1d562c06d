#!/usr/bin/env bash
# Fails when a C++ source of the tree differs from the project's .clang-format, and names
# each such file with the first lines clang-format would change.
#
#   scripts/check_format.sh [ROOT]        (default: the tree this script lives in)
#   scripts/check_format.sh --fix [ROOT]  formats the files in place instead
#
# The files are the tracked *.cpp and *.h under src/, tools/, tests/, fuzz/ and bench/, less
# the purpose-made inputs under tests/data/. Exit status: 0 clean, 1 differences, 2 no
# clang-format.
set -uo pipefail
fix=0
if [ "${1:-}" = --fix ]; then
  fix=1
  shift
fi
root=$(cd "${1:-$(dirname "$0")/..}" && pwd)
format=$(command -v clang-format || ls /usr/bin/clang-format-* 2>/dev/null | sort -V | tail -n 1)
if [ -z "$format" ]; then
  echo "check_format: clang-format is not installed (Debian package clang-format)" >&2
  exit 2
fi
cd "$root"
if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
  files=$(git ls-files -- 'src/*.cpp' 'src/*.h' 'tools/*.cpp' 'tools/*.h' 'tests/*.cpp' 'tests/*.h' \
    'fuzz/*.cpp' 'fuzz/*.h' 'bench/*.cpp' 'bench/*.h' | grep -v '^tests/data/')
else
  files=$(find src tools tests fuzz bench \( -name '*.cpp' -o -name '*.h' \) -not -path 'tests/data/*' | sort)
fi
if [ $fix = 1 ]; then
  echo "$files" | xargs "$format" -i
  exit 0
fi
bad=0
for f in $files; do
  [ -f "$f" ] || continue
  if ! diff=$("$format" "$f" | diff -u "$f" - 2>&1); then
    bad=$((bad + 1))
    echo "$f differs from .clang-format:"
    echo "$diff" | sed -n '3,12p'
  fi
done
if [ $bad -gt 0 ]; then
  echo "check_format: $bad file(s) differ; scripts/check_format.sh --fix formats them" >&2
  exit 1
fi
echo "check_format: $(echo "$files" | wc -l) files as .clang-format wants them"
