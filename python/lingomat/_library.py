"""Finding and loading the native libraries and the data file.

The package carries its own native library (built from this repository's sources when the
package is built) and the shipped data file. A plug-in library named by library= or
$LINGOMAT_LIBRARY is used instead of the bundled engine for identify()."""

import ctypes
import ctypes.util
import os

LIBRARY_NAME = "liblingomatplugin.so.1"
NATIVE_NAME = "_lingomat_native.so"
_PACKAGE_DIR = os.path.dirname(os.path.abspath(__file__))
_DATA_RELATIVE = os.path.join("share", "lingomat", "lingomat.json")
BUNDLED_DATA = os.path.join(_PACKAGE_DIR, "data", "lingomat.json")


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


def chosen_plugin(explicit):
    """The plug-in library the caller asked for (library=, else $LINGOMAT_LIBRARY), or None."""
    if explicit:
        return os.fspath(explicit)
    return os.environ.get("LINGOMAT_LIBRARY") or None


def load_library(path):
    """The plug-in at `path` as a ctypes library."""
    try:
        return _declare(ctypes.CDLL(path))
    except OSError as error:
        raise OSError(f"lingomat: cannot load the plug-in library {path} ({error})") from None


def _declare_native(lib):
    handle = ctypes.c_void_p
    text = ctypes.c_char_p
    u64 = ctypes.c_uint64
    u64_p = ctypes.POINTER(u64)
    signatures = {
        "lingomatPyOptsInitWithDefaults": (None, [ctypes.POINTER(Options)]),
        "lingomatPyCreate": (ctypes.c_int, [ctypes.POINTER(Options), ctypes.POINTER(handle),
                                            ctypes.c_char_p, ctypes.c_size_t]),
        "lingomatPyDestroy": (None, [handle]),
        "lingomatPyLanguageCount": (u64, [handle]),
        "lingomatPyBaseName": (ctypes.c_void_p, [text]),
        "lingomatPyLooksBinary": (ctypes.c_int, [text, u64]),
        "lingomatPyBinarySniffBytes": (u64, []),
        "lingomatPyIdentify": (ctypes.c_int, [handle, text, u64, text,
                                              ctypes.POINTER(ctypes.c_char_p)]),
        "lingomatPyRank": (ctypes.c_int, [handle, text, u64, text, u64,
                                          ctypes.POINTER(ctypes.c_char_p),
                                          ctypes.POINTER(ctypes.c_double), u64_p]),
        "lingomatPyExplain": (ctypes.c_int, [handle, text, u64, text,
                                             ctypes.POINTER(ctypes.c_void_p)]),
        "lingomatPyDecode": (ctypes.c_int, [text, u64, u64, u64, ctypes.POINTER(ctypes.c_void_p),
                                            u64_p]),
        "lingomatPyCheckNames": (ctypes.c_int, [text, ctypes.POINTER(ctypes.c_char_p), u64,
                                                ctypes.POINTER(ctypes.c_void_p)]),
        "lingomatPyErrorString": (ctypes.c_char_p, [ctypes.c_int]),
        "lingomatPyFree": (None, [ctypes.c_void_p]),
    }
    for name, (restype, argtypes) in signatures.items():
        function = getattr(lib, name)
        function.restype = restype
        function.argtypes = argtypes
    return lib


_native = None


def load_native():
    """The package's own native library: beside this file, else $LINGOMAT_NATIVE (a build
    tree's, for the tests). Loaded once per process."""
    global _native
    if _native is None:
        candidates = [os.path.join(_PACKAGE_DIR, NATIVE_NAME), os.environ.get("LINGOMAT_NATIVE")]
        tried = []
        for candidate in filter(None, candidates):
            try:
                _native = _declare_native(ctypes.CDLL(candidate))
                break
            except OSError as error:
                tried.append(f"{candidate} ({error})")
        else:
            raise OSError("lingomat: the package's native library is missing (tried " +
                          ", ".join(tried) + "); reinstall the package with pip, which "
                          "builds it")
    return _native


def taken_string(lib, pointer):
    """The bytes of a NUL-terminated buffer the native library allocated, which is freed."""
    if not pointer:
        return None
    try:
        return ctypes.string_at(pointer)
    finally:
        lib.lingomatPyFree(pointer)


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


def data_file_candidates(plugin=None):
    """Where the shipped data file may be: $LINGOMAT_DATA; else, for a plug-in named by the
    caller, beside its prefix (lib/, lib64/ or lib/<triplet>/ below it) or in the source tree
    of a build-tree plug-in; else the package's own copy."""
    from_env = os.environ.get("LINGOMAT_DATA")
    if from_env:
        return [from_env]
    candidates = []
    path = library_path(plugin) if plugin is not None else None
    if path:
        directory = os.path.dirname(path)
        for _ in range(3):
            directory = os.path.dirname(directory)
            candidates.append(os.path.join(directory, _DATA_RELATIVE))
            # A library still in a build tree: <source>/build/plugin/liblingomatplugin.so
            candidates.append(os.path.join(directory, "data", "lingomat.json"))
    return candidates + [BUNDLED_DATA]


def find_data_file(plugin=None):
    candidates = data_file_candidates(plugin)
    for candidate in candidates:
        if os.path.isfile(candidate):
            return candidate
    raise FileNotFoundError("lingomat: no data file found (looked for " + ", ".join(candidates) +
                            "); pass data=PATH or set LINGOMAT_DATA")
