"""Inputs and process events that used to hang the package: each case runs in a child
interpreter with a deadline, so a regression fails instead of hanging the test run."""

import os
import subprocess
import sys
import textwrap

import pytest

PACKAGE = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", "..", "python"))
# A child forked while another thread identifies, and while another holds the lock of the
# per-process engines, may still close its engine and load one.
FORK_MID_IDENTIFICATION = """
import os, sys, threading, lingomat, lingomat.dask
engine = lingomat.Engine(data=sys.argv[1])
inside, release, real = threading.Event(), threading.Event(), engine._native


class Held:  # keeps an identification inside the library until released
    def __getattr__(self, name):
        return getattr(real, name)

    def lingomatPyIdentify(self, *args):
        inside.set()
        release.wait(30)
        return real.lingomatPyIdentify(*args)


def close_engine():
    engine._native = real
    engine.close()  # the identification in flight exists only in the parent
    return engine.closed


def load_engine():
    return lingomat.dask.engine_for(data=sys.argv[1])


engine._native = Held()
worker = threading.Thread(target=engine.identify, args=("x",))
worker.start()
inside.wait(30)
with lingomat.dask._engines_lock:
    pid = os.fork()
if pid == 0:
    os._exit(0 if globals()[sys.argv[2]]() else 1)
release.set()
worker.join()
print(os.waitpid(pid, 0)[1])
"""


def run_child(code, *args):  # in a fresh interpreter that imports this checkout's package
    done = subprocess.run([sys.executable, "-c", textwrap.dedent(code), *args], timeout=60,
                          env=dict(os.environ, PYTHONPATH=PACKAGE), capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return done.stdout


@pytest.mark.parametrize("library", ["", os.environ.get("LINGOMAT_TEST_PLUGIN")], ids=["package", "plug-in"])
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


@pytest.mark.parametrize("in_child", ["close_engine", "load_engine"])
def test_a_child_forked_mid_identification_carries_on(tiny_data, in_child):
    assert run_child(FORK_MID_IDENTIFICATION, tiny_data, in_child) == "0\n"
