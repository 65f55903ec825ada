"""The lingomat tool run as users run it, on tiny data files written for each test: what it
prints, its exit status and errors, how it walks trees, and its options. The tiny data knows
Alpha (token "alpha", ".al", file "Alphafile") and Beta (token "beta", ".be" and also ".al",
interpreter "betash"). In the tables "@/" stands for the test's folder."""

import base64
import glob
import json
import os
import re
import shutil
import subprocess
import threading
import time

import pytest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
TOOL = os.environ.get("LINGOMAT_TOOL", os.path.join(ROOT, "build", "tools", "cli", "lingomat"))
SHIPPED = os.path.join(ROOT, "data", "lingomat.json")


def data(tokens, extnames, language_tokens, total, **names):
    return json.dumps(dict({"filenames": {}, "interpreters": {}}, **names, tokens=tokens,
                           extnames=extnames, languages={name: 1 for name in tokens},
                           language_tokens=language_tokens, tokens_total=total,
                           languages_total=len(tokens)))


TINY = data({"Alpha": {"alpha": 80, "(": 10, ")": 10}, "Beta": {"beta": 80, "{": 10, "}": 10}},
            {"Alpha": [".al"], "Beta": [".be", ".al"]}, {"Alpha": 100, "Beta": 100}, 200,
            filenames={"Alpha": ["Alphafile"]}, interpreters={"Beta": ["betash"]})
# A .pp file is Puppet or Pascal. Pascal's words are rare in its samples, so a Pascal text
# scores below every floor, yet far above Puppet.
PUPPET_OR_PASCAL = data({"Puppet": {"class": 50, "{": 25, "}": 25}, "Pascal": {"begin": 1, "end": 1, ";": 1}},
                        {"Puppet": [".pp"], "Pascal": [".pp", ".pas"]}, {"Puppet": 100, "Pascal": 5000}, 100000)
# Prose and code score alike here (-6.5 per token), between the floor (-7) and prose's (-6).
NOTES = data({"Notes": dict.fromkeys(["the", "of", "licence", "x", "=", ";"], 1)},
             {"Notes": [".notes"]}, {"Notes": 665}, 665)
FLOORS = ["--min-tokens", "40", "--min-score", "-8"]  # the library's; the tool's are lower
HI, BINARY, PROSE = "hi\n", b"PNG\0\x01\x02", "the licence of the licence " * 10


def words(word, count):
    return (word + " ") * count


def utf16(text, order, bom=True):
    return ({"le": b"\xff\xfe", "be": b"\xfe\xff"}[order] if bom else b"") + text.encode("utf-16-" + order)


class Scratch:
    def __init__(self, root):
        self.root = str(root)
        self.data = self.write("io/data.json", TINY)

    def at(self, text):
        return text.replace("@/", self.root + "/")

    def write(self, relative, content=HI):
        """Writes a file; content "->TARGET" makes a symbolic link instead."""
        path = self.at("@/" + relative)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        if isinstance(content, str) and content.startswith("->"):
            os.symlink(self.at(content[2:]), path)
        else:
            with open(path, "wb") as f:
                f.write(content if isinstance(content, bytes) else os.fsencode(self.at(content)))
        return path

    def run(self, *args, stdin="", tool=TOOL, stdout=subprocess.PIPE):
        """Runs the tool; the tiny data and the library's floors go first unless the arguments
        name a data file or the tool is another copy."""
        args = [self.at(a) for a in args]
        if "--data" not in args and tool == TOOL:
            args = ["--data", self.data] + FLOORS + args
        done = subprocess.run([tool] + args, input=os.fsencode(self.at(stdin)), stdout=stdout,
                              stderr=subprocess.PIPE, timeout=60)
        done.out, done.err = os.fsdecode(done.stdout or b""), os.fsdecode(done.stderr)
        return done

    def json_lines(self, *args):
        done = self.run("--json", *args)
        assert done.returncode == 0, done.err
        return [json.loads(line) for line in done.out.splitlines()]


@pytest.fixture
def scratch(tmp_path):
    return Scratch(tmp_path)


PASCAL, A50, B50 = words("begin ; end ;", 20), words("alpha", 50), words("beta", 50)
VCS = [".git", ".hg", ".svn", ".bzr", "CVS", "_darcs"]
# name: (files, arguments, output[, pieces of standard error]). The file "<stdin>" is fed on
# standard input. The exit status is 1 when errors are expected, 0 otherwise.
CASES = {
    "a line per file by path, empty when unknown": ({"x.al": B50, "Alphafile": HI, "notes.zz": "hello\n"},
        ["@/notes.zz", "@/x.al", "@/Alphafile"], "@/Alphafile\tAlpha\n@/notes.zz\t\n@/x.al\tBeta\n"),
    "standard input named by the last component": ({"<stdin>": HI}, ["--name", "d/Alphafile", "-"], "-\tAlpha\n"),
    "empty standard input": ({}, ["-"], "-\t\n"),
    "missing files and dangling links reported, the rest listed": (
        {"good.al": HI, "dangling.al": "->@/nowhere"}, ["@/missing.al", "@/good.al", "@/dangling.al"],
        "@/good.al\tAlpha\n", ["lingomat: @/missing.al: No such file or directory\n",
                               "lingomat: @/dangling.al: No such file or directory\n"]),
    "plain lines escape what would break them": ({"tab\there\\new\nline\r.al": HI},
        ["@/tab\there\\new\nline\r.al", "@/gone\n.al"], "@/tab\\there\\\\new\\nline\\r.al\tAlpha\n",
        ["lingomat: @/gone\\n.al: No such file"]),
    "control characters escaped, UTF-8 kept": ({"t/\x1b[31mred\a\x7f\u009b.al": HI, "t/\u0100.al": HI},
        ["@/t", "@/\x1b]0;title\x07"], "@/t/\\x1b[31mred\\x07\\x7f\\xc2\\x9b.al\tAlpha\n@/t/\u0100.al\tAlpha\n",
        ["lingomat: @/\\x1b]0;title\\x07: No such file or directory\n"]),
    "walks trees but not version-control folders": (dict(
        {"t/a.al": HI, "t/deep/er/b.be": HI, "t/.hidden.be": HI}, **{f"t/{v}/c.al": HI for v in VCS},
        **{f"t/deep/{v}/d.al": HI for v in VCS}), ["@/t"], "@/t/.hidden.be\tBeta\n@/t/a.al\tAlpha\n@/t/deep/er/b.be\tBeta\n"),
    "binary files skipped in trees; a NUL past the sniffed head is not binary": (
        {"t/text.al": HI, "t/image.al": BINARY, "t/late.al": "a" * 9000 + "\0"}, ["@/t"],
        "@/t/late.al\tAlpha\n@/t/text.al\tAlpha\n"),
    "a binary file named explicitly beats its walked copy": ({"t/text.al": HI, "t/image.al": BINARY},
        ["@/t", "@/t/image.al"], "@/t/image.al\tAlpha\n@/t/text.al\tAlpha\n"),
    "... when named first too": ({"t/text.al": HI, "t/image.al": BINARY}, ["@/./t/image.al", "@/t"],
                                 "@/./t/image.al\tAlpha\n@/t/text.al\tAlpha\n"),
    "links in trees: dangling ones are not files": ({"t/a.al": HI, "t/broken.al": "->@/nowhere",
        "t/link.al": "->@/t/a.al"}, ["@/t"], "@/t/a.al\tAlpha\n@/t/link.al\tAlpha\n"),
    "overlapping arguments list a file once": ({"t/a.al": HI}, ["@/t", "@/t/a.al", "@/t"], "@/t/a.al\tAlpha\n"),
    "spellings of a folder are one, printed as first reached": (
        {"t/a.al": HI}, ["@/./t", "@/t/", "@/t"], "@/./t/a.al\tAlpha\n"),
    "a file named explicitly is printed as given": ({"t/a.al": HI}, ["@/t", "@/t//a.al"], "@/t//a.al\tAlpha\n"),
    "ignore files": ({"r/.gitignore": "b/\n*.be\n!keep.be\n", "r/sub/.ignore": "x.al\n", "r/b/x.al": HI,
                      "r/a.be": HI, "r/keep.be": HI, "r/sub/x.al": HI, "r/x.al": HI}, ["@/r"],
                     "@/r/.gitignore\t\n@/r/keep.be\tBeta\n@/r/sub/.ignore\t\n@/r/x.al\tAlpha\n"),
    "--no-ignore": ({"r/.gitignore": "*.be\n", "r/a.be": HI}, ["--no-ignore", "@/r"], "@/r/.gitignore\t\n@/r/a.be\tBeta\n"),
    "--exclude matches names or paths below the walked folder": (
        {"t/a.al": HI, "t/d/big.json": HI, "t/vendor/lib/b.al": HI, "t/vendor.al": HI},
        ["--exclude", "*.json", "--exclude=vendor/lib", "@/t"], "@/t/a.al\tAlpha\n@/t/vendor.al\tAlpha\n"),
    "--files-from a list of files and folders": ({"a.al": HI, "t/c.be": HI, "list": "@/a.al\n\n@/t\n"},
        ["--files-from", "@/list"], "@/a.al\tAlpha\n@/t/c.be\tBeta\n"),
    "--files-from standard input, NUL-separated with -0": ({"a.al": HI, "line\nbreak.be": HI,
        "<stdin>": "@/line\nbreak.be\0@/a.al\0"}, ["-0", "--files-from", "-"], "@/a.al\tAlpha\0@/line\nbreak.be\tBeta\0"),
    "--files-from a pipe named by path, as <(find ...) gives it": (
        {"a.al": HI, "<stdin>": "@/a.al\n"}, ["--files-from", "/dev/stdin"], "@/a.al\tAlpha\n"),
    "--list-languages": ({}, ["--list-languages"], "Alpha\t.al\nBeta\t.be .al\n"),
    "--list-languages --json": ({}, ["--list-languages", "--json"],
        '{"name":"Alpha","extensions":[".al"],"filenames":["Alphafile"],"interpreters":[],"by_content":true}\n'
        '{"name":"Beta","extensions":[".be",".al"],"filenames":[],"interpreters":["betash"],"by_content":true}\n'),
    "--only drops other name candidates and limits the classifier": ({"Alphafile": HI, "y": A50, "b.al": HI},
        ["--only", "Beta", "@/Alphafile", "@/y", "@/b.al"], "@/Alphafile\t\n@/b.al\tBeta\n@/y\tBeta\n"),
    "--only repeated": ({"Alphafile": HI, "y": A50}, ["--only", "Beta", "--only=Alpha", "@/Alphafile", "@/y"],
                        "@/Alphafile\tAlpha\n@/y\tAlpha\n"),
    "the floors silence content-only answers": ({"x": words("beta", 10)}, ["@/x"], "@/x\t\n"),
    "the tool's own floors are lower": ({"x": words("beta", 10)}, ["--data", "@/io/data.json", "@/x"], "@/x\tBeta\n"),
    "name candidates are ranked whatever the floors": (
        {"x.al": words("beta", 10)}, ["--min-tokens", "51", "--min-score", "-0.1", "@/x.al"], "@/x.al\tBeta\n"),
    "--max-tokens": ({"x": B50}, ["--max-tokens", "10", "@/x"], "@/x\t\n"),
    "--max-bytes": ({"x": B50}, ["--max-bytes=20", "-j2", "@/x"], "@/x\t\n"),
    "order by path bytes, whatever the thread count": ({f"t/{n}": HI for n in ["B.al", "_.al", "a-b.al", "a.b/c.al",
        "a/b.al"]}, ["-j", "4", "@/t"], "@/t/B.al\tAlpha\n@/t/_.al\tAlpha\n@/t/a-b.al\tAlpha\n@/t/a.b/c.al\tAlpha\n@/t/a/b.al\tAlpha\n"),
    "limits lifted": ({"x": B50}, ["--max-tokens", "0", "--max-bytes", "0", "--min-score", "0", "@/x"], "@/x\tBeta\n"),
    "a file named like an option after --": ({"--json": B50}, ["--", "@/--json"], "@/--json\tBeta\n"),
    "Pascal below the floors still beats Puppet by name, not without one": (
        {"pp": PUPPET_OR_PASCAL, "a.pp": PASCAL, "b.pp": words("class { }", 20), "c": PASCAL},
        ["--data", "@/pp", "@/a.pp", "@/b.pp", "@/c"], "@/a.pp\tPascal\n@/b.pp\tPuppet\n@/c\t\n"),
    "--same-floors applies the floors to name candidates too": ({"pp": PUPPET_OR_PASCAL, "a.pp": PASCAL},
        ["--data", "@/pp", "--same-floors"] + FLOORS + ["@/a.pp"], "@/a.pp\tPuppet\n"),
    "prose that nothing names goes unanswered": ({"n": NOTES, "a": PROSE, "b": words("x = x ;", 10),
        "c.notes": PROSE}, ["--data", "@/n", "@/a", "@/b", "@/c.notes"], "@/a\t\n@/b\tNotes\n@/c.notes\tNotes\n"),
    "a floor switched off stays off for prose": (
        {"n": NOTES, "a": PROSE}, ["--data", "@/n", "--min-score", "0", "@/a"], "@/a\tNotes\n"),
    "--same-floors gives prose no floor of its own": (
        {"n": NOTES, "a": PROSE}, ["--data", "@/n", "--same-floors", "@/a"], "@/a\tNotes\n"),
    "UTF-16 with a byte-order mark is decoded; without one it is binary": ({
        "t/le": utf16(words("beta", 10), "le"), "t/be": utf16(words("beta", 10), "be"),
        "t/nobom": utf16(words("beta", 10), "le", bom=False),
        # A surrogate pair, a lone surrogate and an odd last byte decode without harm.
        "t/odd": utf16(words("alpha", 10), "le") + b"\x3d\xd8\x00\xde\x00\xdcx"},
        ["--data", "@/io/data.json", "@/t"], "@/t/be\tBeta\n@/t/le\tBeta\n@/t/odd\tAlpha\n"),
    "--version": ({}, ["--version"], f"lingomat {os.environ.get('LINGOMAT_VERSION')}\n"),
}


@pytest.mark.parametrize("files, args, out, errors", [(c + ((),))[:4] for c in CASES.values()], ids=CASES)
def test_answers(scratch, files, args, out, errors):
    for name, content in files.items():
        if name != "<stdin>":
            scratch.write(name, content)
    done = scratch.run(*args, stdin=files.get("<stdin>", ""))
    assert (done.returncode, done.out) == (1 if errors else 0, scratch.at(out)), done.err
    assert all(scratch.at(error) in done.err for error in errors) and (errors or not done.err)


# Each fails with status 2, printing nothing but an error that names the problem.
USAGE_ERRORS = [
    # The shared option parser's checks, as this tool shows them.
    (["--max-bytes", "-1"], "--max-bytes"), (["--min-score", "nan"], "--min-score"), (["--frobnicate"], "--frobnicate"),
    (["-j", "0"], "--jobs"), (["--only", ""], "--only"),
    (["--exclude", ""], "--exclude"), (["--name", "x.al"], "--name"), (["--explain", "--summary"], "--summary"),
    (["-0", "--explain"], "-0"), (["--list-languages"], "--list-languages"), (["-"], "'-'"),
    (["--only", "beta"], "unknown language 'beta' for --only; did you mean 'Beta'?"),
    (["--only", "Fortran"], "unknown language 'Fortran' for --only (--list-languages"),
    (["--files-from", "@/missing"], "cannot read --files-from @/missing: No such file"),
    (["--files-from", "@/io"], "cannot read --files-from @/io: Is a directory\n"),
] + [(["--data", path], f"{status}: data file '{path}': ") for path, status in [
    ("@/io/none.json", "File I/O"), ("@/io", "File I/O"), ("@/io/bad.json", "Unable to process JSON"),
    ("@/io/partial.json", "Unable to process JSON")]]


@pytest.mark.parametrize("args, named", USAGE_ERRORS)
def test_usage_errors(scratch, args, named):
    scratch.write("io/bad.json", '{"filenames": ')
    scratch.write("io/partial.json", '{"filenames": {}}')
    done = scratch.run(*args, "-" if args == ["-"] else "@/x.al")
    assert (done.returncode, done.out, done.err[:10]) == (2, "", "lingomat: "), done.err
    assert scratch.at(named) in done.err


def test_no_path_or_a_missing_value_is_a_usage_error_and_help_is_not(scratch):
    for args in ([], ["--files-from", "-", "-"], ["@/x", "--data"]):
        assert scratch.run(*args).returncode == 2
    done = scratch.run("--help")
    assert (done.returncode, done.err, done.out[:15]) == (0, "", "Usage: lingomat")


def test_devices_and_fifos_are_refused_without_being_read(scratch):
    fifo, link = scratch.at("@/fifo.al"), scratch.write("zero.al", "->/dev/zero")
    os.mkfifo(fifo)
    done = scratch.run("/dev/zero", "/dev/null", scratch.write("good.al"), fifo, link)
    assert (done.returncode, done.out) == (1, scratch.at("@/good.al\tAlpha\n"))
    for refused in ("/dev/zero", "/dev/null", fifo, link):
        assert f"lingomat: {refused}: not a regular file\n" in done.err
    # Standard input is a stream, whatever it is connected to.
    assert scratch.run("--name", "Alphafile", "-").out == "-\tAlpha\n"


# Folders are opened relative to their parent, since the whole path is too long for the system
# calls that take one; a link to a folder is not followed, however deep.
def test_walks_paths_longer_than_path_max_and_stays_off_links_to_folders(scratch):
    scratch.write("outside/secret.al")
    scratch.write("t/top.al")
    os.symlink(scratch.at("@/outside"), scratch.at("@/t/link"))
    folder, deep = os.open(scratch.at("@/t"), os.O_RDONLY), scratch.at("@/t")
    for _ in range(25):
        os.mkdir("d" * 200, dir_fd=folder)
        parent, folder = folder, os.open("d" * 200, os.O_RDONLY, dir_fd=folder)
        os.close(parent)
        deep += "/" + "d" * 200
    os.close(os.open("deep.al", os.O_WRONLY | os.O_CREAT, dir_fd=folder))
    os.symlink(scratch.at("@/outside"), "deeplink", dir_fd=folder)
    os.close(folder)
    assert len(deep) > os.pathconf("/", "PC_PATH_MAX")
    assert scratch.run("@/t").out == deep + "/deep.al\tAlpha\n" + scratch.at("@/t/top.al\tAlpha\n")


def test_an_install_moved_elsewhere_finds_its_data_file_and_no_other(scratch):
    binary = scratch.at("@/prefix/" + os.environ["LINGOMAT_CLI_INSTALLED_BINARY"])
    os.makedirs(os.path.dirname(binary))
    shutil.copy(TOOL, binary)
    if not os.path.exists(os.environ["LINGOMAT_INSTALLED_DATA"]):
        # Without one beside it, a copy neither reads the source tree's data nor names it.
        done = scratch.run("@/x", tool=binary)
        assert (done.returncode, done.out) == (2, "") and "no data file found" in done.err
        assert os.environ["LINGOMAT_SOURCE_TREE_DATA"] not in done.err
    beside = os.path.join(os.path.dirname(binary), os.environ["LINGOMAT_CLI_DATA_FROM_BINDIR"])
    os.makedirs(os.path.dirname(os.path.normpath(beside)))
    shutil.copy(scratch.data, os.path.normpath(beside))
    assert scratch.run(scratch.write("Alphafile"), tool=binary).out == scratch.at("@/Alphafile\tAlpha\n")


def test_output_that_cannot_be_written_is_status_one(scratch):
    with open("/dev/full", "wb") as full:
        done = scratch.run(scratch.write("x.al"), stdout=full)
    assert done.returncode == 1 and "lingomat: cannot write the output: No space left on device" in done.err


def test_json_lines(scratch):
    files = {"x.al": "Alpha", "notes.zz": None, 'we"ird\\name\t.al': "Alpha", "ok\u00e9.al": "Alpha",
             # Three lengths of a name that is not UTF-8, so that every padding comes up.
             "caf\udce9.al": "Alpha", "caf\udce9x.al": "Alpha", "caf\udce9xy.al": "Alpha"}
    for name in files:
        scratch.write("t/" + name, "hello\n" if name == "notes.zz" else HI)
    by_path = {}
    for record in scratch.json_lines("@/t"):
        path = record["path"]
        if "path_base64" in record:  # a name that is not UTF-8: readable, and its exact bytes
            path = os.fsdecode(base64.b64decode(record.pop("path_base64")))
            assert record["path"] == path.replace("\udce9", "\ufffd")
        assert set(record) == {"path", "language"}
        by_path[path] = record["language"]
    assert by_path == {scratch.at("@/t/" + name): language for name, language in files.items()}


def test_explanations(scratch):
    [record] = scratch.json_lines("--explain", scratch.write("x.al", B50))
    ranking = record["evidence"].pop("ranking")
    # Among name candidates the floors do not apply.
    assert record == {"path": scratch.at("@/x.al"), "language": "Beta", "evidence": {
        "filename": {"name": "x.al", "languages": []}, "shebang": {"interpreter": None, "languages": []},
        "extension": {"extension": ".al", "languages": ["Alpha", "Beta"]}, "candidates": ["Alpha", "Beta"],
        "tokens": 50, "min_tokens": 1, "min_score_per_token": 0.0, "decision": "classifier"}}
    assert [(r["language"], r["above_floor"]) for r in ranking] == [("Beta", True), ("Alpha", True)]
    assert ranking[0]["score"] > ranking[1]["score"] and ranking[0]["score_per_token"] == ranking[0]["score"] / 50
    # Beta scores about -5.3 per token in Alpha's text: below a floor of -1.
    [y] = scratch.json_lines("--explain", "--only", "Beta", "--min-score", "-1", scratch.write("y", A50))
    assert (y["language"], y["evidence"]["decision"], y["evidence"]["min_score_per_token"]) == (None, "none", -1)
    assert [(r["language"], r["above_floor"]) for r in y["evidence"]["ranking"]] == [("Beta", False)]
    done = scratch.run("--explain", scratch.write("Alphafile", " \n"))
    assert done.out.startswith(scratch.at("@/Alphafile\tAlpha\n  filename     Alphafile: Alpha\n"))
    assert "too few tokens" in done.out and "decision     first candidate\n" in done.out


def test_summary_totals_bytes_per_language_biggest_first(scratch):
    for name, text in [("a.be", B50), ("b.be", B50), ("sub/c.al", words("alpha", 100)), ("d.zz", "x\n")]:
        scratch.write("t/" + name, text)
    rows = [line.split() for line in scratch.run("--summary", "@/t").out.splitlines()]
    assert rows[1:] == [["Alpha", "1", "600", "54.45%"], ["Beta", "2", "500", "45.37%"],
                        ["(unidentified)", "1", "2", "0.18%"], ["total", "4", "1102", "100.00%"]]
    shares = scratch.json_lines("--summary", "@/t")
    assert [(r["language"], r["files"], r["bytes"]) for r in shares] == [("Alpha", 1, 600), ("Beta", 2, 500), (None, 1, 2)]
    assert sum(r["share"] for r in shares) == pytest.approx(1.0, abs=1e-12)


# Only a prefix of a large input is read, yet the answer is the one the library gives for the
# whole input, from a file, a pipe or a redirection.
@pytest.mark.parametrize("how", ["file", "pipe", "redirect"])
def test_large_inputs_answer_as_the_whole_text(scratch, how):
    def answer(path):
        if how == "file":
            return scratch.run(path).out[len(path):]
        tool = f'"{TOOL}" --data "{scratch.data}" {" ".join(FLOORS)} -'
        script = f'cat "$0" | {tool}' if how == "pipe" else f'{tool} < "$0"'
        return subprocess.run(["sh", "-c", script, path], capture_output=True, text=True, timeout=60).stdout[1:]

    # The opening quote starts a string; whether it is closed decides whether the words after
    # it are tokens, and the closing quote lies past the in-memory part of a stream.
    head = '"' + words("beta", 60) + " " * (17 << 20)
    assert answer(scratch.write("open", head + "\n")) == "\tBeta\n"
    assert answer(scratch.write("closed", head + '"\n')) == "\t\n"
    sparse = scratch.write("sparse", words("alpha", 60))
    os.truncate(sparse, 64 << 20)
    assert answer(sparse) == "\tAlpha\n"


def test_man_pages_carry_every_option_of_the_help():
    helps = glob.glob(os.path.join(os.environ["LINGOMAT_MAN_DIR"], "*.1.help"))
    assert len(helps) == 4
    for help_text in helps:
        # The roff with its escapes undone; a fresh machine may have no man program.
        page = re.sub(r"\\f[BRI]", "", open(help_text[:-5]).read().replace("\\-", "-"))
        assert [o for o in set(re.findall(r"--[a-z][a-z-]*", open(help_text).read())) if o not in page] == []
        if help_text.endswith("/lingomat.1.help"):  # says where the data file is looked for
            assert "\n.SH FILES\n" in page and "\n.SH EXAMPLES\n" in page


# Races against a thread that changes what the tool reads, 100 runs each: the slow tier's.
def race(command, change, went_wrong):
    stop = threading.Event()
    changer = threading.Thread(target=lambda: [change() for _ in iter(stop.is_set, True)])  # until stopped
    changer.start()
    try:
        runs = [subprocess.run(command, capture_output=True, timeout=120) for _ in range(100)]
    finally:
        stop.set()
        changer.join()
    assert [(run.returncode, run.stdout[:200]) for run in runs if went_wrong(run)] == []


def test_race_a_folder_swapped_for_a_link_outside_is_never_followed(tmp_path):
    # The outside files, of the same names and one found only there, start "#!/usr/bin/python"
    # where the inside ones start "#!/bin/sh": a file read through the link shows up as Python.
    inside, outside = tmp_path / "tree" / "sub", tmp_path / "outside"
    for folder, first_line in ((inside, b"#!/bin/sh\n"), (outside, b"#!/usr/bin/python\n")):
        folder.mkdir(parents=True)
        for i in range(200):
            (folder / f"f{i}").write_bytes(first_line + b"echo\n")
    (outside / "outside_only").write_bytes(b"#!/usr/bin/python\n")

    def swap():  # each state lasts long enough for a walk to list the folder in one, open in the other
        os.rename(inside, f"{inside}.parked")
        os.symlink(outside, inside)
        time.sleep(0.001)
        os.unlink(inside)
        os.rename(f"{inside}.parked", inside)
        time.sleep(0.001)

    race([TOOL, "--data", SHIPPED, "-j", "2", str(tmp_path / "tree")], swap,
         lambda run: b"outside_only" in run.stdout or b"\tPython\n" in run.stdout)


def test_race_a_file_truncated_while_read_never_kills_the_tool(tmp_path):
    path, content = tmp_path / "changing.txt", b'"' + b"word " * (2 << 20)  # an unclosed string: read to the end

    def churn():  # a mapped file that shrinks would kill its reader with SIGBUS
        with open(path, "r+b") as f:
            f.truncate(1000)
        time.sleep(0.005)
        path.write_bytes(content)
        time.sleep(0.005)

    path.write_bytes(content)
    race([TOOL, "--data", SHIPPED, "--max-bytes", "0", str(path)], churn,
         lambda run: run.returncode < 0 or str(path).encode() not in run.stdout)
