#!/usr/bin/python3
"""Measures the command-line tool itself, with its own floors and prose test, on held-out
projects and on the non-code set.

The held-out side is the one lingomat-eval --split test uses (fold 0 of 3, by project), so
DATA should be trained with --split train. Three runs of the tool:
  content only   every held-out file copied under a name that no lookup knows;
  with names     the held-out files where they lie (--files-from);
  non-code       corpus/noncode as it lies, real file names included.
Right, wrong and no answer are counted apart, per mode and per language.

Usage: /usr/bin/python3 scripts/measure-cli-accuracy.py DATA SAMPLES NONCODE
           [--tool build/tools/cli/lingomat] [--per-language]
"""
import argparse
import collections
import json
import os
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tools", "eval"))
from validation_tree import test_projects  # noqa: E402  the split the C++ tools use


def held_out_files(samples):
    """(path, language) of every file of the held-out projects."""
    files = []
    for language in sorted(os.listdir(samples)):
        folder = os.path.join(samples, language)
        if not os.path.isdir(folder):
            continue
        for project in sorted(test_projects(sorted(os.listdir(folder)), 3, 0)):
            for root, dirs, names in os.walk(os.path.join(folder, project), followlinks=True):
                dirs.sort()
                files.extend((os.path.join(root, name), language) for name in sorted(names))
    return files


def run_tool(tool, data, args):
    """The tool's answers, path -> language or None."""
    output = subprocess.run([tool, "--data", data, "--json", "--no-ignore"] + args,
                            check=True, stdout=subprocess.PIPE).stdout
    answers = {}
    for line in output.decode("utf-8").splitlines():
        record = json.loads(line)
        answers[record["path"]] = record["language"]
    return answers


def report(mode, labelled, answers, per_language):
    counts = collections.defaultdict(collections.Counter)
    for path, expected in labelled:
        got = answers.get(path)
        counts[expected]["right" if got == expected else "none" if got is None else "wrong"] += 1
    total = collections.Counter()
    for language_counts in counts.values():
        total.update(language_counts)
    files = sum(total.values())
    print("%-13s files %d, right %d (%.1f%%), wrong %d (%.1f%%), no answer %d (%.1f%%)" % (
        mode, files, total["right"], 100.0 * total["right"] / files, total["wrong"],
        100.0 * total["wrong"] / files, total["none"], 100.0 * total["none"] / files))
    if per_language:
        for language in sorted(counts):
            c = counts[language]
            n = sum(c.values())
            print("  %-24s %5d  right %5.1f%%  wrong %5.1f%%  none %5.1f%%" % (
                language, n, 100.0 * c["right"] / n, 100.0 * c["wrong"] / n, 100.0 * c["none"] / n))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("data")
    parser.add_argument("samples")
    parser.add_argument("noncode")
    parser.add_argument("--tool", default="build/tools/cli/lingomat")
    parser.add_argument("--per-language", action="store_true")
    args = parser.parse_args()

    labelled = held_out_files(args.samples)
    scratch = tempfile.mkdtemp(prefix="lingomat-cli-accuracy-")
    try:
        renamed = []
        for index, (path, language) in enumerate(labelled):
            copy = os.path.join(scratch, "f%06d" % index)
            shutil.copyfile(path, copy)
            renamed.append((copy, language))
        report("content only", renamed, run_tool(args.tool, args.data, [scratch]),
               args.per_language)
        listing = os.path.join(scratch, "list")
        with open(listing, "wb") as out:
            out.write(b"".join(os.fsencode(path) + b"\0" for path, _ in labelled))
        report("with names", labelled,
               run_tool(args.tool, args.data, ["-0", "--files-from", listing]),
               args.per_language)
    finally:
        shutil.rmtree(scratch)

    kinds = collections.defaultdict(collections.Counter)
    for path, language in run_tool(args.tool, args.data, [args.noncode]).items():
        kind = os.path.relpath(path, args.noncode).split(os.sep)[0]
        kinds[kind]["answered" if language is not None else "unanswered"] += 1
    files = sum(sum(c.values()) for c in kinds.values())
    unanswered = sum(c["unanswered"] for c in kinds.values())
    print("non-code      files %d, unanswered %d (%.1f%%)" % (files, unanswered,
                                                             100.0 * unanswered / files))
    for kind in sorted(kinds):
        c = kinds[kind]
        print("  %-10s %4d files, %4d answered" % (kind, sum(c.values()), c["answered"]))
    return 0


if __name__ == "__main__":
    sys.exit(main())
