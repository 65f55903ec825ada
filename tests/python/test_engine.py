"""The Python engine against the built library: answers, options, errors, threads, lifetime."""

import ctypes
import threading

import pytest

import lingomat
from lingomat import errors

C_TEXT = "#include <stdio.h>\nint main(void) {\n  printf(\"hi\\n\");\n  return 0;\n}\n"


class TestAnswers:
    def test_names_by_file_name_and_by_content(self, engine):
        assert engine.identify(C_TEXT, filename="hello.c") == "C"
        assert engine.identify("import os\nprint(os.getcwd())\n") == "Python"

    def test_str_bytes_bytearray_and_memoryview_are_the_same_text(self, engine):
        raw = C_TEXT.encode()
        answers = {engine.identify(t, "x.h") for t in (C_TEXT, raw, bytearray(raw), memoryview(raw))}
        assert len(answers) == 1

    def test_nul_bytes_inside_the_text_are_kept(self, tiny_data):
        # The buffer is length-counted: tokens after a NUL still count.
        with lingomat.Engine(data=tiny_data, min_tokens=1, min_score=0) as tiny:
            assert tiny.identify(b"\0 beta beta beta") == "Beta"

    def test_no_answer_is_none(self, tiny_data):
        with lingomat.Engine(data=tiny_data) as tiny:
            assert tiny.identify("   \n") is None
            assert tiny.identify("", filename=None) is None

    def test_file_name_as_bytes_or_path(self, tiny_data, tmp_path):
        with lingomat.Engine(data=tiny_data) as tiny:
            assert tiny.identify("", filename=b"Rulesfile") == "Beta"
            # A path counts by its last component, as the tool names files.
            assert tiny.identify("", filename=tmp_path / "Rulesfile") == "Beta"
            assert tiny.identify("", filename="/a/b/Rulesfile") == "Beta"
            (tmp_path / "rules.be").write_text("x")
            assert tiny.identify_file(tmp_path / "rules.be") == "Beta"

    def test_classifier_decides_between_extension_candidates(self, tiny_data):
        with lingomat.Engine(data=tiny_data, min_tokens=1, min_score=0) as tiny:
            assert tiny.identify("alpha alpha common", "x.al") == "Alpha"
            assert tiny.identify("beta beta common", "x.al") == "Beta"

    def test_library_defaults_leave_short_texts_unanswered(self, data_file):
        # The C host's defaults: too few tokens for the classifier, and no name to go by.
        with lingomat.Engine(data=data_file) as strict:
            assert strict.identify("x = 1\n") is None


class TestOptions:
    def test_unknown_only_name_is_refused_with_the_closest_known_names(self, tiny_data, data_file):
        with pytest.raises(ValueError, match=r"^unknown language 'alpha' in only; did you mean "
                                             r"'Alpha'\?$"):
            lingomat.Engine(data=tiny_data, only=["Beta", "alpha"])
        with pytest.raises(ValueError, match="'python'.*did you mean 'Python'"):
            lingomat.Engine(data=data_file, only=["python"])

    def test_defaults_are_the_librarys(self, tiny_data):
        opts = lingomat._library.Options()
        lingomat._library.load_native().lingomatPyOptsInitWithDefaults(ctypes.byref(opts))
        with lingomat.Engine(data=tiny_data) as e:
            assert (e.max_bytes, e.max_tokens, e.min_tokens, e.min_score) == \
                (opts.maxScanBytes, opts.maxTokens, opts.minTokens, opts.minScorePerToken) == \
                (10240, 500, 40, -8.0)

    def test_only_restricts_the_answers(self, tiny_data):
        with lingomat.Engine(data=tiny_data, only=["Alpha"], min_tokens=1, min_score=0) as e:
            assert e.identify("beta beta common", "x.al") == "Alpha"
            assert e.only == ("Alpha",)
        with lingomat.Engine(data=tiny_data, only="Beta") as e:
            assert e.identify("", "x.al") == "Beta"

    @pytest.mark.parametrize("kwargs, error", [
        ({"max_bytes": -1}, ValueError),
        ({"max_tokens": 2**64}, ValueError),
        ({"min_tokens": 1.5}, TypeError),
        ({"min_tokens": True}, TypeError),
        ({"min_score": "low"}, TypeError),
        ({"min_score": float("nan")}, ValueError),
        ({"min_score": float("-inf")}, ValueError),
        ({"only": [3]}, TypeError),
        ({"only": [""]}, ValueError),
        ({"only": ["C\0"]}, ValueError),
        ({"data": "a\0b"}, ValueError),
    ])
    def test_absurd_options_are_refused_before_loading(self, tiny_data, kwargs, error):
        kwargs.setdefault("data", tiny_data)
        with pytest.raises(error):
            lingomat.Engine(**kwargs)

    def test_bad_text_and_file_name_types(self, engine):
        with pytest.raises(TypeError):
            engine.identify(42)
        with pytest.raises(ValueError):
            engine.identify("x", filename="a\0b")


class TestErrors:
    def test_missing_data_file_carries_status_message_and_reason(self, tmp_path):
        missing = tmp_path / "none.json"
        with pytest.raises(lingomat.LingomatError) as raised:
            lingomat.Engine(data=missing)
        assert raised.value.status == errors.FILE_IO
        assert str(raised.value) == f"File I/O: data file '{missing}': No such file or directory"

    @pytest.mark.parametrize("content", ["{not json", '{"filenames": {}}'])
    def test_malformed_data_file(self, tmp_path, content):
        bad = tmp_path / "bad.json"
        bad.write_text(content)
        with pytest.raises(lingomat.LingomatError, match=r"^Unable to process JSON: ") as raised:
            lingomat.Engine(data=bad)
        assert raised.value.status == errors.JSON

    def test_unloadable_library(self, tmp_path):
        with pytest.raises(OSError, match="cannot load the plug-in library"):
            lingomat.Engine(library=tmp_path / "nothing.so")

    def test_missing_default_data_file_names_where_it_looked(self, monkeypatch, tmp_path):
        monkeypatch.setenv("LINGOMAT_DATA", str(tmp_path / "gone.json"))
        with pytest.raises(FileNotFoundError, match="gone.json"):
            lingomat.Engine()


class TestLifetime:
    def test_context_manager_closes_and_close_is_idempotent(self, tiny_data):
        with lingomat.Engine(data=tiny_data) as e:
            assert not e.closed
        assert e.closed
        e.close()
        with pytest.raises(ValueError, match="closed"):
            e.identify("x")

    def test_default_data_file_is_found(self, data_file):
        with lingomat.Engine() as e:
            assert e.data == data_file

    def test_close_waits_for_identifications_in_flight(self, tiny_data):
        e = lingomat.Engine(data=tiny_data)
        started, release = threading.Event(), threading.Event()
        real = e._native

        class SlowLibrary:
            # Holds one identification inside the library until the test lets it go.
            def __getattr__(self, name):
                return getattr(real, name)

            def lingomatPyIdentify(self, *args):
                started.set()
                release.wait(5)
                return real.lingomatPyIdentify(*args)

        e._native = SlowLibrary()
        answers = []
        worker = threading.Thread(target=lambda: answers.append(e.identify("", "x.be")))
        worker.start()
        assert started.wait(5)
        closer = threading.Thread(target=e.close)
        closer.start()
        closer.join(0.2)
        assert closer.is_alive(), "close() freed the engine under a running identification"
        release.set()
        worker.join(5)
        closer.join(5)
        assert answers == ["Beta"] and e.closed


def test_many_threads_share_one_engine(engine):
    texts = [(C_TEXT, "a.c"), ("import os\nprint(os.getcwd())\n", None),
             ("#!/bin/sh\necho hi\n", None), ("<html><body></body></html>\n", "i.html")]
    expected = [engine.identify(t, n) for t, n in texts]
    mismatches = []

    def work():
        for _ in range(50):
            got = [engine.identify(t, n) for t, n in texts]
            if got != expected:
                mismatches.append(got)

    threads = [threading.Thread(target=work) for _ in range(8)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    assert mismatches == []


def test_options_record_matches_the_c_layout():
    # Seven 8-byte fields without padding: a mismatch would silently corrupt every option.
    assert ctypes.sizeof(lingomat._library.Options) == 56
