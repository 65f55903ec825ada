#!/usr/bin/env bash
# Installs into a scratch prefix and builds a C host against it with find_package and
# with pkg-config, as a user of the library would.
set -euo pipefail
build_dir=$1
source_dir=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build_dir" --prefix "$scratch/prefix" >/dev/null
test -f "$scratch/prefix/include/lingomat.h"
test -f "$scratch/prefix/lib/pkgconfig/lingomat.pc"

cmake -S "$source_dir/consumer" -B "$scratch/consumer" -DCMAKE_PREFIX_PATH="$scratch/prefix" >/dev/null
cmake --build "$scratch/consumer" >/dev/null
LD_LIBRARY_PATH="$scratch/prefix/lib" "$scratch/consumer/consumer"

# The pkg-config file points at the installed prefix.
PKG_CONFIG_PATH="$scratch/prefix/lib/pkgconfig" pkg-config --cflags --libs lingomat | grep -q -- "-llingomatplugin"
echo "install: ok"
