#!/usr/bin/env bash
# Installs the Python package as the README says, offline, into a fresh virtual environment
# that sees Debian's packages, from a copy of the sources with nothing installed beforehand;
# then builds a wheel, removes the sources and installs the wheel into a second environment
# elsewhere. Both must name a text with no other step. Prints the install time.
set -euo pipefail
source_dir=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# A clean copy of the sources: pip builds in the folder it is given.
mkdir "$scratch/src"
tar -C "$source_dir" --exclude='./build*' --exclude=./.git --exclude=./corpus \
  --exclude=./python/build --exclude='*.egg-info' -cf - . | tar -C "$scratch/src" -xf -

check() {
  env -u LINGOMAT_LIBRARY -u LINGOMAT_DATA -u LINGOMAT_NATIVE "$1" -c "import lingomat; print(lingomat.Engine().identify('def f():\n    return 1\n', filename='a.py'))"
}

/usr/bin/python3 -m venv --system-site-packages "$scratch/venv"
started=$(date +%s)
"$scratch/venv/bin/pip" install --no-index --quiet "$scratch/src/python"
echo "pip install: $(($(date +%s) - started)) s"
cd "$scratch"
test "$(check "$scratch/venv/bin/python")" = Python

"$scratch/venv/bin/pip" wheel --no-index --no-deps --quiet -w "$scratch/wheels" "$scratch/src/python"
rm -rf "$scratch/src"
/usr/bin/python3 -m venv --system-site-packages "$scratch/elsewhere/venv"
"$scratch/elsewhere/venv/bin/pip" install --no-index --quiet "$scratch"/wheels/lingomat-*.whl
test "$(check "$scratch/elsewhere/venv/bin/python")" = Python
echo "pip install and wheel: ok"
