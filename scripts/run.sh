#!/usr/bin/env bash
# Builds the library and the command-line tool (nothing else: no tests, benchmarks or
# bindings), then names the languages of this repository's own sources (or of the paths
# given as arguments) with the shipped data file.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh run
echo "Configuring and building the library and the tool..." >&2
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DLINGOMAT_BUILD_TESTS=OFF \
  -DLINGOMAT_BUILD_PYTHON=OFF -DLINGOMAT_BUILD_BENCHMARKS=OFF >/dev/null
# The build's progress lines ("[ 42%] Building ...") and its errors reach the terminal.
cmake --build build -j"$(nproc)" --target lingomatplugin lingomat \
  > >(grep --line-buffered -E '^\[ *[0-9]+%\]' >&2 || true)
if [ $# -eq 0 ]; then
  # The data file is the tool's own input, not part of the sources it describes.
  set -- --exclude lingomat.json \
    src plugin tools tests bench scripts docs data python corpus/fetch.sh corpus/fetch.py
fi
build/tools/cli/lingomat --summary "$@"
