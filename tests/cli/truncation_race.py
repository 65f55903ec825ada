#!/usr/bin/env python3
"""Runs the tool on a large file while another thread truncates and refills it every few
milliseconds, over and over, and counts the runs that died of a signal (a mapped file that
shrinks kills a reader with SIGBUS) or printed nothing for the file. Exits 1 on any.

    python3 tests/cli/truncation_race.py build/tools/cli/lingomat [--data FILE] [--runs 100]
"""
import argparse
import os
import subprocess
import sys
import tempfile
import threading
import time

# An unclosed string at the start makes identification read the whole file.
CONTENT = b'"' + b"word " * (2 << 20)


def churn(stop, path):
    while not stop.is_set():
        with open(path, "r+b") as f:
            f.truncate(1000)
        time.sleep(0.005)
        with open(path, "wb") as f:
            f.write(CONTENT)
        time.sleep(0.005)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("tool")
    parser.add_argument("--data")
    parser.add_argument("--runs", type=int, default=100)
    args = parser.parse_args()
    data = ["--data", args.data] if args.data else []
    with tempfile.TemporaryDirectory() as top:
        path = os.path.join(top, "changing.txt")
        with open(path, "wb") as f:
            f.write(CONTENT)
        stop = threading.Event()
        writer = threading.Thread(target=churn, args=(stop, path))
        writer.start()
        failures = 0
        try:
            for _ in range(args.runs):
                run = subprocess.run([args.tool, "--max-bytes", "0"] + data + [path],
                                     capture_output=True)
                if run.returncode < 0 or path.encode() not in run.stdout:
                    failures += 1
                    print("run failed: status %d, output %r" % (run.returncode, run.stdout[:200]))
        finally:
            stop.set()
            writer.join()
    print("%d of %d runs failed" % (failures, args.runs))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
