#!/usr/bin/env bash
# Installs the Debian packages the build, tests and benchmarks need.
# As root it runs apt-get; otherwise it names the packages and stops.
set -euo pipefail

# git is what the walk's ignore rules are compared with. Python's packages run the Python
# package's tests; clang and its runtimes build the sanitizer and fuzzing stages; llvm
# symbolizes their reports.
packages=(g++ cmake make pkg-config rapidjson-dev libgtest-dev libbenchmark-dev git python3
  python3-pip python3-setuptools python3-venv python3-pytest
  python3-dask python3-distributed python3-pandas
  clang libclang-rt-14-dev llvm
  nodejs emscripten node-acorn chromium)
# Node and Emscripten build and test the WebAssembly package (js/), Chromium runs its page's
# test. npm comes with some Node builds and is Debian's own package otherwise.
if ! command -v npm >/dev/null 2>&1; then
  packages+=(npm)
fi
missing=()
for pkg in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$pkg")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

if [ "$(id -u)" -ne 0 ]; then
  echo "Missing packages: ${missing[*]}" >&2
  echo "Install them with: sudo apt-get install -y ${missing[*]}" >&2
  exit 1
fi

echo "Installing: ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
