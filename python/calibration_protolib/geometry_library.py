"""The shared library libcalibration_geometry, by its interface for C (calibration_geometry_c.h).

ctypes calls it, so that the package has nothing to compile: one package serves every version of
Python, and the library is the one that C++ programs use.
"""

import ctypes
import pathlib
import shutil
import subprocess
import sys
from typing import Iterator

_NAME = "libcalibration_geometry.so.1"

NOT_FOUND = (
    f"cannot load {_NAME}: expected it where the system's loader looks (LD_LIBRARY_PATH), or where"
    " pkg-config, the package's own prefix, Python's prefix or /usr/local lead to it"
)

_NUMBERS = ctypes.POINTER(ctypes.c_double)
_STATUSES = ctypes.POINTER(ctypes.c_int)


class Camera(ctypes.Structure):
    _fields_ = [("lens", ctypes.c_int), ("fx", ctypes.c_double), ("fy", ctypes.c_double),
                ("skew", ctypes.c_double), ("cx", ctypes.c_double), ("cy", ctypes.c_double),
                ("distortion", ctypes.c_double * 14), ("shape", ctypes.c_double * 2),
                ("width", ctypes.c_int), ("height", ctypes.c_int)]


class Rectified(ctypes.Structure):
    _fields_ = [("status", ctypes.c_int), ("vertical", ctypes.c_int), ("swapped", ctypes.c_int),
                ("baseline", ctypes.c_double), ("r1", ctypes.c_double * 9),
                ("r2", ctypes.c_double * 9), ("p1", ctypes.c_double * 12),
                ("p2", ctypes.c_double * 12), ("q", ctypes.c_double * 16)]


class Difference(ctypes.Structure):
    _fields_ = [("status", ctypes.c_int), ("after_from_before", ctypes.c_double * 16),
                ("largest", ctypes.c_double), ("mean", ctypes.c_double),
                ("where", ctypes.c_double * 2), ("compared", ctypes.c_size_t),
                ("count", ctypes.c_size_t)]


class FittedLens(ctypes.Structure):
    _fields_ = [("status", ctypes.c_int), ("camera", Camera), ("rms", ctypes.c_double),
                ("largest", ctypes.c_double), ("where", ctypes.c_double * 2),
                ("angle", ctypes.c_double), ("reach", ctypes.c_double),
                ("unseen", ctypes.c_size_t)]


class Resized(ctypes.Structure):
    _fields_ = [("status", ctypes.c_int), ("camera", Camera), ("pixel_map", ctypes.c_double * 6),
                ("new_from_old", ctypes.c_double * 16)]


class Pose(ctypes.Structure):
    _fields_ = [("status", ctypes.c_int), ("camera_from_target", ctypes.c_double * 16),
                ("rms", ctypes.c_double)]


_CAMERA = ctypes.POINTER(Camera)
_INT, _SIZE, _DOUBLE = ctypes.c_int, ctypes.c_size_t, ctypes.c_double

# What each function returns and takes.
_FUNCTIONS = {
    "explain": (ctypes.c_char_p, [_INT]),
    "project": (None, [_CAMERA, _NUMBERS, _SIZE, _NUMBERS, _STATUSES]),
    "unproject": (None, [_CAMERA, _NUMBERS, _SIZE, _NUMBERS, _STATUSES]),
    "largest_angle": (_DOUBLE, [_CAMERA]),
    "invert": (None, [_NUMBERS] * 2),
    "compose": (None, [_NUMBERS] * 3),
    "apply": (None, [_NUMBERS, _NUMBERS, _SIZE, _NUMBERS]),
    "rotation_defect": (_DOUBLE, [_NUMBERS]),
    "orthonormalize": (_INT, [_NUMBERS]),
    "quaternion_of": (None, [_NUMBERS] * 2),
    "roll_pitch_yaw_of": (None, [_NUMBERS] * 2),
    "rotation_vector_of": (None, [_NUMBERS] * 2),
    "from_quaternion": (None, [_NUMBERS] * 3),
    "from_roll_pitch_yaw": (None, [_NUMBERS] * 3),
    "from_rotation_vector": (None, [_NUMBERS] * 3),
    "rectify": (Rectified, [_CAMERA, _CAMERA, _NUMBERS, _DOUBLE, _INT]),
    "compare": (Difference, [_CAMERA, _CAMERA, _INT, _DOUBLE, _INT, _SIZE, _NUMBERS, _STATUSES]),
    "fit_lens": (FittedLens, [_CAMERA, _INT, _INT, _DOUBLE, _DOUBLE]),
    "scale": (Resized, [_CAMERA, _INT, _INT]),
    "crop": (Resized, [_CAMERA, _INT, _INT, _INT, _INT]),
    "bin": (Resized, [_CAMERA, _INT, _INT, _INT]),
    "rotate": (Resized, [_CAMERA, _INT]),
    "fit_pose": (Pose, [_CAMERA, _DOUBLE, _NUMBERS, _SIZE]),
}


def load() -> ctypes.CDLL:
    """The library, its functions declared. Raises ImportError if there is none, or an older one."""
    for place in _places():
        try:
            library = ctypes.CDLL(place)
        except OSError:
            continue
        try:
            for name, (result, arguments) in _FUNCTIONS.items():
                function = getattr(library, f"calibration_geometry_{name}")
                function.restype, function.argtypes = result, arguments
        except AttributeError as error:
            raise ImportError(f"{place}: is older than this package: {error}") from error
        return library
    raise ImportError(NOT_FOUND)


def _places() -> Iterator[str]:
    yield _NAME
    program = shutil.which("pkg-config")
    if program is not None:
        asked = subprocess.run([program, "--variable=libdir", "calibration_geometry"], check=False,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        folder = asked.stdout.decode(errors="replace").strip()
        if asked.returncode == 0 and folder:
            yield str(pathlib.Path(folder, _NAME))
    here = pathlib.Path(__file__).resolve()
    for prefix in (*here.parents, pathlib.Path(sys.prefix), pathlib.Path("/usr/local")):
        for path in (prefix / "lib" / _NAME, prefix / "lib64" / _NAME,
                     *sorted(prefix.glob(f"lib/*-linux-*/{_NAME}"))):
            if path.is_file():
                yield str(path)
