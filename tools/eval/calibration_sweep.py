#!/usr/bin/python3
"""Replays a score trace (lingomat-eval --scores FILE) under other calibrations.

For every unseen-token total U (--tokens-total) and count scale K (--count-scale)
it reports, per mode, how many held-out files the engine would get right, wrong
or leave unanswered under given floors, without retraining or re-identifying:
a file's score is its traced seen-token score plus ln(1/U) per unseen token,
and the scale adds ln K per token.

Usage: calibration_sweep.py TRACE --tokens-total U... --count-scale K...
       [--min-tokens N] [--min-score X]
"""
import argparse
import collections
import math
import sys


def read_trace(path):
    files = []
    with open(path, encoding="utf-8", errors="replace") as trace:
        next(trace)
        for line in trace:
            fields = line.rstrip("\n").split("\t")
            mode, expected, fallback, tokens = fields[:4]
            candidates = []
            for entry in fields[4:]:
                name, _, numbers = entry.rpartition("=")
                seen, _, unseen = numbers.partition("/")
                candidates.append((name, float(seen), int(unseen)))
            files.append((mode, expected, fallback, int(tokens), candidates))
    return files


def answer(file, unseen_cost, shift, min_tokens, min_score):
    _, _, fallback, tokens, candidates = file
    best, best_score = "", None
    for name, seen, unseen in candidates:
        score = seen - unseen * unseen_cost
        if best_score is None or score > best_score:
            best, best_score = name, score
    # The engine's rule: enough tokens, and a score per token on the floor (0: no floor).
    if best and tokens > 0 and tokens >= min_tokens:
        if min_score == 0 or best_score / tokens + shift >= min_score:
            return best
    return fallback


def tally(files, unseen_cost, shift, min_tokens, min_score):
    result = {}
    for mode in ("content", "filename"):
        right = wrong = silent = 0
        per_language = collections.defaultdict(lambda: [0, 0])
        for file in files:
            if file[0] != mode:
                continue
            said = answer(file, unseen_cost, shift, min_tokens, min_score)
            per_language[file[1]][1] += 1
            if said == file[1]:
                right += 1
                per_language[file[1]][0] += 1
            elif said:
                wrong += 1
            else:
                silent += 1
        worst = min(per_language.items(), key=lambda item: item[1][0] / item[1][1])
        result[mode] = (right, wrong, silent, worst)
    return result


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("trace")
    parser.add_argument("--tokens-total", type=float, nargs="+", required=True)
    parser.add_argument("--count-scale", type=float, nargs="+", default=[1])
    parser.add_argument("--min-tokens", type=int, default=40)
    parser.add_argument("--min-score", type=float, default=-8.0)
    args = parser.parse_args()
    files = read_trace(args.trace)
    print("tokens_total count_scale  mode      right  wrong  silent  right%  precision  worst language")
    for total in args.tokens_total:
        for scale in args.count_scale:
            results = tally(files, math.log(total), math.log(scale), args.min_tokens, args.min_score)
            for mode, (right, wrong, silent, worst) in results.items():
                n = right + wrong + silent
                precision = right / (right + wrong) if right + wrong else 0
                print("%12d %11g  %-8s %6d %6d %7d  %5.1f%%  %8.1f%%  %s %.0f%%" % (
                    total, scale, mode, right, wrong, silent, 100 * right / n, 100 * precision,
                    worst[0], 100 * worst[1][0] / worst[1][1]))
    return 0


if __name__ == "__main__":
    sys.exit(main())
