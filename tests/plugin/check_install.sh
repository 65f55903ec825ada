#!/usr/bin/env bash
# Installs as a user would, moves the installed tree elsewhere, and builds and runs a C host
# against it through find_package and through pkg-config: both must find the header, the
# library and the data file at the new place.
set -euo pipefail
build_dir=$1
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "install: $*" >&2; exit 1; }

libdir=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:PATH=//p' "$build_dir/CMakeCache.txt")
cmake --install "$build_dir" --prefix "$scratch/staged" >/dev/null
prefix=$scratch/moved
mv "$scratch/staged" "$prefix"
test -f "$prefix/include/lingomat.h" || fail "no header"
test -f "$prefix/$libdir/pkgconfig/lingomat.pc" || fail "no lingomat.pc in $libdir"
test -f "$prefix/share/lingomat/lingomat.json" || fail "no data file"

cmake -S "$here/consumer" -B "$scratch/cmake" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$scratch/cmake" >/dev/null
"$scratch/cmake/consumer" || fail "the find_package consumer failed"

pc_path=$prefix/$libdir/pkgconfig
flags=$(PKG_CONFIG_PATH="$pc_path" pkg-config --cflags --libs lingomat)
datafile=$(PKG_CONFIG_PATH="$pc_path" pkg-config --variable=datafile lingomat)
[ "$(realpath "$datafile")" = "$(realpath "$prefix/share/lingomat/lingomat.json")" ] ||
  fail "pkg-config datafile is $datafile"
# shellcheck disable=SC2086  # the flags are several words
cc -o "$scratch/pc" "$here/consumer/main.c" -DLINGOMAT_DATA="\"$datafile\"" $flags ||
  fail "the pkg-config consumer does not compile with: $flags"
LD_LIBRARY_PATH="$prefix/$libdir" "$scratch/pc" || fail "the pkg-config consumer failed"
echo "install: ok"
