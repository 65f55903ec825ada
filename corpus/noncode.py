#!/usr/bin/env python3
"""Lays out a held-out set of text that is no programming or markup language.

Taken from the Debian packages already unpacked in corpus/.cache/deb by fetch.sh:
copyright files, changelogs, NEWS, plain READMEs and AUTHORS lists from
usr/share/doc, and CSV, TSV, log and word-list files from anywhere in the
packages. None of them is a training sample. The layout is the samples layout,
corpus/noncode/<KIND>/<PACKAGE>/<FILE>, so lingomat-eval can run on it: every
answer it counts is an answer given to text that should get none.

Usage: python3 corpus/noncode.py [--max-per-kind N]
"""
import argparse
import gzip
import os
import re
import shutil
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
PACKAGES = os.path.join(HERE, ".cache", "deb")
OUTPUT = os.path.join(HERE, "noncode")

# kind -> test on (path inside the package, file name); doc kinds look in usr/share/doc only.
DOC_KINDS = {
    "copyright": re.compile(r"^copyright$"),
    "changelog": re.compile(r"^changelog(\.Debian)?(\.amd64)?(\.gz)?$"),
    "news": re.compile(r"^NEWS(\.Debian)?(\.gz)?$"),
    "readme": re.compile(r"^README(\.txt|\.gz)?$"),
    "authors": re.compile(r"^(AUTHORS|THANKS|CREDITS)(\.gz)?$"),
}
ANYWHERE_KINDS = {
    "csv": re.compile(r"\.(csv|tsv)(\.gz)?$"),
    "log": re.compile(r"\.log(\.gz)?$"),
    "wordlist": re.compile(r"(^words$|\.(dic|words|wordlist)(\.gz)?$)"),
}
MAX_BYTES = 64 * 1024  # the engine reads 10 KiB; more only costs disk
PER_PACKAGE = 2  # files of one kind from one package, so no package dominates a kind


def read_text(path):
    opener = gzip.open if path.endswith(".gz") else open
    try:
        with opener(path, "rb") as handle:
            data = handle.read(MAX_BYTES)
    except (OSError, EOFError):
        return None
    # Markup READMEs would be Markdown or reStructuredText, not plain text.
    if b"\0" in data or not data.strip():
        return None
    return data


def is_markup(data):
    text = data[:4096].decode("utf-8", "replace")
    return bool(re.search(r"^(#{1,6} |={3,}|-{3,}$|\.\. |\* \[|```)", text, re.MULTILINE))


def candidates(package_root):
    for folder, dirs, files in os.walk(package_root):
        dirs.sort()
        relative = os.path.relpath(folder, package_root)
        in_doc = relative.startswith(os.path.join("root", "usr", "share", "doc")) or \
            "/usr/share/doc" in "/" + relative
        for name in sorted(files):
            kinds = ANYWHERE_KINDS.items()
            if in_doc:
                kinds = list(DOC_KINDS.items()) + list(kinds)
            for kind, pattern in kinds:
                if pattern.search(name):
                    yield kind, os.path.join(folder, name)
                    break


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--max-per-kind", type=int, default=150)
    args = parser.parse_args()
    if args.max_per_kind < 1:
        parser.error("--max-per-kind must be at least 1")
    if not os.path.isdir(PACKAGES):
        print("noncode.py: %s is missing; run corpus/fetch.sh first" % PACKAGES, file=sys.stderr)
        return 1
    shutil.rmtree(OUTPUT, ignore_errors=True)
    taken = {}
    for package in sorted(os.listdir(PACKAGES)):
        per_kind = {}
        for kind, path in candidates(os.path.join(PACKAGES, package)):
            if taken.get(kind, 0) >= args.max_per_kind or per_kind.get(kind, 0) >= PER_PACKAGE:
                continue
            data = read_text(path)
            if data is None or (kind == "readme" and is_markup(data)):
                continue
            name = os.path.basename(path)
            name = name[:-3] if name.endswith(".gz") else name
            # One folder per file keeps the real file name, which the with-name mode looks up.
            target = os.path.join(OUTPUT, kind, package, str(per_kind.get(kind, 0)), name)
            os.makedirs(os.path.dirname(target), exist_ok=True)
            with open(target, "wb") as out:
                out.write(data)
            per_kind[kind] = per_kind.get(kind, 0) + 1
            taken[kind] = taken.get(kind, 0) + 1
    for kind in sorted(taken):
        print("%-10s %4d files" % (kind, taken[kind]))
    return 0


if __name__ == "__main__":
    sys.exit(main())
