"""Finding and loading the plug-in library and the shipped data file."""

import ctypes
import ctypes.util
import os

LIBRARY_NAME = "liblingomatplugin.so.1"
_DATA_RELATIVE = os.path.join("share", "lingomat", "lingomat.json")


class Options(ctypes.Structure):
    """The C options record: seven 8-byte fields, in this order."""

    _fields_ = [
        ("dataFile", ctypes.c_char_p),
        ("maxScanBytes", ctypes.c_uint64),
        ("maxTokens", ctypes.c_uint64),
        ("minTokens", ctypes.c_uint64),
        ("minScorePerToken", ctypes.c_double),
        ("restrictions", ctypes.POINTER(ctypes.c_char_p)),
        ("restrictionCount", ctypes.c_uint64),
    ]


def _declare(lib):
    handle_p = ctypes.POINTER(ctypes.c_void_p)
    lib.lingomatOptsInitWithDefaults.argtypes = [ctypes.POINTER(Options)]
    lib.lingomatCreate.argtypes = [handle_p, ctypes.POINTER(Options)]
    lib.lingomatIdentifyCode.argtypes = [
        ctypes.c_void_p,
        ctypes.c_char_p,
        ctypes.c_uint64,
        ctypes.c_char_p,
        ctypes.POINTER(ctypes.c_char_p),
    ]
    lib.lingomatDestroy.argtypes = [handle_p]
    lib.lingomatPlugInGetErrorString.argtypes = [ctypes.c_int32]
    lib.lingomatPlugInGetErrorString.restype = ctypes.c_char_p
    for name in ("lingomatOptsInitWithDefaults", "lingomatCreate", "lingomatIdentifyCode",
                 "lingomatDestroy"):
        getattr(lib, name).restype = ctypes.c_int32
    return lib


def _candidate_libraries(explicit):
    if explicit:
        yield os.fspath(explicit)
        return
    from_env = os.environ.get("LINGOMAT_LIBRARY")
    if from_env:
        yield from_env
        return
    # The dynamic loader's own search (ld.so.cache, LD_LIBRARY_PATH), then the
    # usual prefixes that are not always in it.
    yield LIBRARY_NAME
    found = ctypes.util.find_library("lingomatplugin")
    if found:
        yield found
    for prefix in ("/usr/local", "/usr"):
        for libdir in ("lib", "lib64"):
            yield os.path.join(prefix, libdir, LIBRARY_NAME)


def load_library(explicit=None):
    """The plug-in as a ctypes library, from `explicit`, $LINGOMAT_LIBRARY or the system."""
    tried = []
    for candidate in _candidate_libraries(explicit):
        try:
            return _declare(ctypes.CDLL(candidate))
        except OSError as error:
            tried.append(f"{candidate} ({error})")
    raise OSError("lingomat: cannot load the plug-in library; tried " + ", ".join(tried) +
                  ". Pass library=PATH or set LINGOMAT_LIBRARY.")


class _DlInfo(ctypes.Structure):
    _fields_ = [
        ("dli_fname", ctypes.c_char_p),
        ("dli_fbase", ctypes.c_void_p),
        ("dli_sname", ctypes.c_char_p),
        ("dli_saddr", ctypes.c_void_p),
    ]


def library_path(lib):
    """The file the loader actually opened for `lib`, or None when it cannot tell."""
    try:
        dladdr = ctypes.CDLL(None).dladdr
    except (OSError, AttributeError):
        return None
    dladdr.argtypes = [ctypes.c_void_p, ctypes.POINTER(_DlInfo)]
    info = _DlInfo()
    address = ctypes.cast(lib.lingomatCreate, ctypes.c_void_p)
    if dladdr(address, ctypes.byref(info)) == 0 or not info.dli_fname:
        return None
    return os.path.realpath(os.fsdecode(info.dli_fname))


def data_file_candidates(lib):
    """Where the shipped data file may be: $LINGOMAT_DATA, else beside the library's prefix
    (lib/, lib64/ or lib/<triplet>/ below it), else the source tree of a build-tree library."""
    from_env = os.environ.get("LINGOMAT_DATA")
    if from_env:
        return [from_env]
    candidates = []
    path = library_path(lib)
    if path:
        directory = os.path.dirname(path)
        for _ in range(3):
            directory = os.path.dirname(directory)
            candidates.append(os.path.join(directory, _DATA_RELATIVE))
            # A library still in a build tree: <source>/build/plugin/liblingomatplugin.so
            candidates.append(os.path.join(directory, "data", "lingomat.json"))
    return candidates


def find_data_file(lib):
    candidates = data_file_candidates(lib)
    for candidate in candidates:
        if os.path.isfile(candidate):
            return candidate
    raise FileNotFoundError("lingomat: no data file found (looked for " + ", ".join(candidates) +
                            "); pass data=PATH or set LINGOMAT_DATA")
