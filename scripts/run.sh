#!/usr/bin/env bash
# Builds the library and tools, then names the languages of this repository's own sources
# (or of the paths given as arguments) with the shipped data file.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
echo "Configuring and building (about a minute on 2 cores the first time)..." >&2
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DLINGOMAT_BUILD_BENCHMARKS=ON >/dev/null
# The build's progress lines ("[ 42%] Building ...") and its errors reach the terminal.
cmake --build build -j"$(nproc)" > >(grep --line-buffered -E '^\[ *[0-9]+%\]' >&2 || true)
if [ $# -eq 0 ]; then
  # The data file is the tool's own input, not part of the sources it describes.
  set -- --exclude lingomat.json \
    src plugin tools tests bench scripts docs data python corpus/fetch.sh corpus/fetch.py
fi
build/tools/cli/lingomat --summary "$@"
