"""Makes a samples tree of the training side only, so that choices can be tuned on it.

The tree holds symbolic links to the project folders that lingomat-train --split train
(with the same --folds and --fold) trains on. Training on it with --split train and
evaluating on it with --split test then holds out a third of the training projects as a
validation set, and the test side of the full corpus is never looked at.

Usage: python3 tools/eval/validation_tree.py SAMPLES OUTPUT [--folds N] [--fold I]
"""

import argparse
import os
import sys


def fnv1a_64(data: bytes) -> int:
    value = 14695981039346656037
    for byte in data:
        value ^= byte
        value = (value * 1099511628211) & 0xFFFFFFFFFFFFFFFF
    return value


def test_projects(projects, folds, fold):
    """The projects the tools hold out: sorted by hash, every folds-th from fold."""
    if len(projects) < 2:
        return set()
    keyed = sorted((fnv1a_64(name.encode("utf-8", "surrogateescape")), name) for name in projects)
    return {name for index, (_, name) in enumerate(keyed) if index % folds == fold}


def build(samples, output, folds, fold):
    linked = 0
    for language in sorted(os.listdir(samples)):
        source = os.path.join(samples, language)
        if not os.path.isdir(source):
            continue
        projects = [p for p in sorted(os.listdir(source)) if os.path.isdir(os.path.join(source, p))]
        held_out = test_projects(projects, folds, fold)
        for project in projects:
            if project in held_out:
                continue
            os.makedirs(os.path.join(output, language), exist_ok=True)
            os.symlink(os.path.abspath(os.path.join(source, project)),
                       os.path.join(output, language, project))
            linked += 1
    return linked


def main(argv):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("samples")
    parser.add_argument("output")
    parser.add_argument("--folds", type=int, default=3)
    parser.add_argument("--fold", type=int, default=0)
    args = parser.parse_args(argv)
    if os.path.exists(args.output):
        parser.error(f"{args.output} exists; give a new folder")
    print(f"{build(args.samples, args.output, args.folds, args.fold)} training projects linked")


if __name__ == "__main__":
    main(sys.argv[1:])
