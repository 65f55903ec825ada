#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, ASan+UBSan) in build-fuzz/, replays every past
# finding kept in fuzz/regressions/, then fuzzes each target for a bounded time from
# the seed corpus in fuzz/corpus/. New inputs go to a scratch folder, not the repository;
# a crash leaves its input in build-fuzz/findings/ (add it to fuzz/regressions/ once fixed).
# Usage: bash scripts/fuzz.sh [SECONDS_PER_TARGET]   (default 120)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
seconds=${1:-120}
if ! [[ "$seconds" =~ ^[0-9]+$ ]] || [ "$seconds" -lt 1 ]; then
  echo "SECONDS_PER_TARGET must be a positive whole number, not '$seconds'" >&2
  exit 2
fi
targets=(identify_fuzzer data_file_fuzzer long_input_fuzzer)

CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DLINGOMAT_BUILD_FUZZERS=ON -DLINGOMAT_BUILD_TESTS=OFF -DLINGOMAT_BUILD_BENCHMARKS=OFF \
  -DLINGOMAT_WERROR=ON >/dev/null
cmake --build build-fuzz -j"$(nproc)" --target "${targets[@]}"

export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1:suppressions=$root/tests/sanitizers/ubsan.supp"
export ASAN_OPTIONS=detect_leaks=1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p build-fuzz/findings

for target in "${targets[@]}"; do
  binary=build-fuzz/fuzz/$target
  echo "== $target: replaying fuzz/regressions/$target" >&2
  "$binary" -rss_limit_mb=2048 -timeout=30 fuzz/regressions/"$target"/*
  echo "== $target: fuzzing for ${seconds}s" >&2
  mkdir -p "$scratch/$target"
  "$binary" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=30 -print_final_stats=1 \
    -artifact_prefix=build-fuzz/findings/"$target"- "$scratch/$target" fuzz/corpus/"$target"
done
