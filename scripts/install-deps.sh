#!/usr/bin/env bash
# Installs the Debian packages a task needs, and no more.
# Usage: bash scripts/install-deps.sh [TASK...]   (default: test, which needs everything)
#   run    build the library and the command-line tools (scripts/run.sh)
#   bench  run: plus Google Benchmark, for bench/
#   test   every test stage of scripts/test.sh
# As root it runs apt-get; otherwise it names the packages and stops.
set -euo pipefail

build=(g++ cmake make pkg-config rapidjson-dev)
packages=()
add_task() {
  case "$1" in
    run) packages+=("${build[@]}") ;;
    bench) packages+=("${build[@]}" libbenchmark-dev) ;;
    test)
      # git is what the walk's ignore rules are compared with. Python's packages run the
      # Python package's tests; clang and its runtimes build the sanitizer and fuzzing
      # stages; llvm symbolizes their reports. Node and Emscripten build and test the
      # WebAssembly package (js/). clang-format, shellcheck
      # and pyflakes check the habits (scripts/lint.sh).
      packages+=("${build[@]}" libgtest-dev libbenchmark-dev git python3
        clang-format shellcheck pyflakes3
        python3-pip python3-setuptools python3-venv python3-pytest
        python3-dask python3-distributed python3-pandas
        clang libclang-rt-14-dev llvm
        nodejs emscripten node-acorn)
      # npm comes with some Node builds and is Debian's own package otherwise.
      command -v npm >/dev/null 2>&1 || packages+=(npm)
      ;;
    *)
      echo "install-deps.sh: unknown task '$1' (run, bench or test)" >&2
      exit 2
      ;;
  esac
}
[ $# -eq 0 ] && set -- test
for task in "$@"; do add_task "$task"; done

missing=()
for pkg in $(printf '%s\n' "${packages[@]}" | sort -u); do
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
