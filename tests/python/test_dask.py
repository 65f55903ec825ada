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
# Fast options for the shipped data file: the relaxed floors give answers to short files too.
OPTIONS = {"min_tokens": 1, "min_score": 0.0}


def sample_paths(limit=120):
    paths = []
    for folder in ("src", "tools", "tests", "python", "scripts", "docs", "plugin"):
        for directory, _, files in os.walk(os.path.join(ROOT, folder)):
            paths.extend(os.path.join(directory, name) for name in sorted(files)
                         if "__pycache__" not in directory)
    return sorted(paths)[:limit]


@pytest.fixture(scope="module")
def client():
    # Two worker processes with two threads each: tasks share a process's engine.
    with LocalCluster(n_workers=2, threads_per_worker=2, processes=True, dashboard_address=None,
                      worker_dashboard_address=None) as cluster, Client(cluster) as c:
        yield c


@pytest.fixture(scope="module")
def expected():
    paths = sample_paths()
    with lingomat.Engine(**OPTIONS) as engine:
        return paths, [engine.identify_file(p) for p in paths]


def test_bag_of_paths_matches_one_process_and_loads_one_engine_per_worker(client, expected):
    paths, languages = expected
    bag = db.from_sequence(paths, npartitions=12)
    assert lingomat.dask.identify_paths(bag, **OPTIONS).compute() == languages
    assert len(set(languages)) > 3  # a meaningful sample, not one language throughout
    # Twelve tasks, yet no worker holds more than one engine (a worker may have had no task).
    per_worker = client.run(lingomat.dask.engines_loaded)
    assert len(per_worker) == 2
    assert set(per_worker.values()) <= {0, 1} and sum(per_worker.values()) >= 1


def test_dataframe_of_paths_and_of_texts(client, expected):
    paths, languages = expected
    frame = pandas.DataFrame({"path": paths,
                              "name": [os.path.basename(p) for p in paths],
                              "content": [open(p, "rb").read() for p in paths]})
    ddf = dd.from_pandas(frame, npartitions=6)
    assert lingomat.dask.identify_paths(ddf, column="path", **OPTIONS).compute().tolist() == languages
    for names in ("name", "path"):  # a path counts by its file name, as in identify()
        by_text = lingomat.dask.identify_texts(ddf, text="content", filename=names, **OPTIONS)
        assert by_text.compute().tolist() == languages


def test_unreadable_files(client, tmp_path):
    missing = str(tmp_path / "missing.c")
    bag = db.from_sequence([missing], npartitions=1)
    assert lingomat.dask.identify_paths(bag, errors="none", **OPTIONS).compute() == [None]
    with pytest.raises(FileNotFoundError):
        lingomat.dask.identify_paths(bag, **OPTIONS).compute()


def test_partitions_for_keeps_every_worker_busy_with_big_partitions():
    assert lingomat.dask.partitions_for(100, 2) == 4
    assert lingomat.dask.partitions_for(3, 2) == 3
    assert lingomat.dask.partitions_for(10**6, 2) == 250


def test_bad_arguments_fail_before_any_work():
    frame = dd.from_pandas(pandas.DataFrame({"path": ["a"]}), npartitions=1)
    with pytest.raises(ValueError, match="column"):
        lingomat.dask.identify_paths(frame)
    with pytest.raises(KeyError, match="text"):
        lingomat.dask.identify_texts(frame, text="text")
    with pytest.raises(ValueError, match="errors"):
        lingomat.dask.identify_paths(frame["path"], errors="skip")
