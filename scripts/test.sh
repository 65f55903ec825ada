#!/usr/bin/env bash
# Builds everything from scratch and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
rm -rf build
cmake -S . -B build -DLINGOMAT_WERROR=ON
cmake --build build -j"$(nproc)"
ctest --test-dir build --output-on-failure -j"$(nproc)"
