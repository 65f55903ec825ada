#!/usr/bin/python3
"""Names the language of every file below DIR on a Dask cluster and prints a per-language
count, with the time taken next to the same work done by one engine in this process.

    /usr/bin/python3 python/examples/identify_tree_with_dask.py [--workers N] [--scheduler ADDR] DIR

Without --scheduler a LocalCluster of N worker processes is started on this machine."""

import argparse
import collections
import os
import sys
import time

import dask.bag as db
from distributed import Client, LocalCluster

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import lingomat  # noqa: E402
import lingomat.dask  # noqa: E402


def walk(root):
    for directory, folders, files in os.walk(root):
        folders[:] = [f for f in folders if f not in (".git", "__pycache__")]
        for name in files:
            path = os.path.join(directory, name)
            if os.path.isfile(path):
                yield path


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("root", metavar="DIR")
    parser.add_argument("--workers", type=int, default=2, help="local worker processes")
    parser.add_argument("--scheduler", help="address of a running Dask scheduler")
    parser.add_argument("--partitions", type=int, default=64)
    args = parser.parse_args()
    options = {"min_tokens": 1, "min_score": 0.0}  # the command-line tool's relaxed floors

    paths = sorted(walk(args.root))
    if not paths:
        sys.exit(f"no files below {args.root}")
    started = time.perf_counter()
    with lingomat.Engine(**options) as engine:
        loaded = time.perf_counter()
        local = [engine.identify_file(p) for p in paths]
    done_local = time.perf_counter()

    cluster = None if args.scheduler else LocalCluster(
        n_workers=args.workers, threads_per_worker=1, dashboard_address=None)
    with Client(args.scheduler or cluster) as client:
        client.run(lingomat.dask.preload, **options)  # load the engines before timing
        begun = time.perf_counter()
        bag = db.from_sequence(paths, npartitions=min(args.partitions, len(paths)))
        remote = lingomat.dask.identify_paths(bag, errors="none", **options).compute()
        done_remote = time.perf_counter()
    if cluster is not None:
        cluster.close()

    counts = collections.Counter(language or "(none)" for language in remote)
    for language, count in counts.most_common():
        print(f"{count:8d}  {language}")
    print(f"{len(paths)} files; one process: engine {loaded - started:.2f} s, "
          f"{(done_local - loaded) / len(paths) * 1e3:.3f} ms per file; "
          f"dask: {(done_remote - begun) / len(paths) * 1e3:.3f} ms per file; "
          f"answers {'equal' if remote == local else 'DIFFER'}", file=sys.stderr)
    return 0 if remote == local else 1


if __name__ == "__main__":
    sys.exit(main())
