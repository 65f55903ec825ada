#!/usr/bin/env bash
# Builds everything from scratch and runs every kind of check once: the habits
# (scripts/lint.sh), the whole suite in a plain build (fuzz regressions and packaging
# included), the WebAssembly package (scripts/test-js.sh), the suite again under
# ASan+UBSan and the threaded tests under TSan (scripts/test-sanitizers.sh), then each
# fuzzer for a bounded time (LINGOMAT_FUZZ_SECONDS per target, default 30). Each stage can be
# run alone; the sanitizer and fuzz stages keep their own build folders. Ends with the wall
# and CPU time of every stage.
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=$(nproc)
summary=()

# Sets `cpu` to the CPU seconds used so far by the processes this script waited for. `times`
# must run in this shell: in a command substitution it would report the subshell's children.
times_file=$(mktemp)
trap 'rm -f "$times_file"' EXIT
cpu=0
read_cpu() {
  times >"$times_file"
  cpu=$(awk 'NR == 2 { for (i = 1; i <= 2; ++i) { split($i, t, /[ms]/); s += t[1] * 60 + t[2] }
                       print s }' "$times_file")
}
stage() {
  local name=$1 start=$SECONDS before
  shift
  read_cpu
  before=$cpu
  "$@"
  read_cpu
  summary+=("$(printf '%-8s %5d s wall %6.0f s CPU' "$name" $((SECONDS - start)) \
    "$(awk -v a="$before" -v b="$cpu" 'BEGIN { print b - a }')")")
}
plain() {
  rm -rf build
  cmake -S . -B build -DLINGOMAT_WERROR=ON -DLINGOMAT_BUILD_BENCHMARKS=ON >/dev/null
  cmake --build build -j"$jobs"
  ctest --test-dir build --output-on-failure -j"$jobs"
}

stage install bash scripts/install-deps.sh test
stage lint bash scripts/lint.sh
stage plain plain
stage js bash scripts/test-js.sh
stage asan bash scripts/test-sanitizers.sh asan
stage tsan bash scripts/test-sanitizers.sh tsan
stage fuzz bash scripts/fuzz.sh "${LINGOMAT_FUZZ_SECONDS:-30}"
printf '%s\n' "${summary[@]}"
