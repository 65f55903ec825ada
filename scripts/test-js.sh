#!/usr/bin/env bash
# Builds the WebAssembly package from this repository's sources and runs its tests: answers
# and scores identical to the native library's, and the package's own promises. Needs the
# native build in build/ (scripts/test.sh makes it); the one native program the comparison
# uses is built here when it is missing.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ ! -x build/tests/js/lingomat_native_answers ]; then
  [ -f build/CMakeCache.txt ] || cmake -S . -B build -DLINGOMAT_WERROR=ON >/dev/null
  cmake --build build --target lingomat_native_answers -j"$(nproc)"
fi
cd js
npm ci --no-audit --no-fund --loglevel=error
LINGOMAT_WERROR=ON npm run --silent build
npm test
