"""The package answers like the command-line tool: on this repository's own files, on UTF-16,
on binary files, and in the explanation and ranking it gives."""

import json
import os
import subprocess

import pytest

import lingomat

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
TOOL = os.environ.get("LINGOMAT_TOOL", os.path.join(ROOT, "build", "tools", "cli", "lingomat"))
# The library's floors, applied as the library applies them.
STRICT = ["--same-floors", "--min-tokens", "40", "--min-score", "-8"]


def tool_records(*args):
    done = subprocess.run([TOOL, "--json", *args], capture_output=True, check=True)
    return [json.loads(line) for line in done.stdout.splitlines()]


@pytest.fixture(scope="module")
def strict():
    with lingomat.Engine() as engine:
        yield engine


def utf16_tree(tmp_path):
    """Python, C and shell sources as UTF-16 (both byte orders), one long enough that the
    decoding stops early, and binary files the walk skips."""
    python = ("import os\n\n\nclass Lister:\n    def __init__(self, root):\n        self.root = root\n\n"
              "    def names(self):\n        try:\n            return sorted(os.listdir(self.root))\n"
              "        except OSError:\n            return []\n") * 8
    c_source = "/* a comment that runs on */\n#include <stdio.h>\nint main(void) { return 0; }\n"
    files = {
        "le.py.txt": python.encode("utf-16-le"),
        "be_script": ("#!/bin/sh\n" + "echo hi\n" * 40).encode("utf-16-be"),
        "long.c": (c_source * 2000).encode("utf-16-le"),
        "comment_to_the_end.c": ("int x;\n/*" + "word " * 6000 + "*/\n").encode("utf-16-le"),
    }
    for name, content in files.items():
        marker = b"\xff\xfe" if not name.startswith("be") else b"\xfe\xff"
        (tmp_path / name).write_bytes(marker + content)
    (tmp_path / "data.gz").write_bytes(b"\x1f\x8b\x08\x00" + bytes(range(256)) * 4)
    (tmp_path / "late_nul.c").write_bytes(b"int main;\n" * 100 + b"\0")
    return tmp_path


def test_same_answers_as_the_tool_on_repository_files_utf16_and_binary(strict, tmp_path):
    trees = [os.path.join(ROOT, folder) for folder in ("src", "tools", "tests", "python", "scripts", "docs")]
    trees.append(str(utf16_tree(tmp_path)))
    records = tool_records(*STRICT, "--exclude", "__pycache__", *trees)
    assert len(records) > 200
    paths = set()
    for record in records:
        paths.add(record["path"])
        assert strict.identify_file(record["path"]) == record["language"], record["path"]
    # The walk skipped the binary files; the package gives them no answer either.
    for skipped in ("data.gz", "late_nul.c"):
        assert str(tmp_path / skipped) not in paths
        assert strict.identify_file(tmp_path / skipped) is None
    assert strict.identify_file(tmp_path / "late_nul.c", skip_binary=False) == "C"
    assert strict.identify_file(tmp_path / "le.py.txt") == "Python"


@pytest.mark.parametrize("max_bytes", [0, 64, 10240])
def test_utf16_answers_as_the_whole_conversion(data_file, tmp_path, max_bytes):
    utf16_tree(tmp_path)
    options = {"data": data_file, "max_bytes": max_bytes, "min_tokens": 1, "min_score": 0.0}
    with lingomat.Engine(**options) as engine:
        for path in sorted(tmp_path.iterdir()):
            raw = path.read_bytes()
            if raw[:2] not in (b"\xff\xfe", b"\xfe\xff"):
                continue
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
    assert all(isinstance(score, float) for _, score in ranking)
    assert [score for _, score in ranking] == sorted((s for _, s in ranking), reverse=True)
    assert len({language for language, _ in ranking}) == len(ranking)
    assert strict.rank(content, path, limit=2) == ranking[:2]


def test_rank_is_empty_below_min_tokens_and_covers_every_language_without_a_name(strict):
    assert strict.rank("x = 1\n") == []
    text = "int main(void) { return 0; }\n" * 30
    everything = strict.rank(text)
    assert everything[0][0] == strict.identify(text)
    assert len(everything) == lingomat._library.load_native().lingomatPyLanguageCount(
        strict._handle)


def test_a_plugin_named_explicitly_identifies_and_the_package_still_ranks(data_file):
    plugin = os.environ.get("LINGOMAT_TEST_PLUGIN")
    if not plugin:
        pytest.skip("no plug-in built")
    text = ("import os\nprint(os.getcwd())\n" * 30).encode("utf-16")
    with lingomat.Engine(library=plugin) as engine, lingomat.Engine() as package:
        assert engine.data == data_file
        assert engine.identify(text, "/x/y/script") == package.identify(text, "script") == "Python"
        assert engine.rank(text) == package.rank(text)
