#!/usr/bin/env bash
# Trains on two thirds of the projects and evaluates on the held-out third, under the
# library's default options and with the classifier's floors relaxed.
# Usage: scripts/measure-accuracy.sh [OUTPUT_DIR]   (reports land there; default build/accuracy)
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/data-options.sh
out=${1:-build/accuracy}
mkdir -p "$out"

bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" --target lingomat-train lingomat-eval

build/tools/train/lingomat-train "${TRAIN_OPTIONS[@]}" --split train \
  data/languages.def corpus/samples -o "$out/train.json"
build/tools/eval/lingomat-eval "$out/train.json" corpus/samples --split test \
  | tee "$out/defaults.txt"
build/tools/eval/lingomat-eval "$out/train.json" corpus/samples --split test \
  --min-tokens 1 --min-score 0 | tee "$out/relaxed.txt"
