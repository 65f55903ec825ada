#!/usr/bin/env bash
# Trains on two thirds of the projects and evaluates on the held-out third, under the
# library's default floors and under the command-line tool's, then measures how often
# each configuration names a language for the non-code set (corpus/noncode.py). Also
# content only with no floor at all: over every language, over the 20 most-used ones,
# and over the 52 languages a host may restrict the engine to (told that only they occur);
# finally the command-line tool itself on the held-out side and the non-code set.
# Usage: scripts/measure-accuracy.sh [OUTPUT_DIR [TRAINER_OPTION...]]
#   reports land in OUTPUT_DIR (default build/accuracy); trainer options given after it
#   are added to the shipped ones, to measure a variant against them.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/data-options.sh
out=${1:-build/accuracy}
[ $# -gt 0 ] && shift
TRAIN_OPTIONS+=("$@")
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
"${eval[@]}" corpus/samples --split test --min-tokens 0 --min-score 0 >"$out/no-floor.txt"
restricted=(Assembly Batchfile C C# C++ CMake COBOL CSS Clojure CoffeeScript "Common Lisp" Dart
  Dockerfile Elixir Erlang Fortran Go Groovy HTML Haskell INI JSON Java JavaScript Julia Kotlin
  Lua MATLAB Makefile Markdown OCaml Objective-C PHP Pascal Perl PowerShell Prolog Python R Ruby
  Rust SQL Scala Shell Swift TOML TeX TypeScript Verilog "Visual Basic .NET" XML YAML)
only=()
for language in "${restricted[@]}"; do only+=(--only "$language"); done
"${eval[@]}" corpus/samples --split test --min-tokens 0 --min-score 0 "${only[@]}" --restrict \
  >"$out/restricted-52.txt"
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
done >"$out/summary.txt"
for run in no-floor restricted-52; do
  awk -v run="$run" '/^== content only/ { getline; sub(/, no answer.*/, ""); printf "%-17s %-10s %s\n", run, "content", $0; exit }' \
    "$out/$run.txt"
done >>"$out/summary.txt"
# The 20 most-used languages, content only with no floor.
awk '/^== content and/ { exit }
  BEGIN { n = split("JavaScript Python TypeScript Java C# C++ C PHP Shell Go Ruby Rust Kotlin Swift HTML CSS SQL Markdown YAML JSON", wanted, " ")
          for (i = 1; i <= n; i++) want[wanted[i]] = i }
  ($1 in want) && $2 ~ /^[0-9]+$/ { share[want[$1]] = $1 " " $6 }
  END { printf "no-floor top-20:"; for (i = 1; i <= n; i++) printf " %s", share[i]; printf "\n" }' \
  "$out/no-floor.txt" >>"$out/summary.txt"
cat "$out/summary.txt"

# The command-line tool as users run it: its floors among name candidates and for content
# alone, and its prose test, on the same held-out projects and non-code set.
echo
echo "== the command-line tool (scripts/measure-cli-accuracy.py) =="
/usr/bin/python3 scripts/measure-cli-accuracy.py "$out/train.json" corpus/samples corpus/noncode \
  | tee "$out/cli-tool.txt"
