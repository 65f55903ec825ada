"""lingomat.dask on a LocalCluster of two worker processes: the same answers as one process,
and one engine per worker, however many tasks it runs."""

import os

import pytest

dask = pytest.importorskip("dask")  # Debian's python3-dask, installed by scripts/install-deps.sh
import dask.bag as db  # noqa: E402
import dask.dataframe as dd  # noqa: E402
import pandas  # noqa: E402
from distributed import Client, LocalCluster  # noqa: E402

import lingomat  # noqa: E402
import lingomat.dask  # noqa: E402

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
OPTIONS = {"min_tokens": 1, "min_score": 0.0}  # answers for short files too


@pytest.fixture(scope="module")
def client():
    # Two worker processes with two threads each: tasks share a process's engine.
    with LocalCluster(n_workers=2, threads_per_worker=2, processes=True, dashboard_address=None,
                      worker_dashboard_address=None) as cluster, Client(cluster) as c:
        yield c


def test_paths_and_texts_answer_as_one_process_with_one_engine_per_worker(client):
    paths = sorted(os.path.join(folder, name) for top in ("src", "python", "scripts")
                   for folder, _, names in os.walk(os.path.join(ROOT, top)) for name in names
                   if "__pycache__" not in folder)[:120]
    with lingomat.Engine(**OPTIONS) as engine:
        languages = [engine.identify_file(p) for p in paths]
    assert len(set(languages)) > 3  # a meaningful sample, not one language throughout
    bag = db.from_sequence(paths, npartitions=12)
    assert lingomat.dask.identify_paths(bag, **OPTIONS).compute() == languages
    # Twelve tasks, yet no worker holds more than one engine (a worker may have had no task).
    per_worker = client.run(lingomat.dask.engines_loaded)
    assert len(per_worker) == 2
    assert set(per_worker.values()) <= {0, 1} and sum(per_worker.values()) >= 1
    names = dd.from_pandas(pandas.DataFrame({"name": [os.path.basename(p) for p in paths],
                                             "content": [open(p, "rb").read() for p in paths]}), npartitions=6)
    by_text = lingomat.dask.identify_texts(names, text="content", filename="name", **OPTIONS)
    assert by_text.compute().tolist() == languages
    missing = db.from_sequence([os.path.join(ROOT, "missing.c")], npartitions=1)
    assert lingomat.dask.identify_paths(missing, errors="none", **OPTIONS).compute() == [None]
