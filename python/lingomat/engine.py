"""The identification engine: one loaded data file, shared by any number of threads."""

import ctypes
import os
import threading

from . import _library
from .errors import LingomatError, MEMORY, SUCCESS

# The library's defaults, so that a Python engine answers exactly like a C host's.
DEFAULT_MAX_BYTES = 10240
DEFAULT_MAX_TOKENS = 500
DEFAULT_MIN_TOKENS = 40
DEFAULT_MIN_SCORE = -8.0

_UINT64_MAX = 2**64 - 1


def _unsigned(name, value):
    if isinstance(value, bool) or not isinstance(value, int):
        raise TypeError(f"{name} must be an int, not {type(value).__name__}")
    if not 0 <= value <= _UINT64_MAX:
        raise ValueError(f"{name} must be between 0 and {_UINT64_MAX}, not {value}")
    return value


def _c_path(name, value):
    path = os.fsencode(value)
    if b"\0" in path:
        raise ValueError(f"{name} must not contain a NUL character")
    return path


def _language_names(only):
    if only is None:
        return []
    if isinstance(only, (str, bytes)):
        only = [only]
    names = []
    for name in only:
        if not isinstance(name, str):
            raise TypeError(f"only must hold language names (str), not {type(name).__name__}")
        encoded = name.encode("utf-8")
        if not encoded or b"\0" in encoded:
            raise ValueError(f"not a language name: {name!r}")
        names.append(encoded)
    return names


def _read_problem(path):
    """The reason `path` cannot be opened, as ": reason", or "" (the status does not say)."""
    try:
        with open(path, "rb"):
            return ""
    except OSError as error:
        return f": {error.strerror}"


def _text_bytes(text):
    if isinstance(text, str):
        return text.encode("utf-8", "surrogateescape")
    if isinstance(text, bytes):
        return text
    if isinstance(text, (bytearray, memoryview)):
        return bytes(text)
    raise TypeError(f"text must be str or bytes, not {type(text).__name__}")


class Engine:
    """Names the language of texts with one data file.

    Engine(data=None, max_bytes=10240, max_tokens=500, min_tokens=40, min_score=-8.0,
           only=None, library=None)

    `data` is the data file (default: the one installed with the library); `only` lists
    the only languages that may be answered. The engine never changes once created: any
    number of threads may call identify() at once (the library runs without the GIL).
    """

    def __init__(self, data=None, max_bytes=DEFAULT_MAX_BYTES, max_tokens=DEFAULT_MAX_TOKENS,
                 min_tokens=DEFAULT_MIN_TOKENS, min_score=DEFAULT_MIN_SCORE, only=None,
                 library=None):
        self._handle = ctypes.c_void_p()
        # Identifications in flight; close() waits for them before freeing the engine.
        self._in_flight = 0
        self._idle = threading.Condition()
        self._lib = _library.load_library(library)

        opts = _library.Options()
        self._lib.lingomatOptsInitWithDefaults(ctypes.byref(opts))
        self.data = os.fspath(data) if data is not None else _library.find_data_file(self._lib)
        opts.dataFile = _c_path("data", self.data)
        opts.maxScanBytes = _unsigned("max_bytes", max_bytes)
        opts.maxTokens = _unsigned("max_tokens", max_tokens)
        opts.minTokens = _unsigned("min_tokens", min_tokens)
        if isinstance(min_score, bool) or not isinstance(min_score, (int, float)):
            raise TypeError(f"min_score must be a number, not {type(min_score).__name__}")
        opts.minScorePerToken = float(min_score)
        names = _language_names(only)
        self.only = tuple(name.decode("utf-8") for name in names)
        restrictions = (ctypes.c_char_p * len(names))(*names)
        if names:
            opts.restrictions = ctypes.cast(restrictions, ctypes.POINTER(ctypes.c_char_p))
            opts.restrictionCount = len(names)

        status = self._lib.lingomatCreate(ctypes.byref(self._handle), ctypes.byref(opts))
        if status != SUCCESS:
            raise self._error(status, f"data file '{self.data}'" + _read_problem(self.data))

    def _error(self, status, detail):
        message = self._lib.lingomatPlugInGetErrorString(status).decode("utf-8")
        if status == MEMORY:
            return MemoryError(f"{message}: {detail}")
        return LingomatError(f"{message}: {detail}", status)

    def identify(self, text, filename=None):
        """The language of `text` (str, taken as UTF-8, or bytes), or None.

        `filename` (str, bytes or a path object) lets the file name and the extension choose
        the candidates. It is used as given: pass the file's name, not a path to it, since
        exact file names ("Makefile") are matched whole."""
        code = _text_bytes(text)
        name = None if filename is None else _c_path("filename", filename)
        language = ctypes.c_char_p()
        with self._idle:
            if not self._handle:
                raise ValueError("identify() on a closed lingomat.Engine")
            self._in_flight += 1
        try:
            status = self._lib.lingomatIdentifyCode(self._handle, code, len(code), name,
                                                    ctypes.byref(language))
        finally:
            with self._idle:
                self._in_flight -= 1
                if self._in_flight == 0:
                    self._idle.notify_all()
        if status != SUCCESS:
            raise self._error(status, "identification failed")
        return None if language.value is None else language.value.decode("utf-8")

    def identify_file(self, path, filename=None):
        """The language of the file at `path`, named by its own file name unless `filename`
        is given."""
        with open(path, "rb") as stream:
            content = stream.read()
        return self.identify(content, os.path.basename(os.fspath(path)) if filename is None
                             else filename)

    def close(self):
        """Frees the engine once the identifications in flight are done; idempotent."""
        with self._idle:
            while self._in_flight:
                self._idle.wait()
            if self._handle:
                self._lib.lingomatDestroy(ctypes.byref(self._handle))

    @property
    def closed(self):
        return not self._handle

    def __enter__(self):
        return self

    def __exit__(self, *exc_info):
        self.close()

    def __del__(self):
        # A half-built engine (the library failed to load) has nothing to free.
        if getattr(self, "_lib", None) is not None and getattr(self, "_handle", None):
            self.close()

    def __repr__(self):
        state = "closed" if self.closed else "open"
        return f"<lingomat.Engine {state} data={self.data!r}>"
