#!/usr/bin/env bash
# The repository's habits, checked: C and C++ formatted as .clang-format says, shell scripts
# clean under shellcheck, Python clean under pyflakes, and tests no more than a third of the
# code (scripts/count-lines.sh). Reports every finding, then fails if there was any.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 2
status=0
tracked() { git ls-files -z -- "$@"; }

tracked '*.c' '*.cc' '*.cpp' '*.h' '*.hpp' | xargs -0 -r clang-format --dry-run -Werror || status=1
tracked '*.sh' | xargs -0 -r shellcheck -x || status=1
tracked '*.py' | xargs -0 -r pyflakes3 || status=1
bash scripts/count-lines.sh --max-ratio 1/3 || status=1
exit $status
