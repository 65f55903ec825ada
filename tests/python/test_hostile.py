"""Inputs and process events that used to hang the package: each case runs in a child
interpreter with a deadline, so a regression fails instead of hanging the test run."""

import os
import subprocess
import sys
import textwrap

import pytest

PACKAGE = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", "..", "python"))


def run_child(code, *args):
    """Runs `code` in a fresh interpreter that imports this checkout's package."""
    done = subprocess.run([sys.executable, "-c", textwrap.dedent(code), *args], timeout=60,
                          env=dict(os.environ, PYTHONPATH=PACKAGE), capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return done.stdout


@pytest.mark.parametrize("library", ["", os.environ.get("LINGOMAT_TEST_PLUGIN")],
                         ids=["package", "plug-in"])
def test_a_fifo_as_data_file_is_refused_without_blocking(tmp_path, library):
    fifo = tmp_path / "data.json"
    os.mkfifo(fifo)
    out = run_child("""
        import sys, lingomat
        try:
            lingomat.Engine(data=sys.argv[1], library=sys.argv[2] or None)
        except lingomat.LingomatError as error:
            print(error.status, error)
        """, str(fifo), library)
    assert out == f"-4 File I/O: data file '{fifo}': not a regular file\n"


def test_close_in_a_child_forked_mid_identification_returns(tiny_data):
    out = run_child("""
        import os, sys, threading, lingomat
        engine = lingomat.Engine(data=sys.argv[1])
        inside, release = threading.Event(), threading.Event()
        real = engine._native

        class Held:
            def __getattr__(self, name):
                return getattr(real, name)

            def lingomatPyIdentify(self, *args):
                inside.set()
                release.wait(30)
                return real.lingomatPyIdentify(*args)

        engine._native = Held()
        worker = threading.Thread(target=engine.identify, args=("x",))
        worker.start()
        inside.wait(30)
        pid = os.fork()
        if pid == 0:
            engine._native = real
            engine.close()  # the identification in flight exists only in the parent
            os._exit(0 if engine.closed else 1)
        _, status = os.waitpid(pid, 0)
        release.set()
        worker.join()
        print(status)
        """, tiny_data)
    assert out == "0\n"


def test_engine_lock_is_free_in_a_child_forked_mid_load(tiny_data):
    out = run_child("""
        import os, sys, lingomat.dask
        with lingomat.dask._engines_lock:  # as if another thread were loading an engine
            pid = os.fork()
            if pid == 0:
                os._exit(0 if lingomat.dask.engine_for(data=sys.argv[1]) else 1)
        print(os.waitpid(pid, 0)[1])
        """, tiny_data)
    assert out == "0\n"
