"""Running lingomat inside Dask: one engine per worker process, shared by its threads.

    import dask.bag as db
    import lingomat.dask
    paths = db.from_sequence(list_of_paths, npartitions=64)
    languages = lingomat.dask.identify_paths(paths).compute()   # same order as the paths

An engine is built the first time a worker process needs one with given options, and then
kept for every later task of that process; tasks carry only the options, never an engine.
"""

import math
import os
import threading

from .engine import Engine

_engines = {}
_engines_lock = threading.Lock()


def _reset_after_fork():
    # A child forked while another thread was loading an engine must not inherit a held lock.
    global _engines_lock
    _engines_lock = threading.Lock()


os.register_at_fork(after_in_child=_reset_after_fork)

# Per task the scheduler costs milliseconds and a file well under one; partitions of a few
# thousand files keep that overhead small, and a few partitions per worker keep them all busy.
FILES_PER_PARTITION = 4000
PARTITIONS_PER_WORKER = 2


def partitions_for(file_count, workers):
    """A partition count for `file_count` files on `workers` worker processes: at least
    PARTITIONS_PER_WORKER per worker, and about FILES_PER_PARTITION files each beyond that."""
    wanted = max(workers * PARTITIONS_PER_WORKER, math.ceil(file_count / FILES_PER_PARTITION))
    return max(1, min(file_count, wanted))


def _key(options):
    only = options.get("only")
    if only is not None and not isinstance(only, (str, bytes)):
        options = dict(options, only=tuple(only))
    return tuple(sorted(options.items()))


def engine_for(**options):
    """This process's engine for `options` (Engine's keyword arguments), built once."""
    key = _key(options)
    with _engines_lock:
        engine = _engines.get(key)
        if engine is None:
            engine = Engine(**options)
            _engines[key] = engine
        return engine


def preload(**options):
    """Loads this process's engine ahead of the first task; `client.run(preload, **options)`
    does it on every worker, so that timings and the first tasks do not pay for it."""
    engine_for(**options)


def engines_loaded():
    """How many engines this process holds (one per distinct set of options)."""
    with _engines_lock:
        return len(_engines)


def _identify_path(engine, path, errors):
    try:
        return engine.identify_file(path)
    except OSError:
        if errors == "raise":
            raise
        return None


def _paths_partition(paths, options, errors):
    engine = engine_for(**options)
    return [_identify_path(engine, path, errors) for path in paths]


# Only dataframes reach the two below, and dask's dataframes need pandas anyway.
def _paths_series_partition(paths, options, errors):
    import pandas

    return pandas.Series(_paths_partition(paths, options, errors), index=paths.index,
                         name="language", dtype=object)


def _texts_partition(frame, text, filename, options):
    import pandas

    engine = engine_for(**options)
    names = frame[filename] if filename is not None else [None] * len(frame)

    def identified(content, name):
        # Bytes read from files are judged as the tool's walk judges them: binary is skipped.
        if isinstance(content, bytes) and engine.looks_binary(content):
            return None
        return engine.identify(content, name)

    languages = [identified(content, name) for content, name in zip(frame[text], names)]
    return pandas.Series(languages, index=frame.index, name="language", dtype=object)


def _check_errors(errors):
    if errors not in ("raise", "none"):
        raise ValueError(f"errors must be 'raise' or 'none', not {errors!r}")


def identify_paths(collection, column=None, errors="raise", **options):
    """The language of each file named in `collection`, in the same order.

    `collection` is a dask Bag of paths (gives a Bag), a dask Series of paths, or a dask
    DataFrame with the paths in `column` (both give a Series named "language"). Each file
    is read whole on the worker and named by its own file name; binary files give None, as
    the tool's walk skips them. No answer is None. `errors="none"` gives None for a file
    that cannot be read instead of failing the job. Size the partitions with partitions_for.
    Other keyword arguments are Engine's (data, max_bytes, min_tokens, min_score, only, ...).
    """
    _check_errors(errors)
    if hasattr(collection, "columns"):
        if column is None:
            raise ValueError("identify_paths on a DataFrame needs column=NAME of the paths")
        collection = collection[column]
    if hasattr(collection, "to_frame"):
        return collection.map_partitions(_paths_series_partition, options, errors,
                                         meta=("language", object))
    return collection.map_partitions(_paths_partition, options, errors)


def identify_texts(frame, text, filename=None, **options):
    """The language of each row's text in a dask DataFrame (say, read from Parquet): `text`
    names the column of contents (str or bytes), `filename` the optional column of file
    names or paths (a path counts by its last component). Gives a Series named "language",
    None where there is no answer; binary bytes give None, as the tool's walk skips them."""
    missing = [c for c in (text, filename) if c is not None and c not in frame.columns]
    if missing:
        raise KeyError(f"no column {missing[0]!r} in the DataFrame")
    return frame.map_partitions(_texts_partition, text, filename, options,
                                meta=("language", object))
