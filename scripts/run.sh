#!/usr/bin/env bash
# Builds the library and tools, then names the languages of this repository's own sources
# (or of the paths given as arguments) with the shipped data file.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" >/dev/null
if [ $# -eq 0 ]; then
  set -- src plugin tools tests bench scripts docs data corpus/fetch.sh corpus/fetch.py
fi
build/tools/cli/lingomat --summary "$@"
