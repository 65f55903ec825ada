# The training options of the shipped data file, shared by build-data.sh and
# measure-accuracy.sh so that what is measured is what is shipped. Training on what
# identification reads (the tokenizer's default limits), with every sample and no
# pruning, measured best; see the README's accuracy section.
TRAIN_OPTIONS=()
