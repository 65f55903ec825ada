#!/usr/bin/env bash
# Builds the WebAssembly engine with Debian's Emscripten and gathers what the package ships
# into js/dist: the module, and the data file compressed with gzip.
set -euo pipefail
js_dir="$(cd "$(dirname "$0")/.." && pwd)"
repo="$(dirname "$js_dir")"
build="${LINGOMAT_WASM_BUILD:-$repo/build-wasm}"

# Debian's Emscripten loads acorn from the system's Node modules.
export NODE_PATH="/usr/share/nodejs${NODE_PATH:+:$NODE_PATH}"
# RapidJSON is header-only; it is handed to the cross build on its own, since the rest of
# the host's /usr/include must stay out of it.
mkdir -p "$build/include"
ln -sfn /usr/include/rapidjson "$build/include/rapidjson"

emcmake cmake -S "$js_dir/wasm" -B "$build" -DRAPIDJSON_INCLUDE_DIR="$build/include" \
  -DLINGOMAT_WERROR="${LINGOMAT_WERROR:-OFF}" >/dev/null
cmake --build "$build" --target lingomat_wasm -j"$(nproc)"

mkdir -p "$js_dir/dist"
cp "$build/lingomat-engine.mjs" "$build/lingomat-engine.wasm" "$js_dir/dist/"
gzip -9 -n -c "$repo/data/lingomat.json" >"$js_dir/dist/lingomat.json.gz"
