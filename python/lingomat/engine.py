"""The identification engine: one loaded data file, shared by any number of threads."""

import ctypes
import json
import math
import os
import stat
import threading
import weakref

from . import _library
from .errors import FILE_IO, LingomatError, MEMORY, SUCCESS

_UINT64_MAX = 2**64 - 1
_MESSAGE_BYTES = 1024


def _unsigned(name, value, default):
    if value is None:
        return default
    if isinstance(value, bool) or not isinstance(value, int):
        raise TypeError(f"{name} must be an int, not {type(value).__name__}")
    if not 0 <= value <= _UINT64_MAX:
        raise ValueError(f"{name} must be between 0 and {_UINT64_MAX}, not {value}")
    return value


def _score(value, default):
    if value is None:
        return default
    if isinstance(value, bool) or not isinstance(value, (int, float)):
        raise TypeError(f"min_score must be a number, not {type(value).__name__}")
    if not math.isfinite(value):
        raise ValueError(f"min_score must be a finite number, not {value}")
    return float(value)


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
    """The reason `path` cannot be read, as ": reason", or "". Never blocks: a FIFO is opened
    without waiting for a writer, and only a regular file counts."""
    try:
        fd = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
    except OSError as error:
        return f": {error.strerror}"
    try:
        return "" if stat.S_ISREG(os.fstat(fd).st_mode) else ": not a regular file"
    finally:
        os.close(fd)


def _text_bytes(text):
    if isinstance(text, str):
        return text.encode("utf-8", "surrogateescape")
    if isinstance(text, bytes):
        return text
    if isinstance(text, (bytearray, memoryview)):
        return bytes(text)
    raise TypeError(f"text must be str or bytes, not {type(text).__name__}")


def _read_file(path):
    """A regular file's bytes; anything else (a FIFO, a device) is refused unread, as the tool
    refuses it, since it may never end."""
    fd = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
    with os.fdopen(fd, "rb") as stream:
        if not stat.S_ISREG(os.fstat(fd).st_mode):
            raise OSError(f"{os.fsdecode(path)}: not a regular file")
        return stream.read()


# Live engines, so that a child process forked while other threads were identifying does not
# wait in close() for calls that exist only in the parent.
_live_engines = weakref.WeakSet()


def _reset_after_fork():
    for engine in list(_live_engines):
        engine._reset_locks()


os.register_at_fork(after_in_child=_reset_after_fork)


class Engine:
    """Names the language of texts with one data file.

    Engine(data=None, max_bytes=None, max_tokens=None, min_tokens=None, min_score=None,
           only=None, library=None)

    Options left out take the library's defaults (10240, 500, 40, -8.0). `data` is the data
    file (default: the one installed with the package); `only` lists the only languages that
    may be answered, each a name the data file knows. `library` names a plug-in library to
    identify with instead of the package's own. The engine never changes once created: any
    number of threads may identify at once (the library runs without the GIL).
    """

    def __init__(self, data=None, max_bytes=None, max_tokens=None, min_tokens=None,
                 min_score=None, only=None, library=None):
        self._native = _library.load_native()
        self._handle = ctypes.c_void_p()  # the package's engine
        self._plugin = None
        self._plugin_handle = ctypes.c_void_p()
        # Identifications in flight; close() waits for them before freeing the engine.
        self._in_flight = 0
        self._idle = threading.Condition()

        plugin_path = _library.chosen_plugin(library)
        if plugin_path is not None:
            self._plugin = _library.load_library(plugin_path)
        opts = _library.Options()
        if self._plugin is not None:
            self._plugin.lingomatOptsInitWithDefaults(ctypes.byref(opts))
        else:
            self._native.lingomatPyOptsInitWithDefaults(ctypes.byref(opts))
        opts.maxScanBytes = _unsigned("max_bytes", max_bytes, opts.maxScanBytes)
        opts.maxTokens = _unsigned("max_tokens", max_tokens, opts.maxTokens)
        opts.minTokens = _unsigned("min_tokens", min_tokens, opts.minTokens)
        opts.minScorePerToken = _score(min_score, opts.minScorePerToken)
        names = _language_names(only)
        self.data = (os.fspath(data) if data is not None
                     else _library.find_data_file(self._plugin))
        opts.dataFile = _c_path("data", self.data)
        self.only = tuple(name.decode("utf-8") for name in names)
        self._restrictions = (ctypes.c_char_p * len(names))(*names)
        if names:
            opts.restrictions = ctypes.cast(self._restrictions, ctypes.POINTER(ctypes.c_char_p))
            opts.restrictionCount = len(names)
        self._opts = opts
        self.max_bytes, self.max_tokens = opts.maxScanBytes, opts.maxTokens
        self.min_tokens, self.min_score = opts.minTokens, opts.minScorePerToken

        if self._plugin is not None:
            # Asked first: the plug-in's status carries no reason.
            problem = _read_problem(self.data)
            status = (self._plugin.lingomatCreate(ctypes.byref(self._plugin_handle),
                                                  ctypes.byref(opts)) if not problem else FILE_IO)
            if status != SUCCESS:
                raise self._error(status, f"data file '{self.data}'" + problem)
        else:
            self._create_native()
        if names:
            self._check_names(names)
        _live_engines.add(self)

    def _create_native(self):
        message = ctypes.create_string_buffer(_MESSAGE_BYTES)
        status = self._native.lingomatPyCreate(ctypes.byref(self._opts),
                                               ctypes.byref(self._handle), message,
                                               _MESSAGE_BYTES)
        if status != SUCCESS:
            detail = message.value.decode("utf-8", "replace")
            raise self._error(status, f"data file '{self.data}'" + (f": {detail}" if detail
                                                                     else ""))

    def _check_names(self, names):
        unknown = ctypes.c_void_p()
        status = self._native.lingomatPyCheckNames(
            self._opts.dataFile, self._restrictions, len(names), ctypes.byref(unknown))
        message = _library.taken_string(self._native, unknown)
        if status != SUCCESS or message is not None:
            self.close()
            if status != SUCCESS:
                raise self._error(status, f"data file '{self.data}'")
            raise ValueError(message.decode("utf-8"))

    def _error(self, status, detail):
        message = self._native.lingomatPyErrorString(status).decode("utf-8")
        if status == MEMORY:
            return MemoryError(f"{message}: {detail}")
        return LingomatError(f"{message}: {detail}", status)

    def _reset_locks(self):
        self._in_flight = 0
        self._idle = threading.Condition()

    def _call(self, function):
        """Runs `function` (a library call) as one identification in flight."""
        with self._idle:
            if not (self._handle or self._plugin_handle):
                raise ValueError("use of a closed lingomat.Engine")
            self._in_flight += 1
        try:
            status = function()
        finally:
            with self._idle:
                self._in_flight -= 1
                if self._in_flight == 0:
                    self._idle.notify_all()
        if status != SUCCESS:
            raise self._error(status, "identification failed")

    def _native_handle(self):
        """The package's engine; with a plug-in it is built on first need (rank, explain)."""
        if not self._handle:
            with self._idle:
                if not self._handle:
                    self._create_native()
        return self._handle

    @staticmethod
    def _name(filename):
        return None if filename is None else _c_path("filename", filename)

    def identify(self, text, filename=None):
        """The language of `text` (str, taken as UTF-8, or bytes), or None.

        `filename` (str, bytes or a path object) lets the file name and the extension choose
        the candidates; a path counts by its last component, as the tool names files. UTF-16
        with a byte-order mark is decoded as the tool decodes it."""
        code = _text_bytes(text)
        name = self._name(filename)
        language = ctypes.c_char_p()
        if self._plugin is not None:
            code = self._decoded(code)
            if name is not None:
                name = ctypes.string_at(self._native.lingomatPyBaseName(name))
            self._call(lambda: self._plugin.lingomatIdentifyCode(
                self._plugin_handle, code, len(code), name, ctypes.byref(language)))
        else:
            self._call(lambda: self._native.lingomatPyIdentify(
                self._handle, code, len(code), name, ctypes.byref(language)))
        return None if language.value is None else language.value.decode("utf-8")

    def _decoded(self, code):
        converted = ctypes.c_void_p()
        length = ctypes.c_uint64()
        status = self._native.lingomatPyDecode(code, len(code), self.max_bytes, self.max_tokens,
                                               ctypes.byref(converted), ctypes.byref(length))
        if status != SUCCESS:
            raise self._error(status, "decoding failed")
        if not converted:
            return code
        try:
            return ctypes.string_at(converted, length.value)
        finally:
            self._native.lingomatPyFree(converted)

    def rank(self, text, filename=None, limit=None):
        """The classifier's ranking before the floors, best first: (language, score) pairs,
        the score a natural-log probability. Empty when the text has fewer tokens than
        min_tokens. What the tool's --explain shows, for every language ranked."""
        code = _text_bytes(text)
        name = self._name(filename)
        handle = self._native_handle()
        capacity = self._native.lingomatPyLanguageCount(handle)
        if limit is not None:
            capacity = min(capacity, _unsigned("limit", limit, 0))
        languages = (ctypes.c_char_p * capacity)()
        scores = (ctypes.c_double * capacity)()
        count = ctypes.c_uint64()
        self._call(lambda: self._native.lingomatPyRank(handle, code, len(code), name, capacity,
                                                       languages, scores, ctypes.byref(count)))
        return [(languages[i].decode("utf-8"), scores[i]) for i in range(count.value)]

    def explain(self, text, filename=None):
        """The record the tool's --json --explain prints for `text` named `filename`: "path",
        "language" and "evidence" (candidates by strategy, tokens, ranking, decision)."""
        code = _text_bytes(text)
        name = self._name(filename)
        handle = self._native_handle()
        record = ctypes.c_void_p()
        self._call(lambda: self._native.lingomatPyExplain(handle, code, len(code), name,
                                                          ctypes.byref(record)))
        return json.loads(_library.taken_string(self._native, record))

    def looks_binary(self, content):
        """True when `content` (a file's first bytes) is binary as the tool's walk judges it."""
        head = _text_bytes(content)
        return bool(self._native.lingomatPyLooksBinary(head, len(head)))

    def identify_file(self, path, filename=None, skip_binary=True):
        """The language of the regular file at `path`, named by its own file name unless
        `filename` is given. A binary file gives None, as the tool's walk skips it, unless
        skip_binary is False (the tool's answer for a file named on its command line)."""
        content = _read_file(path)
        if skip_binary and self.looks_binary(content):
            return None
        return self.identify(content, path if filename is None else filename)

    def close(self):
        """Frees the engine once the identifications in flight are done; idempotent."""
        with self._idle:
            while self._in_flight:
                self._idle.wait()
            if self._handle:
                self._native.lingomatPyDestroy(self._handle)
                self._handle = ctypes.c_void_p()
            if self._plugin_handle:
                self._plugin.lingomatDestroy(ctypes.byref(self._plugin_handle))

    @property
    def closed(self):
        return not (self._handle or self._plugin_handle)

    def __enter__(self):
        return self

    def __exit__(self, *exc_info):
        self.close()

    def __del__(self):
        # A half-built engine (a library failed to load) has nothing to free.
        if getattr(self, "_idle", None) is not None:
            self.close()

    def __repr__(self):
        state = "closed" if self.closed else "open"
        return f"<lingomat.Engine {state} data={self.data!r}>"
