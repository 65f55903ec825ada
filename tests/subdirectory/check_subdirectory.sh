#!/usr/bin/env bash
# Configures, builds and runs tests/subdirectory/consumer, which adds the lingomat sources
# at $1 as a subdirectory, in the folder $2 with the C and C++ compilers $3 and $4; then
# checks that installing that project installs nothing of lingomat's.
set -euo pipefail
source_dir=$1
build_dir=$2
here=$(cd "$(dirname "$0")" && pwd)
fail() { echo "subdirectory: $*" >&2; exit 1; }

rm -rf "$build_dir"
cmake -S "$here/consumer" -B "$build_dir" -DLINGOMAT_SOURCE_DIR="$source_dir" \
  -DCMAKE_C_COMPILER="$3" -DCMAKE_CXX_COMPILER="$4" -DCMAKE_BUILD_TYPE=Release >/dev/null ||
  fail "configuring the consumer failed"
cmake --build "$build_dir" -j2 >/dev/null || fail "building the consumer failed"
"$build_dir/consumer" || fail "the consumer failed"
cmake --install "$build_dir" --prefix "$build_dir/prefix" >/dev/null || fail "install failed"
if [ -n "$(find "$build_dir/prefix" -type f 2>/dev/null)" ]; then
  fail "installing the consumer installed lingomat's files: $(find "$build_dir/prefix" -type f)"
fi
echo "subdirectory: ok"
