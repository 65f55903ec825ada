#!/usr/bin/env bash
# Builds the library, tools and tests under sanitizers (clang) and runs every test.
# Usage: bash scripts/test-sanitizers.sh [asan] [tsan]   (default: both)
#   asan: AddressSanitizer (leaks included) + UndefinedBehaviorSanitizer, in build-asan/,
#         every test but the packaging ones
#   tsan: ThreadSanitizer on the tests labelled "threads" (one engine shared by many threads,
#         the tools' thread pool, the command-line tool's parallel walk), in build-tsan/
# Each stage keeps its own build folder, so a second run only rebuilds what changed.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
stages=("$@")
[ ${#stages[@]} -eq 0 ] && stages=(asan tsan)
jobs=$(nproc)

for stage in "${stages[@]}"; do
  case "$stage" in
    asan)
      sanitize=address,undefined
      targets=(all)
      # Packaging is checked once, in the plain build.
      select=(-LE packaging)
      ;;
    tsan)
      sanitize=thread
      targets=(lingomat lingomat_threads_stress_test lingomat_tools_test)
      select=(-L threads)
      ;;
    *)
      echo "unknown stage '$stage' (asan or tsan)" >&2
      exit 2
      ;;
  esac
  dir=build-$stage
  echo "== $stage: building in $dir" >&2
  CC=clang CXX=clang++ cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DLINGOMAT_SANITIZE="$sanitize" -DLINGOMAT_WERROR=ON -DLINGOMAT_BUILD_BENCHMARKS=OFF >/dev/null
  cmake --build "$dir" -j"$jobs" --target "${targets[@]}"
  echo "== $stage: testing" >&2
  # Any report fails the test that caused it; UBSan's one suppression is explained in its file.
  ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 \
    UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1:suppressions=$root/tests/sanitizers/ubsan.supp" \
    TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
    ctest --test-dir "$dir" --output-on-failure -j"$jobs" "${select[@]}"
done
