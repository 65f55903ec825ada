# shellcheck shell=bash disable=SC2034  # sourced: the variables are used by its callers
# The training options of the shipped data file, shared by build-data.sh and
# measure-accuracy.sh so that what is measured is what is shipped. Every sample and
# every token, counted as it occurs; an unseen token costs ln(1/500000) and counts are
# doubled against the engine's floor, which measured best on held-out projects (see
# docs/accuracy.md). The counted weights are then re-estimated by 5 epochs of an averaged
# perceptron (rate 0.5), chosen on a validation third of the training projects
# (tools/eval/validation_tree.py), which ranks held-out files better. Tokens seen once
# and longer than 6 bytes are then dropped after that: what keeps the data file under
# its size limit, every held-out figure within 0.3 points (docs/accuracy.md, "Size and
# engine creation").
TRAIN_OPTIONS=(--count-scale 2 --tokens-total 500000 --discriminative-epochs 5 --learning-rate 0.5
  --max-singleton-bytes 6)
# The command-line tool's default floors, measured with the same held-out sets: read from
# the tool's own defaults (tools/cli/cli_options.h), so that there is one place to change.
cli_default() {
  local value
  value=$(sed -n "s/^inline constexpr [a-z:_0-9]* $1 = \(-\{0,1\}[0-9.]*\);.*/\1/p" \
    "$(dirname "${BASH_SOURCE[0]}")/../tools/cli/cli_options.h")
  if [ -z "$value" ]; then
    echo "data-options.sh: no $1 in tools/cli/cli_options.h" >&2
    return 1
  fi
  echo "${value%.0}"
}
CLI_MIN_TOKENS=$(cli_default kDefaultMinTokens)
CLI_MIN_SCORE=$(cli_default kDefaultMinScore)
