#!/usr/bin/env python3
"""Races the tool's walk against a folder being swapped for a symbolic link to a folder
outside the tree, over and over, and counts the runs that listed or read a file outside.

The inside files start with "#!/bin/sh" and the outside ones, of the same names, with
"#!/usr/bin/python", so a file read through the link shows up as Python; the outside folder
also holds a name found nowhere inside. Exits 1 when any run left the tree.

    python3 tests/cli/walk_race.py build/tools/cli/lingomat [--data FILE] [--runs 100]
"""
import argparse
import os
import subprocess
import sys
import tempfile
import threading
import time

FILES = 200


def build_tree(top):
    inside = os.path.join(top, "tree", "sub")
    outside = os.path.join(top, "outside")
    os.makedirs(inside)
    os.makedirs(outside)
    for i in range(FILES):
        with open(os.path.join(inside, "f%d" % i), "w") as f:
            f.write("#!/bin/sh\necho inside\n")
        with open(os.path.join(outside, "f%d" % i), "w") as f:
            f.write("#!/usr/bin/python\nprint('outside')\n")
    with open(os.path.join(outside, "secret_outside_only"), "w") as f:
        f.write("#!/usr/bin/python\n")
    return os.path.join(top, "tree"), inside, outside


def swap_until(stop, folder, outside):
    # Each state lasts about a millisecond, long enough for a walk to list the folder in
    # one and open its files in the other.
    parked = folder + ".parked"
    while not stop.is_set():
        os.rename(folder, parked)
        os.symlink(outside, folder)
        time.sleep(0.001)
        os.unlink(folder)
        os.rename(parked, folder)
        time.sleep(0.001)


def left_the_tree(output):
    for line in output.splitlines():
        path, _, language = line.partition("\t")
        if "outside_only" in path or language == "Python":
            return True
    return False


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("lingomat")
    parser.add_argument("--data", default=None)
    parser.add_argument("--runs", type=int, default=100)
    args = parser.parse_args()
    command = [args.lingomat, "-j", "2"] + (["--data", args.data] if args.data else [])
    with tempfile.TemporaryDirectory() as top:
        tree, inside, outside = build_tree(top)
        stop = threading.Event()
        swapper = threading.Thread(target=swap_until, args=(stop, inside, outside))
        swapper.start()
        escaped = 0
        try:
            for _ in range(args.runs):
                run = subprocess.run(command + [tree], capture_output=True, text=True,
                                     errors="replace")
                if left_the_tree(run.stdout):
                    escaped += 1
        finally:
            stop.set()
            swapper.join()
    print("runs that left the tree: %d of %d" % (escaped, args.runs))
    return 1 if escaped else 0


if __name__ == "__main__":
    sys.exit(main())
