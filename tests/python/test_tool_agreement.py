"""The package answers like the command-line tool and the C plug-in: on this repository's own
files, on UTF-16, on binary files, and in the explanation and ranking it gives."""

import json
import os
import subprocess

import pytest

import lingomat

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
TOOL = os.environ.get("LINGOMAT_TOOL", os.path.join(ROOT, "build", "tools", "cli", "lingomat"))
STRICT = ["--same-floors", "--min-tokens", "40", "--min-score", "-8"]  # as the library applies them
PYTHON = ("import os\n\n\nclass Lister:\n    def __init__(self, root):\n        self.root = root\n\n"
          "    def names(self):\n        return sorted(os.listdir(self.root))\n") * 8
C_SOURCE = "/* a comment that runs on */\n#include <stdio.h>\nint main(void) { return 0; }\n"


def tool_records(*args):
    done = subprocess.run([TOOL, "--json", *args], capture_output=True, check=True)
    return [json.loads(line) for line in done.stdout.splitlines()]


@pytest.fixture(scope="module")
def strict():
    with lingomat.Engine() as engine:
        yield engine


@pytest.fixture
def utf16_tree(tmp_path):
    """Python, C and shell as UTF-16 in both byte orders, one long enough that the decoding
    stops early, and binary files the walk skips."""
    for name, text, order in [("le.py.txt", PYTHON, "le"), ("be_script", "#!/bin/sh\n" + "echo hi\n" * 40, "be"),
                              ("long.c", C_SOURCE * 2000, "le"), ("end.c", "int x;\n/*" + "word " * 6000 + "*/\n", "le")]:
        (tmp_path / name).write_bytes({"le": b"\xff\xfe", "be": b"\xfe\xff"}[order] + text.encode("utf-16-" + order))
    (tmp_path / "data.gz").write_bytes(b"\x1f\x8b\x08\x00" + bytes(range(256)) * 4)
    (tmp_path / "late_nul.c").write_bytes(b"int main;\n" * 100 + b"\0")
    return tmp_path


def test_same_answers_as_the_tool_on_repository_files_utf16_and_binary(strict, utf16_tree):
    trees = [os.path.join(ROOT, folder) for folder in ("src", "tools", "tests", "python", "docs")]
    records = tool_records(*STRICT, "--exclude", "__pycache__", *trees, str(utf16_tree))
    assert len(records) > 200
    for record in records:
        assert strict.identify_file(record["path"]) == record["language"], record["path"]
    # The walk skipped the binary files; the package gives them no answer either.
    for skipped in ("data.gz", "late_nul.c"):
        assert str(utf16_tree / skipped) not in {r["path"] for r in records}
        assert strict.identify_file(utf16_tree / skipped) is None
    assert strict.identify_file(utf16_tree / "late_nul.c", skip_binary=False) == "C"
    assert strict.identify_file(utf16_tree / "le.py.txt") == "Python"


@pytest.mark.parametrize("max_bytes", [0, 64, 10240])
def test_utf16_answers_as_the_whole_conversion(data_file, utf16_tree, max_bytes):
    with lingomat.Engine(data=data_file, max_bytes=max_bytes, min_tokens=1, min_score=0.0) as engine:
        for path in utf16_tree.iterdir():
            raw = path.read_bytes()
            if raw[:2] in (b"\xff\xfe", b"\xfe\xff"):
                whole = raw.decode("utf-16").encode("utf-8")
                assert engine.identify(raw, path.name) == engine.identify(whole, path.name), path
                assert engine.rank(raw, path.name) == engine.rank(whole, path.name), path


def test_explain_is_the_tools_record_and_rank_its_ranking(strict):
    path = os.path.join(ROOT, "python", "lingomat", "engine.py")
    [record] = tool_records(*STRICT, "--explain", path)
    content = open(path, "rb").read()
    assert strict.explain(content, path) == record
    ranking = strict.rank(content, filename=path)
    shown = record["evidence"]["ranking"]
    # Scores are the same doubles, not just close; the tool shows the first few.
    assert ranking[:len(shown)] == [(entry["language"], entry["score"]) for entry in shown]
    assert [score for _, score in ranking] == sorted((s for _, s in ranking), reverse=True)
    assert len({language for language, _ in ranking}) == len(ranking)
    assert strict.rank(content, path, limit=2) == ranking[:2]
    # Below the token floor nothing is ranked; without a name, every language is.
    assert strict.rank("x = 1\n") == []
    text = "int main(void) { return 0; }\n" * 30
    assert strict.rank(text)[0][0] == strict.identify(text)
    assert len(strict.rank(text)) == len(tool_records("--list-languages"))


def test_the_plugin_named_explicitly_answers_as_the_package(data_file):
    text = ("import os\nprint(os.getcwd())\n" * 30).encode("utf-16")
    with lingomat.Engine(library=os.environ["LINGOMAT_TEST_PLUGIN"]) as plugin, lingomat.Engine() as package:
        assert plugin.data == data_file
        assert plugin.identify(text, "/x/y/script") == package.identify(text, "script") == "Python"
        assert plugin.rank(text) == package.rank(text)
