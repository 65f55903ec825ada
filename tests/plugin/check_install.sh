#!/usr/bin/env bash
# Installs as a user would, moves the installed tree elsewhere, and builds and runs a C host
# against it through find_package and through pkg-config; with the source tree as second
# argument, also with lib64 as the library folder, the way some systems lay out.
set -euo pipefail
build_dir=$1
source_dir=${2:-}
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() { echo "install: $*" >&2; exit 1; }

# The consumer against tree $1 with library folder $2, named $3; the rest go to CMake.
check_tree() {
  local prefix=$1 libdir=$2 name=$3
  shift 3
  test -f "$prefix/include/lingomat.h" || fail "$name: no header"
  test -f "$prefix/$libdir/pkgconfig/lingomat.pc" || fail "$name: no lingomat.pc in $libdir"
  test -f "$prefix/share/lingomat/lingomat.json" || fail "$name: no data file"

  cmake -S "$here/consumer" -B "$scratch/$name-cmake" -DCMAKE_PREFIX_PATH="$prefix" "$@" >/dev/null
  cmake --build "$scratch/$name-cmake" >/dev/null
  "$scratch/$name-cmake/consumer" || fail "$name: the find_package consumer failed"

  local pc_path=$prefix/$libdir/pkgconfig
  local flags datafile
  flags=$(PKG_CONFIG_PATH="$pc_path" pkg-config --cflags --libs lingomat)
  datafile=$(PKG_CONFIG_PATH="$pc_path" pkg-config --variable=datafile lingomat)
  [ "$(realpath "$datafile")" = "$(realpath "$prefix/share/lingomat/lingomat.json")" ] ||
    fail "$name: pkg-config datafile is $datafile"
  # shellcheck disable=SC2086  # the flags are several words
  cc -o "$scratch/$name-pc" "$here/consumer/main.c" -DLINGOMAT_DATA="\"$datafile\"" $flags ||
    fail "$name: the pkg-config consumer does not compile with: $flags"
  LD_LIBRARY_PATH="$prefix/$libdir" "$scratch/$name-pc" || fail "$name: the pkg-config consumer failed"
}

libdir=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:PATH=//p' "$build_dir/CMakeCache.txt")
cmake --install "$build_dir" --prefix "$scratch/staged" >/dev/null
mv "$scratch/staged" "$scratch/moved"
check_tree "$scratch/moved" "$libdir" default

if [ -n "$source_dir" ]; then
  # Only the layout differs: the library already built is installed by components.
  cmake -S "$source_dir" -B "$scratch/build64" -DCMAKE_INSTALL_LIBDIR=lib64 \
    -DLINGOMAT_BUILD_TESTS=OFF -DLINGOMAT_BUILD_BENCHMARKS=OFF >/dev/null
  cp -P "$build_dir"/plugin/liblingomatplugin.so* "$scratch/build64/plugin/"
  for component in Runtime Development; do
    cmake --install "$scratch/build64" --component "$component" --prefix "$scratch/prefix64" >/dev/null
  done
  check_tree "$scratch/prefix64" lib64 lib64 -DCONSUMER_ON_LIB64_SYSTEM=ON
fi
echo "install: ok"
