#!/usr/bin/env bash
# Builds and runs tests/subdirectory/consumer, which adds the sources at $1 as a subdirectory,
# in $2 with the C and C++ compilers $3 and $4 (and launcher $5); installing it must install
# nothing of lingomat's. Only what the consumer links is built, unoptimised.
set -euo pipefail
build_dir=$2
fail() { echo "subdirectory: $*" >&2; exit 1; }

rm -rf "$build_dir"
cmake -S "$(dirname "$0")/consumer" -B "$build_dir" -DLINGOMAT_SOURCE_DIR="$1" -DCMAKE_C_COMPILER="$3" \
  -DCMAKE_CXX_COMPILER="$4" -DCMAKE_C_COMPILER_LAUNCHER="${5:-}" -DCMAKE_CXX_COMPILER_LAUNCHER="${5:-}" \
  >/dev/null || fail "configuring the consumer failed"
cmake --build "$build_dir" --target consumer -j2 >/dev/null || fail "building the consumer failed"
"$build_dir/consumer" || fail "the consumer failed"
cmake --install "$build_dir" --prefix "$build_dir/prefix" >/dev/null || fail "install failed"
installed=$(find "$build_dir/prefix" -type f 2>/dev/null || true)
[ -z "$installed" ] || fail "installing the consumer installed lingomat's files: $installed"
echo "subdirectory: ok"
