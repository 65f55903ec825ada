#!/usr/bin/env bash
# Installs the Python package as the README says, offline, into a fresh virtual environment
# that sees Debian's packages, from a copy of the sources with nothing installed beforehand;
# then builds a wheel, removes the sources and installs the wheel into a second environment
# elsewhere. Both must name a text with no other step. Prints the install time.
set -euo pipefail
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# A clean copy of the sources: pip builds in the folder it is given.
mkdir "$scratch/src"
tar -C "$1" --exclude='./build*' --exclude=./.git --exclude=./corpus --exclude=./python/build \
  --exclude='*.egg-info' -cf - . | tar -C "$scratch/src" -xf -
cd "$scratch"
check() {
  "$1/bin/pip" install --no-index --quiet "$2"
  test "$(env -u LINGOMAT_LIBRARY -u LINGOMAT_DATA -u LINGOMAT_NATIVE "$1/bin/python" -c \
    "import lingomat; print(lingomat.Engine().identify('def f():\n    return 1\n', filename='a.py'))")" = Python
}
/usr/bin/python3 -m venv --system-site-packages venv
started=$(date +%s)
check venv "$scratch/src/python"
echo "pip install and a first answer: $(($(date +%s) - started)) s"
venv/bin/pip wheel --no-index --no-deps --quiet -w wheels "$scratch/src/python"
rm -rf "$scratch/src"
/usr/bin/python3 -m venv --system-site-packages elsewhere/venv
check elsewhere/venv "$(echo "$scratch"/wheels/lingomat-*.whl)"
echo "pip install and wheel: ok"
