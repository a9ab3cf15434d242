"""The shared library libcalibration_geometry, by its interface for C (calibration_geometry_c.h)."""

import ctypes

from . import shared_library

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
_FUNCTIONS: shared_library.Functions = {
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
    return shared_library.load("calibration_geometry", _FUNCTIONS)
