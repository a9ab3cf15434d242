"""The shared library libcalibration_formats, by its interface for C (calibration_formats_c.h)."""

import ctypes

from . import shared_library

_TEXT, _INT, _SIZE = ctypes.c_char_p, ctypes.c_int, ctypes.c_size_t
_NUMBERS = ctypes.POINTER(ctypes.c_double)


class File(ctypes.Structure):
    # The bytes may hold zeros, which c_char_p would end at.
    _fields_ = [("name", _TEXT), ("bytes", ctypes.POINTER(ctypes.c_char)), ("size", _SIZE)]


class Note(ctypes.Structure):
    _fields_ = [("kind", _INT), ("text", _TEXT)]


class Result(ctypes.Structure):
    _fields_ = [("status", _INT), ("error", _TEXT), ("format", _TEXT),
                ("notes", ctypes.POINTER(Note)), ("note_count", _SIZE),
                ("files", ctypes.POINTER(File)), ("file_count", _SIZE)]


class ReadOptions(ctypes.Structure):
    _fields_ = [("format", _TEXT), ("lens", _TEXT), ("lossy", _INT)]


class WriteOptions(ctypes.Structure):
    _fields_ = [("lens", _TEXT), ("lossy", _INT), ("from_camera", _INT), ("width", _INT),
                ("height", _INT), ("name", _TEXT), ("frame", _TEXT), ("rectification", _NUMBERS),
                ("projection", _NUMBERS)]


_RESULT = ctypes.POINTER(Result)
_WRITE = [_TEXT, ctypes.c_char_p, _SIZE, ctypes.POINTER(WriteOptions)]

# What each function returns and takes.
_FUNCTIONS: shared_library.Functions = {
    "readable": (_TEXT, [_SIZE]),
    "writable": (_TEXT, [_SIZE]),
    "read": (_RESULT, [ctypes.POINTER(File), _SIZE, ctypes.POINTER(ReadOptions)]),
    "write": (_RESULT, _WRITE),
    "write_text": (_RESULT, _WRITE),
    "free": (None, [_RESULT]),
}


def load() -> ctypes.CDLL:
    """The library, its functions declared. Raises ImportError if there is none, or an older one."""
    return shared_library.load("calibration_formats", _FUNCTIONS)
