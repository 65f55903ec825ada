#!/usr/bin/env python3
"""Accuracy of an evaluation report as a host would meet it: the per-language accuracy
of the report's first mode (content only), weighted by each language's share of use.

Usage: weighted_accuracy.py REPORT.txt SHARES.txt
  REPORT.txt  a text report of lingomat-eval
  SHARES.txt  lines "SHARE LANGUAGE" (data/language-shares.txt); only the languages
              listed there and present in the report count.
"""

import re
import sys

ROW = re.compile(r"^(.+?)\s+(\d+)\s+(\d+)\s+(\d+)\s+(\d+)\s+[\d.]+%")


def read_shares(path):
    shares = {}
    with open(path, encoding="utf-8") as handle:
        for line in handle:
            line = line.strip()
            if line and not line.startswith("#"):
                share, language = line.split(None, 1)
                shares[language] = float(share)
    return shares


def first_mode_rows(path):
    rows, modes = {}, 0
    with open(path, encoding="utf-8") as handle:
        for line in handle:
            if line.startswith("== "):
                modes += 1
                if modes > 1:
                    break
                continue
            match = ROW.match(line)
            if match and modes == 1:
                files, correct = int(match.group(2)), int(match.group(3))
                rows[match.group(1)] = (files, correct)
    return rows


def main():
    if len(sys.argv) != 3:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    shares = read_shares(sys.argv[2])
    rows = first_mode_rows(sys.argv[1])
    weight = right = 0.0
    for language, share in shares.items():
        if language in rows and rows[language][0] > 0:
            files, correct = rows[language]
            weight += share
            right += share * correct / files
    if weight == 0:
        print("no language of the shares table is in the report", file=sys.stderr)
        return 1
    counted = sum(1 for language in shares if language in rows)
    print("share-weighted accuracy %.1f%% over %d languages" % (100 * right / weight, counted))
    return 0


if __name__ == "__main__":
    sys.exit(main())
