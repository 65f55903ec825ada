#!/usr/bin/env bash
# Runs two builds of the command-line tool over the same folders of this repository with
# --json --explain and fails unless their outputs are byte for byte the same. Refactorings
# must not change a single answer, score or trace: keep a copy of the tool built before the
# change and compare it with the one built after.
# Usage: scripts/compare-outputs.sh OLD_LINGOMAT NEW_LINGOMAT [DATA_FILE]
#   (DATA_FILE defaults to data/lingomat.json; both tools read the same one)
set -euo pipefail
cd "$(dirname "$0")/.."
if [ $# -lt 2 ]; then
  echo "usage: $0 OLD_LINGOMAT NEW_LINGOMAT [DATA_FILE]" >&2
  exit 2
fi
declare -A tools=([old]=$1 [new]=$2)
data=${3:-data/lingomat.json}
folders=(src plugin tools tests bench docs)

out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
# One worker each, so that nothing but the tool decides the order of the lines.
for side in old new; do
  tool=${tools[$side]}
  "$tool" --json --explain --jobs 1 --data "$data" "${folders[@]}" >"$out/$side.json" 2>"$out/$side.err" ||
    echo "$side: exit status $?" >>"$out/$side.err"
done
status=0
cmp -s "$out/old.json" "$out/new.json" || { diff "$out/old.json" "$out/new.json" | head -40; status=1; }
cmp -s "$out/old.err" "$out/new.err" || { diff "$out/old.err" "$out/new.err" | head -40; status=1; }
lines=$(wc -l <"$out/new.json")
if [ "$status" -eq 0 ]; then
  echo "identical: $lines lines over ${folders[*]}"
else
  echo "outputs differ" >&2
fi
exit "$status"
