#!/usr/bin/env bash
# Trains on two thirds of the projects and evaluates on the held-out third, under the
# library's default floors and under the command-line tool's, then measures how often
# each configuration names a language for the non-code set (corpus/noncode.py), and
# finally runs the command-line tool itself on both.
# Usage: scripts/measure-accuracy.sh [OUTPUT_DIR]   (reports land there; default build/accuracy)
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/data-options.sh
out=${1:-build/accuracy}
mkdir -p "$out"

bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" --target lingomat-train lingomat-eval lingomat
[ -d corpus/noncode ] || python3 corpus/noncode.py

build/tools/train/lingomat-train "${TRAIN_OPTIONS[@]}" --split train \
  data/languages.def corpus/samples -o "$out/train.json"
eval=(build/tools/eval/lingomat-eval "$out/train.json" --confusions 25)
cli_floors=(--min-tokens "$CLI_MIN_TOKENS" --min-score "$CLI_MIN_SCORE")

"${eval[@]}" corpus/samples --split test | tee "$out/library-defaults.txt"
"${eval[@]}" corpus/samples --split test "${cli_floors[@]}" | tee "$out/cli-defaults.txt"
# Nothing in the non-code set is a language: every answer counted there is wrong.
"${eval[@]}" corpus/noncode | tee "$out/noncode-library-defaults.txt"
"${eval[@]}" corpus/noncode "${cli_floors[@]}" | tee "$out/noncode-cli-defaults.txt"

echo
echo "== summary (held-out projects; non-code: share of files given any answer) =="
for config in library-defaults cli-defaults; do
  awk -v config="$config" '
    /^== content only/ { mode = "content" } /^== content and/ { mode = "with names" }
    /^files / { line[mode] = $0 }
    /answers right/ { sub(/.*answers right /, ""); precision[mode] = $0 }
    END { for (m in line) printf "%-17s %-10s %s; answers right %s\n", config, m, line[m], precision[m] }
  ' "$out/$config.txt"
  awk -v config="$config" '/^== content only/ { getline; sub(/correct 0 \(0.0%\), /, ""); sub(/wrong/, "answered"); printf "%-17s %-10s %s\n", config, "non-code", $0; exit }' \
    "$out/noncode-$config.txt"
done | tee "$out/summary.txt"

# The command-line tool as users run it: its floors among name candidates and for content
# alone, and its prose test, on the same held-out projects and non-code set.
echo
echo "== the command-line tool (scripts/measure-cli-accuracy.py) =="
/usr/bin/python3 scripts/measure-cli-accuracy.py "$out/train.json" corpus/samples corpus/noncode \
  | tee "$out/cli-tool.txt"
