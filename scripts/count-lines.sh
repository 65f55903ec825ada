#!/usr/bin/env bash
# Prints the non-blank lines of code and of tests, and their ratio, counted the same way
# for C, C++, Python, shell, CMake and JavaScript. Tests are tests/, js/test/ and fuzz/
# (the reference implementation and the fuzz targets only exist to check the code);
# everything else tracked by git is code.
# Usage: bash scripts/count-lines.sh [--max-ratio N/D]   (fails when tests exceed N/D of code)
set -euo pipefail
cd "$(dirname "$0")/.."
max=""
if [ "${1:-}" = "--max-ratio" ]; then max=${2:?--max-ratio needs a number}; fi

count() { xargs -r cat | grep -c '[^[:space:]]' || true; }
files=$(git ls-files | grep -E '\.(c|cc|cpp|h|hpp|py|sh|cmake|js|mjs)$|(^|/)CMakeLists\.txt$')
test_re='^(tests|fuzz|js/test)/'
tests=$(grep -E "$test_re" <<<"$files" | count)
code=$(grep -vE "$test_re" <<<"$files" | count)
ratio=$(awk -v t="$tests" -v c="$code" 'BEGIN { printf "%.3f", t / c }')
echo "code $code, tests $tests, tests/code $ratio"
if [ -n "$max" ] && [ $((tests * ${max#*/})) -gt $((code * ${max%/*})) ]; then
  echo "tests exceed $max x code" >&2
  exit 1
fi
