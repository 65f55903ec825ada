#!/usr/bin/env bash
# The generated man pages carry every option of the tools' help, and the bash completion
# offers the tool's options and, after --only, the data file's language names.
set -euo pipefail
man_dir=$1
cli=$2
data=$3
completion=$4

for page in "$man_dir"/lingomat.1 "$man_dir"/lingomat-train.1 "$man_dir"/lingomat-eval.1 \
  "$man_dir"/lingomat-check.1; do
  help="${page}.help"
  # The roff with its escapes undone; a fresh machine may have no man program.
  rendered=$(sed 's/\\-/-/g; s/\\f[BRI]//g; s/\\e/\\/g' "$page")
  while read -r option; do
    grep -qF -- "$option" <<<"$rendered" || { echo "$page: $option missing" >&2; exit 1; }
  done < <(grep -oE -- '--[a-z][a-z-]*' "$help" | sort -u)
done

# The tool's page says where the data file is looked for, and shows examples.
for section in FILES EXAMPLES; do
  grep -qx ".SH $section" "$man_dir"/lingomat.1 || { echo "lingomat.1: no $section" >&2; exit 1; }
done

# The completion runs the tool by the name typed; a wrapper gives it the test's data file.
bin=$(mktemp -d)
trap 'rm -rf "$bin"' EXIT
printf '#!/bin/sh\nexec "%s" --data "%s" "$@"\n' "$cli" "$data" >"$bin/lingomat"
chmod +x "$bin/lingomat"
complete_words() {
  PATH="$bin:$PATH" bash -c 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1));
    _lingomat_complete; printf "%s\n" "${COMPREPLY[@]}"' _ "$completion" "$@"
}
complete_words lingomat --list- | grep -qx -- --list-languages || { echo "no option completion" >&2; exit 1; }
complete_words lingomat -0 | grep -qx -- -0 || { echo "no letter completion" >&2; exit 1; }
if complete_words lingomat - | grep -qx -- -control; then
  echo "a word of an explanation completed as an option" >&2
  exit 1
fi
complete_words lingomat --only Pyt | grep -qx Python || { echo "no language completion" >&2; exit 1; }
echo "man pages and completion: ok"
