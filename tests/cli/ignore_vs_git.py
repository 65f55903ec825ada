#!/usr/bin/env python3
"""The files the tool walks in git work trees (one of tricky rules, many random ones) against
git's: in every folder the tool lists what `git ls-files -co --exclude-standard` lists there,
and nothing `git check-ignore` calls ignored. Git's user configuration is kept out of the way.

    python3 tests/cli/ignore_vs_git.py build/tools/cli/lingomat --data FILE [--trees 200]
"""
import argparse
import os
import random
import subprocess
import sys
import tempfile

NAMES = ["a", "b", "ab", "x.txt", "debug.log", "logs", "doc", "e.pdf", "#hash", "!bang",
         "sp ace", "trail ", "[x]", "Q", "deep", "a.b.c", "star*"]
PIECES = ["a", "b", "*", "**", "?", "[ab]", "[!a]", "[a-c]", "[[:alpha:]]", "[[:digit:]x]",
          "*.log", "*.pdf", "logs", "doc", "debug.log", "x.txt", "\\#hash", "\\!bang",
          "sp\\ ace", "trail\\ ", "\\[x]", "Q", "deep", "a.b.c", "star\\*", "*.*"]


def write(path, text="x\n"):
    """Writes a file; a random name already taken by a file or folder is left as it is."""
    try:
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w") as f:
            f.write(text)
    except (IsADirectoryError, NotADirectoryError, FileExistsError):
        pass


def global_ignore(top, pattern):
    write(os.path.join(top, "..", "global-ignore"), pattern + "\n")
    subprocess.run(["git", "-C", top, "config", "core.excludesFile", "../global-ignore"], check=True)


def random_pattern(rng):
    pattern = "/".join(rng.choice(PIECES) for _ in range(rng.choice([1, 1, 1, 2, 2, 3])))
    for chance, before, after in [(0.2, "/", ""), (0.2, "", "/"), (0.2, "!", ""), (0.1, "", "   ")]:
        if rng.random() < chance:
            pattern = before + pattern + after
    return pattern


def random_tree(top, rng):
    folders = [""]
    for _ in range(rng.randint(3, 10)):
        folders.append(os.path.join(rng.choice(folders), rng.choice(NAMES)).rstrip())
    for folder in folders:
        for _ in range(rng.randint(1, 4)):
            write(os.path.join(top, folder, rng.choice(NAMES)))
    for folder in rng.sample(folders, k=min(len(folders), rng.randint(1, 4))):
        patterns = [random_pattern(rng) for _ in range(rng.randint(1, 6))]
        write(os.path.join(top, folder, ".gitignore"), "\n".join(patterns) + "\n")
    if rng.random() < 0.3:
        write(os.path.join(top, ".git", "info", "exclude"), random_pattern(rng) + "\n")
    if rng.random() < 0.3:
        global_ignore(top, random_pattern(rng))


def fixed_tree(top):
    for path in ["logs/debug.log", "a/logs/debug.log", "a/b/logs/debug.log", "logs/keep.log",
                 "doc/x.pdf", "doc/a/x.pdf", "doc/a/b/x.pdf", "doc/x.txt", "c/doc/x.pdf",
                 "a/b/f", "a/x/b/f", "a/x/y/b/f", "a/xb/f", "sub/deep/f.tmp", "sub/f.tmp",
                 "sub/keep.tmp", "local.secret", "g.global", "trail ", "sp ace", "#hash",
                 "!bang", "x/e.pdf", "abc", "a1", "only/inner/f"]:
        write(os.path.join(top, path))
    write(os.path.join(top, ".gitignore"),
          "**/logs/debug.log\ndoc/**/*.pdf\na/**/b/\n*.tmp\n!keep.tmp\ntrail\\ \n\\#hash\n"
          "\\!bang\n/x/*.pdf\n[a-b]b[[:alpha:]]\na[[:digit:]]\n/only/*\n!/only/inner\n")
    write(os.path.join(top, "sub", ".gitignore"), "!deep/f.tmp\n")
    write(os.path.join(top, ".git", "info", "exclude"), "*.secret\n")
    global_ignore(top, "*.global")


def listed(command, folder, separator):
    run = subprocess.run(command, cwd=folder, capture_output=True, check=True)
    paths = [r.split(b"\t")[0].decode("utf-8", "surrogateescape") for r in run.stdout.split(separator) if r]
    return sorted(p[2:] if p.startswith("./") else p for p in paths)


def compare(tool, top, label):
    """Returns the number of folders whose lists differ, printing each difference."""
    failures = 0
    for folder, subfolders, _ in os.walk(top):
        subfolders[:] = [s for s in subfolders if s != ".git"]
        expected = listed(["git", "ls-files", "-co", "--exclude-standard", "-z"], folder, b"\0")
        got = listed(tool + ["-0", "."], folder, b"\0")
        # A folder named on the command line is walked even when ignored; git lists nothing
        # in it, so such folders say nothing here.
        if expected != got and (folder == top or expected):
            failures += 1
            print("%s: %s: git %s, tool %s" % (label, os.path.relpath(folder, top),
                                              sorted(set(expected) - set(got)), sorted(set(got) - set(expected))))
    query = subprocess.run(["git", "check-ignore", "--stdin", "-z"], cwd=top, capture_output=True,
                           input=b"".join(os.fsencode(p) + b"\0" for p in listed(tool + ["-0", "."], top, b"\0")))
    if query.stdout:
        failures += 1
        print("%s: listed but ignored: %s" % (label, query.stdout.split(b"\0")))
    return failures


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("lingomat")
    parser.add_argument("--data", required=True)
    parser.add_argument("--trees", type=int, default=200)
    parser.add_argument("--seed", type=int, default=20)
    args = parser.parse_args()
    tool = [os.path.abspath(args.lingomat), "--data", os.path.abspath(args.data), "-j", "1"]
    rng, failures = random.Random(args.seed), 0
    with tempfile.TemporaryDirectory() as scratch:
        os.environ.update(HOME=scratch, XDG_CONFIG_HOME=os.path.join(scratch, "xdg"), GIT_CONFIG_NOSYSTEM="1")
        for index in range(args.trees + 1):
            top = os.path.join(scratch, "case%d" % index, "repo")
            os.makedirs(top)
            subprocess.run(["git", "init", "-q", top], check=True)
            fixed_tree(top) if index == 0 else random_tree(top, rng)
            failures += compare(tool, top, "random tree %d" % index if index else "fixed tree")
    print("%d trees compared with git, %d differences" % (args.trees + 1, failures))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
