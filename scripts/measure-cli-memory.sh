#!/usr/bin/env bash
# Peak resident memory of the command-line tool on huge inputs, next to a small file:
# a 2 GiB file (sparse after its first MiB of C) named on the command line, the same file
# redirected to standard input, a 1 GiB stream piped in, and 1 GiB sparse files whose
# first line never ends: a "#!" line and UTF-16 text (what identification reads of those
# runs to the tool's 32 MiB ceiling).
# Usage: bash scripts/measure-cli-memory.sh [FILE_GIB [STREAM_GIB]]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build >/dev/null
cmake --build build -j"$(nproc)" --target lingomat >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
/usr/bin/python3 - build/tools/cli/lingomat data/lingomat.json "$work" "${1:-2}" "${2:-1}" <<'PY'
import os, subprocess, sys

tool, data, work, file_gib, stream_gib = sys.argv[1:4] + [int(a) for a in sys.argv[4:6]]
line = b"int main(void) { return printf(\"%d\\n\", 42); }\n"
small = os.path.join(work, "small.c")
with open(small, "wb") as out:
    out.write(line * 20)
huge = os.path.join(work, "huge.c")
with open(huge, "wb") as out:
    out.write(line * ((1 << 20) // len(line)))
    out.truncate(file_gib << 30)


def peak_mib(args, stdin=None, feed=None):
    """Runs the tool, returns (peak resident MiB, output) of that process alone."""
    tool_run = subprocess.Popen([tool, "--data", data] + args, stdin=stdin, stdout=subprocess.PIPE)
    if feed is not None:
        stdin.close()  # the tool leaves the rest of a stream unread: its writer must see that
    output = tool_run.stdout.read().decode().strip()
    _, status, usage = os.wait4(tool_run.pid, 0)
    if feed is not None:
        feed.wait()
    if status != 0:
        sys.exit(f"the tool failed on {args}")
    return usage.ru_maxrss / 1024, output


def stream():
    """A process writing stream_gib GiB of C to its standard output."""
    return subprocess.Popen(
        ["sh", "-c", f"yes 'int x = 1;' | head -c {stream_gib << 30}"], stdout=subprocess.PIPE)


rows = [("small file (2 lines)", *peak_mib([small]))]
rows.append((f"{file_gib} GiB file, named", *peak_mib([huge])))
with open(huge, "rb") as redirected:
    rows.append((f"{file_gib} GiB file on stdin", *peak_mib(["-"], stdin=redirected)))
producer = stream()
rows.append((f"{stream_gib} GiB piped to stdin", *peak_mib(["-"], stdin=producer.stdout, feed=producer)))
for name, head in (("#!", b"#!/usr/bin/x"), ("UTF-16", b"\xff\xfe#\x00!\x00")):
    sparse = os.path.join(work, "sparse")
    with open(sparse, "wb") as out:
        out.write(head)
        out.truncate(1 << 30)
    rows.append((f"1 GiB sparse {name} line", *peak_mib([sparse])))
    os.remove(sparse)
base = rows[0][1]
print(f"{'input':26} {'peak MiB':>9} {'over small':>11}  answer")
for name, mib, output in rows:
    print(f"{name:26} {mib:9.1f} {mib - base:11.1f}  {output.split(chr(9))[-1]}")
PY
