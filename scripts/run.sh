#!/usr/bin/env bash
# Builds the library and tools, then names the language of every file in this repository.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)"
if [ -x build/tools/cli/lingomat ] && [ -f data/lingomat.json ]; then
  build/tools/cli/lingomat --summary "${@:-.}"
else
  echo "Built build/plugin/liblingomatplugin.so"
fi
