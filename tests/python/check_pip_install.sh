#!/usr/bin/env bash
# Installs the Python package as the README says, offline, into a fresh virtual environment
# that sees Debian's packages, next to a library installed in a scratch prefix; the package
# must find that library's data file by itself and name a text.
set -euo pipefail
build_dir=$1
source_dir=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build_dir" --component Runtime --prefix "$scratch/prefix" >/dev/null
libdir=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:PATH=//p' "$build_dir/CMakeCache.txt")
# pip builds in the folder it is given; a copy keeps the checkout clean.
cp -r "$source_dir/python" "$scratch/python"
/usr/bin/python3 -m venv --system-site-packages "$scratch/venv"
"$scratch/venv/bin/pip" install --no-index --quiet "$scratch/python"

cd "$scratch"
LINGOMAT_LIBRARY="$scratch/prefix/$libdir/liblingomatplugin.so.1" "$scratch/venv/bin/python" - <<'PY'
import lingomat
with lingomat.Engine() as engine:
    assert engine.data.endswith("/prefix/share/lingomat/lingomat.json"), engine.data
    answer = engine.identify("#include <stdio.h>\nint main(void) { return 0; }\n", "main.c")
    assert answer == "C", answer
print("pip install: ok,", lingomat.__file__)
PY
