#!/usr/bin/python3
"""Names the language of every file below DIR and reports the cost per file: one engine on
one thread, the same engine on several threads, and a Dask cluster of 1..N worker
processes (cluster start-up and engine loading reported apart). Prints medians of --runs.

    /usr/bin/python3 python/examples/identify_tree_with_dask.py [--workers N] [--runs R] DIR

Without --scheduler a LocalCluster is started on this machine for each worker count."""

import argparse
import collections
import concurrent.futures
import os
import statistics
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
            if os.path.isfile(path) and not os.path.islink(path):
                yield path


def identify_or_none(engine, path):
    try:
        return engine.identify_file(path)
    except OSError:
        return None


def timed(function, runs):
    """(median seconds, last result) of `runs` calls."""
    times, result = [], None
    for _ in range(runs):
        begun = time.perf_counter()
        result = function()
        times.append(time.perf_counter() - begun)
    return statistics.median(times), result


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("root", metavar="DIR")
    parser.add_argument("--workers", type=int, default=2, help="up to this many processes")
    parser.add_argument("--threads", type=int, default=2, help="threads sharing one engine")
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--scheduler", help="address of a running Dask scheduler")
    parser.add_argument("--repeat", type=int, default=1,
                        help="list every file this many times (a bigger job from a small tree)")
    args = parser.parse_args()
    options = {"min_tokens": 1, "min_score": 0.0}  # the command-line tool's relaxed floors

    paths = sorted(walk(args.root)) * args.repeat
    if not paths:
        sys.exit(f"no files below {args.root}")
    per_file = 1e3 / len(paths)
    report = []
    begun = time.perf_counter()
    engine = lingomat.Engine(**options)
    report.append(f"engine load: {time.perf_counter() - begun:.2f} s")
    one, local = timed(lambda: [identify_or_none(engine, p) for p in paths], args.runs)
    report.append(f"one thread: {one * per_file:.3f} ms per file")
    with concurrent.futures.ThreadPoolExecutor(args.threads) as pool:
        threaded, in_threads = timed(
            lambda: list(pool.map(lambda p: identify_or_none(engine, p), paths, chunksize=64)),
            args.runs)
    report.append(f"{args.threads} threads: {threaded * per_file:.3f} ms per file "
                  f"({one / threaded:.2f}x one thread)")
    same = in_threads == local

    for workers in range(1, args.workers + 1):
        begun = time.perf_counter()
        cluster = None if args.scheduler else LocalCluster(
            n_workers=workers, threads_per_worker=1, dashboard_address=None)
        with Client(args.scheduler or cluster) as client:
            client.run(lingomat.dask.preload, **options)  # engines load before timing
            started = time.perf_counter() - begun
            partitions = lingomat.dask.partitions_for(len(paths), workers)
            bag = db.from_sequence(paths, npartitions=partitions)
            remote_time, remote = timed(
                lambda: lingomat.dask.identify_paths(bag, errors="none", **options).compute(),
                args.runs)
        if cluster is not None:
            cluster.close()
        same = same and remote == local
        report.append(f"dask, {workers} worker(s), {partitions} partitions: "
                      f"{remote_time * per_file:.3f} ms per file ({one / remote_time:.2f}x one "
                      f"thread); cluster start-up and engine load {started:.2f} s")

    counts = collections.Counter(language or "(none)" for language in local)
    for language, count in counts.most_common(10):
        print(f"{count:8d}  {language}")
    print(f"{len(paths)} files, medians of {args.runs} runs", file=sys.stderr)
    for line in report:
        print("  " + line, file=sys.stderr)
    print(f"  answers {'equal' if same else 'DIFFER'}", file=sys.stderr)
    return 0 if same else 1


if __name__ == "__main__":
    sys.exit(main())
