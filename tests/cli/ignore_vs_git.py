#!/usr/bin/env python3
"""Compares the files the tool walks in a git work tree with git's own list.

For a fixed tree of tricky rules and for many random trees and ignore files, the tool's
list of a folder (the top, and every subfolder) must equal what
`git ls-files -co --exclude-standard` lists there, and `git check-ignore` must call none
of the files it lists ignored. Git's user configuration is kept out of the way
(HOME and XDG_CONFIG_HOME point into the scratch folder).

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


def write(path, text):
    """Writes a file; a random name already taken by a file or folder of the other kind is
    left as it is."""
    try:
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w") as f:
            f.write(text)
    except (IsADirectoryError, NotADirectoryError, FileExistsError):
        pass


def random_pattern(rng):
    parts = [rng.choice(PIECES) for _ in range(rng.choice([1, 1, 1, 2, 2, 3]))]
    pattern = "/".join(parts)
    if rng.random() < 0.2:
        pattern = "/" + pattern
    if rng.random() < 0.2:
        pattern += "/"
    if rng.random() < 0.2:
        pattern = "!" + pattern
    if rng.random() < 0.1:
        pattern += "   "
    return pattern


def random_tree(top, rng):
    folders = [""]
    for _ in range(rng.randint(3, 10)):
        parent = rng.choice(folders)
        folders.append(os.path.join(parent, rng.choice(NAMES)).rstrip())
    for folder in folders:
        for _ in range(rng.randint(1, 4)):
            write(os.path.join(top, folder, rng.choice(NAMES)), "x\n")
    for folder in rng.sample(folders, k=min(len(folders), rng.randint(1, 4))):
        patterns = [random_pattern(rng) for _ in range(rng.randint(1, 6))]
        write(os.path.join(top, folder, ".gitignore"), "\n".join(patterns) + "\n")
    if rng.random() < 0.3:
        write(os.path.join(top, ".git", "info", "exclude"), random_pattern(rng) + "\n")
    if rng.random() < 0.3:
        write(os.path.join(top, "..", "global-ignore"), random_pattern(rng) + "\n")
        subprocess.run(["git", "-C", top, "config", "core.excludesFile", "../global-ignore"],
                       check=True)


def fixed_tree(top):
    for path in ["logs/debug.log", "a/logs/debug.log", "a/b/logs/debug.log", "logs/keep.log",
                 "doc/x.pdf", "doc/a/x.pdf", "doc/a/b/x.pdf", "doc/x.txt", "c/doc/x.pdf",
                 "a/b/f", "a/x/b/f", "a/x/y/b/f", "a/xb/f", "sub/deep/f.tmp", "sub/f.tmp",
                 "sub/keep.tmp", "local.secret", "g.global", "trail ", "sp ace", "#hash",
                 "!bang", "x/e.pdf", "abc", "a1", "only/inner/f"]:
        write(os.path.join(top, path), "x\n")
    write(os.path.join(top, ".gitignore"),
          "**/logs/debug.log\ndoc/**/*.pdf\na/**/b/\n*.tmp\n!keep.tmp\ntrail\\ \n\\#hash\n"
          "\\!bang\n/x/*.pdf\n[a-b]b[[:alpha:]]\na[[:digit:]]\n/only/*\n!/only/inner\n")
    write(os.path.join(top, "sub", ".gitignore"), "!deep/f.tmp\n")
    write(os.path.join(top, ".git", "info", "exclude"), "*.secret\n")
    write(os.path.join(top, "..", "global-ignore"), "*.global\n")
    subprocess.run(["git", "-C", top, "config", "core.excludesFile", "../global-ignore"],
                   check=True)


def git_list(folder):
    run = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "-z"], cwd=folder,
                         capture_output=True, check=True)
    return sorted(p.decode("utf-8", "surrogateescape") for p in run.stdout.split(b"\0") if p)


def tool_list(tool, folder):
    run = subprocess.run(tool + ["-0", "."], cwd=folder, capture_output=True)
    if run.returncode != 0:
        raise RuntimeError(run.stderr.decode(errors="replace"))
    paths = [r.split(b"\t")[0].decode("utf-8", "surrogateescape")
             for r in run.stdout.split(b"\0") if r]
    return sorted(p[2:] if p.startswith("./") else p for p in paths)


def folders_below(top):
    for folder, subfolders, _ in os.walk(top):
        subfolders[:] = [s for s in subfolders if s != ".git"]
        yield folder


def compare(tool, top, label):
    """Returns the number of folders whose lists differ, printing each difference."""
    failures = 0
    for folder in folders_below(top):
        expected, got = git_list(folder), tool_list(tool, folder)
        # A folder named on the command line is walked even when ignored; git lists nothing
        # in it, so such folders say nothing here.
        if folder != top and not expected:
            continue
        if expected != got:
            failures += 1
            print("%s: %s: git %s, tool %s" % (label, os.path.relpath(folder, top),
                                              sorted(set(expected) - set(got)),
                                              sorted(set(got) - set(expected))))
    # No file the tool lists may be one git's own query calls ignored.
    listed = tool_list(tool, top)
    query = subprocess.run(["git", "check-ignore", "--stdin", "-z"], cwd=top,
                           input=b"".join(p.encode("utf-8", "surrogateescape") + b"\0"
                                          for p in listed), capture_output=True)
    if query.stdout:
        failures += 1
        print("%s: listed but ignored: %s" % (label, query.stdout.split(b"\0")))
    return failures


def new_repository(scratch, index):
    top = os.path.join(scratch, "case%d" % index, "repo")
    os.makedirs(top)
    subprocess.run(["git", "init", "-q", top], check=True)
    return top


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("lingomat")
    parser.add_argument("--data", required=True)
    parser.add_argument("--trees", type=int, default=200)
    parser.add_argument("--seed", type=int, default=20)
    args = parser.parse_args()
    tool = [os.path.abspath(args.lingomat), "--data", os.path.abspath(args.data), "-j", "1"]
    with tempfile.TemporaryDirectory() as scratch:
        os.environ["HOME"] = scratch
        os.environ["XDG_CONFIG_HOME"] = os.path.join(scratch, "xdg")
        os.environ["GIT_CONFIG_NOSYSTEM"] = "1"
        top = new_repository(scratch, 0)
        fixed_tree(top)
        failures = compare(tool, top, "fixed tree")
        rng = random.Random(args.seed)
        for index in range(1, args.trees + 1):
            top = new_repository(scratch, index)
            random_tree(top, rng)
            failures += compare(tool, top, "random tree %d" % index)
    print("%d trees compared with git, %d differences" % (args.trees + 1, failures))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
