# The training options of the shipped data file, shared by build-data.sh and
# measure-accuracy.sh so that what is measured is what is shipped.
TRAIN_OPTIONS=(--max-samples 400 --min-count 2)
