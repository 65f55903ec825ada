#!/usr/bin/env bash
# Rebuilds the shipped data file data/lingomat.json from the sample corpus.
# Usage: scripts/build-data.sh [--no-fetch]   (--no-fetch reuses corpus/samples as it is)
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/data-options.sh

if [ "${1:-}" != "--no-fetch" ]; then
  bash corpus/fetch.sh
fi
bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" --target lingomat-train
build/tools/train/lingomat-train "${TRAIN_OPTIONS[@]}" data/languages.def corpus/samples \
  -o data/lingomat.json
ls -l data/lingomat.json
