"""The Python engine against the built library: answers, options, errors, threads, lifetime."""

import threading

import pytest

import lingomat
from lingomat import errors

def test_text_and_file_name_forms(tiny_data, tmp_path):
    with lingomat.Engine(data=tiny_data, min_tokens=1, min_score=0) as tiny:
        raw = b"beta common"  # str, bytes, bytearray and memoryview are the same text
        assert {tiny.identify(t, "x.al") for t in (raw.decode(), raw, bytearray(raw), memoryview(raw))} == {"Beta"}
        assert tiny.identify(b"\0 beta beta beta") == "Beta"  # tokens after a NUL count
        assert tiny.identify("alpha alpha common", "x.al") == "Alpha" and tiny.identify("   \n") is None
        # A file name as str, bytes or path counts by its last component.
        for name in (b"Rulesfile", tmp_path / "Rulesfile", "/a/b/Rulesfile"):
            assert tiny.identify("", filename=name) == "Beta"
        (tmp_path / "rules.be").write_text("x")
        assert tiny.identify_file(tmp_path / "rules.be") == "Beta"
        with pytest.raises(TypeError):
            tiny.identify(42)
        with pytest.raises(ValueError):
            tiny.identify("x", filename="a\0b")


def test_only_restricts_and_refuses_unknown_names_with_the_closest(tiny_data):
    with lingomat.Engine(data=tiny_data, only=["Alpha"], min_tokens=1, min_score=0) as e:
        assert e.identify("beta beta common", "x.al") == "Alpha" and e.only == ("Alpha",)
    with lingomat.Engine(data=tiny_data, only="Beta") as e:
        assert e.identify("", "x.al") == "Beta"
    with pytest.raises(ValueError, match=r"^unknown language 'alpha' in only; did you mean "
                                         r"'Alpha'\?$"):
        lingomat.Engine(data=tiny_data, only=["Beta", "alpha"])


@pytest.mark.parametrize("kwargs, error", [
    ({"max_bytes": -1}, ValueError), ({"max_tokens": 2**64}, ValueError),
    ({"min_tokens": 1.5}, TypeError), ({"min_tokens": True}, TypeError),
    ({"min_score": "low"}, TypeError), ({"min_score": float("nan")}, ValueError),
    ({"min_score": float("-inf")}, ValueError), ({"only": [3]}, TypeError),
    ({"only": [""]}, ValueError), ({"only": ["C\0"]}, ValueError), ({"data": "a\0b"}, ValueError),
])
def test_absurd_options_are_refused_before_loading(tiny_data, kwargs, error):
    with pytest.raises(error):
        lingomat.Engine(**dict({"data": tiny_data}, **kwargs))


@pytest.mark.parametrize("content, status, message", [
    (None, errors.FILE_IO, "File I/O: data file '{}': No such file or directory"),
    ("{not json", errors.JSON, "Unable to process JSON: data file '{}': "),
    ('{"filenames": {}}', errors.JSON, "Unable to process JSON: data file '{}': "),
])
def test_bad_data_files_raise_with_status_and_reason(tmp_path, content, status, message):
    bad = tmp_path / "bad.json"
    if content:
        bad.write_text(content)
    with pytest.raises(lingomat.LingomatError) as raised:
        lingomat.Engine(data=bad)
    assert raised.value.status == status and str(raised.value).startswith(message.format(bad))


def test_missing_library_or_default_data_file(monkeypatch, tmp_path):
    with pytest.raises(OSError, match="cannot load the plug-in library"):
        lingomat.Engine(library=tmp_path / "nothing.so")
    monkeypatch.setenv("LINGOMAT_DATA", str(tmp_path / "gone.json"))
    with pytest.raises(FileNotFoundError, match="gone.json"):
        lingomat.Engine()


def test_close_waits_for_identifications_in_flight_and_may_be_repeated(tiny_data):
    e = lingomat.Engine(data=tiny_data)
    started, release, real = threading.Event(), threading.Event(), e._native

    class SlowLibrary:  # holds one identification inside the library until the test lets it go
        def __getattr__(self, name):
            return getattr(real, name)

        def lingomatPyIdentify(self, *args):
            started.set()
            release.wait(5)
            return real.lingomatPyIdentify(*args)

    e._native, answers = SlowLibrary(), []
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
    e.close()
    with pytest.raises(ValueError, match="closed"):
        e.identify("x")
