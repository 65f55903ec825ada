#!/usr/bin/env bash
# The plug-in must export the five C entry points and nothing else.
set -euo pipefail
expected="lingomatCreate lingomatDestroy lingomatIdentifyCode lingomatOptsInitWithDefaults lingomatPlugInGetErrorString"
actual=$(nm -D --defined-only "$1" | awk '$2 ~ /^[TDBRVWiu]$/ {print $3}' | sed 's/@.*//' | sort | tr '\n' ' ' | sed 's/ $//')
if [ "$actual" != "$expected" ]; then
  echo "exported: $actual" >&2
  echo "expected: $expected" >&2
  exit 1
fi
echo "exports: $actual"
