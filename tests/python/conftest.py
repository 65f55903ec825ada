"""This checkout's package against the native library built in build/, unless ctest names
another (LINGOMAT_NATIVE, LINGOMAT_DATA, LINGOMAT_TOOL, LINGOMAT_TEST_PLUGIN)."""

import json
import os
import sys

import pytest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
sys.path.insert(0, os.path.join(ROOT, "python"))
os.environ.setdefault("LINGOMAT_NATIVE", f"{ROOT}/build/python/native/_lingomat_native.so")
os.environ.setdefault("LINGOMAT_DATA", os.path.join(ROOT, "data", "lingomat.json"))
os.environ.setdefault("LINGOMAT_TEST_PLUGIN", f"{ROOT}/build/plugin/liblingomatplugin.so.1")
# The package's own engine is what these tests exercise; a plug-in only where asked for.
os.environ.pop("LINGOMAT_LIBRARY", None)

@pytest.fixture(scope="session")
def data_file():
    return os.environ["LINGOMAT_DATA"]


@pytest.fixture
def tiny_data(tmp_path):
    """Two languages, fast to load, whose answers are easy to predict."""
    (tmp_path / "tiny.json").write_text(json.dumps({
        "filenames": {"Beta": ["Rulesfile"]}, "interpreters": {"Beta": ["betash"]},
        "extnames": {"Alpha": [".al"], "Beta": [".be", ".al"]}, "languages": {"Alpha": 2, "Beta": 2},
        "language_tokens": {"Alpha": 8, "Beta": 8}, "tokens_total": 16, "languages_total": 4,
        "tokens": {"Alpha": {"alpha": 6, "common": 2}, "Beta": {"beta": 6, "common": 2}}}))
    return str(tmp_path / "tiny.json")
