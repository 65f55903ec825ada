#!/usr/bin/env bash
# The generated man pages carry every option of the tools' help, the tool's page says where
# the data file is looked for and shows examples, and the bash completion offers the tool's
# options and, after --only, the data file's language names.
# Usage: check_man_and_completion.sh MAN_DIR LINGOMAT DATA_FILE COMPLETION
set -euo pipefail
completion=$4
fail() { echo "$*" >&2; exit 1; }
for page in "$1"/lingomat{,-train,-eval,-check}.1; do
  # The roff with its escapes undone; a fresh machine may have no man program.
  rendered=$(sed 's/\\-/-/g; s/\\f[BRI]//g; s/\\e/\\/g' "$page")
  while read -r option; do
    grep -qF -- "$option" <<<"$rendered" || fail "$page: $option missing"
  done < <(grep -oE -- '--[a-z][a-z-]*' "$page.help" | sort -u)
done
for section in FILES EXAMPLES; do grep -qx ".SH $section" "$1/lingomat.1" || fail "lingomat.1: no $section"; done

# The completion runs the tool by the name typed; a wrapper gives it the test's data file.
bin=$(mktemp -d)
trap 'rm -rf "$bin"' EXIT
printf '#!/bin/sh\nexec "%s" --data "%s" "$@"\n' "$2" "$3" >"$bin/lingomat"
chmod +x "$bin/lingomat"
complete_words() {
  PATH="$bin:$PATH" bash -c 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1));
    _lingomat_complete; printf "%s\n" "${COMPREPLY[@]}"' _ "$completion" "$@"
}
complete_words lingomat --list- | grep -qx -- --list-languages || fail "no option completion"
complete_words lingomat -0 | grep -qx -- -0 || fail "no letter completion"
! complete_words lingomat - | grep -qx -- -control || fail "a word of an explanation completed as an option"
complete_words lingomat --only Pyt | grep -qx Python || fail "no language completion"
echo "man pages and completion: ok"
