#!/usr/bin/env python3
"""Runs the tool over and over while another thread changes what it reads; exits 1 if any
run went wrong. walk: a folder is swapped for a link to one outside the tree, whose files
(one name found only there) start "#!/usr/bin/python" where the inside ones start
"#!/bin/sh": no run may list or read an outside file. truncation: a large file is truncated
and refilled (a mapped file that shrinks kills its reader): every run must print the file.

    python3 tests/cli/races.py build/tools/cli/lingomat walk|truncation [--data FILE] [--runs N]
"""
import argparse
import os
import subprocess
import sys
import tempfile
import threading
import time


def write(path, content):
    with open(path, "wb") as f:
        f.write(content)


def race(command, change, went_wrong, runs):
    stop = threading.Event()
    changer = threading.Thread(target=lambda: [change() for _ in iter(stop.is_set, True)])  # until stopped
    changer.start()
    failures = 0
    try:
        for _ in range(runs):
            run = subprocess.run(command, capture_output=True, timeout=120)
            if went_wrong(run):
                failures += 1
                print("run failed: status %d, output %r" % (run.returncode, run.stdout[:200]))
    finally:
        stop.set()
        changer.join()
    return failures


def walk(tool, top, runs):
    inside, outside = os.path.join(top, "tree", "sub"), os.path.join(top, "outside")
    for folder, first_line in ((inside, b"#!/bin/sh\n"), (outside, b"#!/usr/bin/python\n")):
        os.makedirs(folder)
        for i in range(200):
            write(os.path.join(folder, "f%d" % i), first_line + b"echo\n")
    write(os.path.join(outside, "outside_only"), b"#!/usr/bin/python\n")

    def swap():
        # Each state lasts about a millisecond, long enough for a walk to list the folder in
        # one and open its files in the other.
        os.rename(inside, inside + ".parked")
        os.symlink(outside, inside)
        time.sleep(0.001)
        os.unlink(inside)
        os.rename(inside + ".parked", inside)
        time.sleep(0.001)

    return race(tool + ["-j", "2", os.path.join(top, "tree")], swap,
                lambda run: b"outside_only" in run.stdout or b"\tPython\n" in run.stdout, runs)


def truncation(tool, top, runs):
    path = os.path.join(top, "changing.txt")
    content = b'"' + b"word " * (2 << 20)  # an unclosed string: identification reads it all
    write(path, content)

    def churn():
        with open(path, "r+b") as f:
            f.truncate(1000)
        time.sleep(0.005)
        write(path, content)
        time.sleep(0.005)

    return race(tool + ["--max-bytes", "0", path], churn,
                lambda run: run.returncode < 0 or path.encode() not in run.stdout, runs)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("lingomat")
    parser.add_argument("race", choices=["walk", "truncation"])
    parser.add_argument("--data")
    parser.add_argument("--runs", type=int, default=100)
    args = parser.parse_args()
    tool = [args.lingomat] + (["--data", args.data] if args.data else [])
    with tempfile.TemporaryDirectory() as top:
        failures = {"walk": walk, "truncation": truncation}[args.race](tool, top, args.runs)
    print("%s race: %d of %d runs failed" % (args.race, failures, args.runs))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
