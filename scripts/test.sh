#!/usr/bin/env bash
# Builds everything from scratch and runs every test, the WebAssembly package's included
# (scripts/test-js.sh), then the same tests under ASan+UBSan, the threaded ones under TSan,
# and each fuzzer for a bounded time (LINGOMAT_FUZZ_SECONDS per target, default 30). Those stages keep their own build folders (build-asan,
# build-tsan, build-fuzz) and can be run alone: scripts/test-sanitizers.sh, scripts/fuzz.sh.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh test
rm -rf build
cmake -S . -B build -DLINGOMAT_WERROR=ON -DLINGOMAT_BUILD_BENCHMARKS=ON
cmake --build build -j"$(nproc)"
ctest --test-dir build --output-on-failure -j"$(nproc)"
bash scripts/test-js.sh
bash scripts/test-sanitizers.sh asan tsan
bash scripts/fuzz.sh "${LINGOMAT_FUZZ_SECONDS:-30}"
