#!/usr/bin/env python3
"""Prints files/projects per language of corpus/samples as a Markdown table.

Usage: python3 corpus/counts.py [COLUMNS]
"""
import os
import sys

SAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "samples")


def main():
    columns = int(sys.argv[1]) if len(sys.argv) > 1 else 5
    if columns < 1 or not os.path.isdir(SAMPLES):
        print("usage: counts.py [COLUMNS >= 1], after corpus/fetch.sh", file=sys.stderr)
        return 1
    cells = []
    for language in sorted(os.listdir(SAMPLES), key=str.lower):
        root = os.path.join(SAMPLES, language)
        projects = sorted(os.listdir(root))
        files = sum(len(names) for project in projects
                    for _, _, names in os.walk(os.path.join(root, project)))
        cells.append("%s %d/%d" % (language, files, len(projects)))
    print("| " + " | ".join([""] * columns) + " |")
    print("|" + "---|" * columns)
    for start in range(0, len(cells), columns):
        row = cells[start:start + columns]
        print("| " + " | ".join(row + [""] * (columns - len(row))) + " |")
    return 0


if __name__ == "__main__":
    sys.exit(main())
