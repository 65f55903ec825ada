#!/usr/bin/env python3
"""Times a walk through many folders that each bring their own .gitignore, against the
same walk with --no-ignore in the same run, so the ratio shows what the rules cost.

    python3 scripts/measure-ignore-walk.py build/tools/cli/lingomat [--folders 1000]
        [--rules 100] [--runs 5] [--data FILE]

Prints the median wall time of each and their ratio. With the rules of every folder tried
on every later path the cost grows with folders times rules; scoped to their folder it
stays close to the walk without rules.
"""
import argparse
import os
import statistics
import subprocess
import sys
import tempfile
import time


def build_tree(top, folders, rules):
    for i in range(folders):
        folder = os.path.join(top, "f%04d" % i)
        os.makedirs(folder)
        with open(os.path.join(folder, ".gitignore"), "w") as f:
            f.write("".join("rule%d_%d_*.tmp\n" % (i, j) for j in range(rules)))
        for name in ("a.c", "b.py", "c.sh"):
            with open(os.path.join(folder, name), "w") as f:
                f.write("x\n")


def seconds(command):
    start = time.perf_counter()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    return time.perf_counter() - start


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("lingomat")
    parser.add_argument("--folders", type=int, default=1000)
    parser.add_argument("--rules", type=int, default=100)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--data", default=None)
    args = parser.parse_args()
    command = [args.lingomat, "-j", "2"] + (["--data", args.data] if args.data else [])
    with tempfile.TemporaryDirectory() as top:
        tree = os.path.join(top, "tree")
        build_tree(tree, args.folders, args.rules)
        # Alternated, so both see the same load on a shared machine.
        with_rules, without = [], []
        for _ in range(args.runs):
            with_rules.append(seconds(command + [tree]))
            without.append(seconds(command + ["--no-ignore", tree]))
    rules_time, plain_time = statistics.median(with_rules), statistics.median(without)
    print("%d folders x %d rules, median of %d runs: %.3f s with ignore files, "
          "%.3f s with --no-ignore, ratio %.2f" % (args.folders, args.rules, args.runs,
                                                  rules_time, plain_time,
                                                  rules_time / plain_time))
    return 0


if __name__ == "__main__":
    sys.exit(main())
