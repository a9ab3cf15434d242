"""The arithmetic of cameras, by the shared library libcalibration_geometry: where points land in an
image and where pixels look, rigid transforms, rectified pairs, lenses of one model as another.

    from calibration_protolib import geometry

Pixels: the centre of the first one is (0, 0), u goes right and v down. Cameras look along z, with x
to the right and y down. Angles are radians; lengths have the unit that the caller gives them in.
Arrays that are taken may be anything that numpy makes arrays of; those that are returned are
float64, and copies. Needs numpy; the library is loaded when this module is imported, which raises
ImportError if it is not found.

Of many points, each has a Status; a single result that there is none of raises GeometryError.
"""

from __future__ import annotations

import ctypes
import enum
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any, NamedTuple, Sequence, Tuple

import numpy

from . import geometry_library
from .shared_library import int32 as _int

if TYPE_CHECKING:
    from .records import CameraIntrinsics

    Array = numpy.ndarray[Any, numpy.dtype[Any]]

_library = geometry_library.load()
_MOST_COLUMNS = 10000


class Lens(enum.IntEnum):
    """What makes of a direction a point of the plane z = 1."""

    PINHOLE = 0
    BROWN = 1  # radial, tangential, thin prism and tilt: plumb_bob, rational_polynomial
    FISHEYE = 2  # a polynomial of the angle: equidistant, Kannala-Brandt
    OMNI = 3  # the unified model of Mei, with the distortion of BROWN behind the mirror
    DOUBLE_SPHERE = 4
    EXTENDED_UNIFIED = 5
    FIELD_OF_VIEW = 6
    THIN_PRISM_FISHEYE = 7  # the angle to the axis, with the distortion of BROWN
    DIVISION = 8  # of Fitzgibbon


class Status(enum.IntEnum):
    """Whether there is a result, and why not; explain() has the words."""

    OK = 0
    NOT_A_CAMERA = 1  # a number of the camera is not finite or a focal length not above 0
    NOT_FINITE = 2  # the point or the pixel is not
    BEHIND = 3  # the point is where the model cannot project: behind the camera, or at its centre
    BEYOND_LENS = 4  # beyond the angle up to which the model maps angles one to one
    NOT_CONVERGED = 5  # no direction was found that lands on the pixel
    NOT_A_ROTATION = 6  # a matrix that was to be one
    NO_SOLUTION = 7  # the numbers do not determine what was asked for
    NO_MEMORY = 8


class GeometryError(ValueError):
    """There is no such result. status: why."""

    def __init__(self, what: str, status: Status) -> None:
        super().__init__(f"{what} {explain(status)}")
        self.status = status


def explain(status: int) -> str:
    """A sentence's end, such as "is behind the camera, or at its centre"."""
    text: bytes = _library.calibration_geometry_explain(status)
    return text.decode()


# --- Cameras -------------------------------------------------------------------------------------


@dataclass
class Camera:
    """u = fx x + skew y + cx, v = fy y + cy of what the lens makes of a direction, in pixels.

    distortion: of BROWN and OMNI k1 k2 p1 p2 k3 k4 k5 k6 s1 s2 s3 s4 tx ty, of FISHEYE
    k1 k2 k3 k4, of FIELD_OF_VIEW w, of DIVISION lambda, of THIN_PRISM_FISHEYE
    k1 k2 p1 p2 k3 k4 0 0 s1 s2 s3 s4. shape: of OMNI xi, of DOUBLE_SPHERE xi and alpha, of
    EXTENDED_UNIFIED alpha and beta. What is missing at the end of either is 0. width, height: of
    the image, in pixels; 0 if not known.
    """

    lens: Lens
    fx: float
    fy: float
    skew: float = 0.0
    cx: float = 0.0
    cy: float = 0.0
    distortion: Sequence[float] = field(default_factory=tuple)
    shape: Sequence[float] = field(default_factory=tuple)
    width: int = 0
    height: int = 0

    @classmethod
    def from_intrinsics(cls, intrinsics: CameraIntrinsics, lens: Lens) -> Camera:
        """The camera of a record, whose `k` and `p` are those of that lens: PINHOLE, BROWN or
        FISHEYE. The record does not tell which. Raises ValueError for other numbers of them."""
        k, p = list(intrinsics.k), list(intrinsics.p)
        counts = {Lens.PINHOLE: ([0], [0]), Lens.BROWN: ([2, 3, 6], [2]), Lens.FISHEYE: ([4], [0])}
        if lens not in counts:
            raise ValueError(f"{lens!r}: no record holds it; expected {list(counts)}")
        if len(k) not in counts[lens][0] or len(p) not in counts[lens][1]:
            raise ValueError(f"{len(k)} k and {len(p)} p are not those of {lens!r}: expected "
                             f"{counts[lens][0]} k and {counts[lens][1]} p")
        distortion = k[:2] + p + k[2:] if lens == Lens.BROWN else k
        return cls(lens, intrinsics.fx, intrinsics.fy, intrinsics.skew, intrinsics.cx,
                   intrinsics.cy, distortion, (), intrinsics.width, intrinsics.height)


class Projected(NamedTuple):
    """pixels: shape (n, 2), u and v, NaN where there is none. status: shape (n,), int32."""

    pixels: Array
    status: Array


class Directions(NamedTuple):
    """rays: shape (n, 3), of length 1, NaN where there is none. status: shape (n,), int32."""

    rays: Array
    status: Array


def project(camera: Camera, points: Any) -> Projected:
    """Where points, shape (n, 3), land. A point that lands in the image only because the polynomial
    folds back behind its last extremum is BEYOND_LENS."""
    given = _array(points, "points", 3)
    pixels = numpy.empty((len(given), 2))
    status = numpy.empty(len(given), numpy.int32)
    _library.calibration_geometry_project(_to_c(camera), _numbers(given), len(given),
                                          _numbers(pixels), _statuses(status))
    return Projected(pixels, status)


def unproject(camera: Camera, pixels: Any) -> Directions:
    """Where pixels, shape (n, 2), look: the direction that lands on the pixel to 1e-12 of a focal
    length."""
    given = _array(pixels, "pixels", 2)
    rays = numpy.empty((len(given), 3))
    status = numpy.empty(len(given), numpy.int32)
    _library.calibration_geometry_unproject(_to_c(camera), _numbers(given), len(given),
                                            _numbers(rays), _statuses(status))
    return Directions(rays, status)


def largest_angle(camera: Camera) -> float:
    """The largest angle to the optical axis at which a camera without tangential distortion maps
    angles one to one; pi if there is none."""
    angle: float = _library.calibration_geometry_largest_angle(_to_c(camera))
    return angle


# --- Rigid transforms ----------------------------------------------------------------------------

# Shape (4, 4): the upper left 3x3 is a rotation, the last row 0 0 0 1. It maps a point p of one
# frame to m p in the other; T_ab maps from frame b to frame a.


def invert(transform: Any) -> Array:
    """The inverse, shape (4, 4)."""
    return _matrix(_library.calibration_geometry_invert, _transform(transform))


def compose(second: Any, first: Any) -> Array:
    """`first`, then `second`, shape (4, 4): the matrix product second first."""
    return _matrix(_library.calibration_geometry_compose, _transform(second), _transform(first))


def apply(transform: Any, points: Any) -> Array:
    """Points, shape (n, 3), in the other frame, of the same shape."""
    given = _array(points, "points", 3)
    moved = numpy.empty_like(given)
    _library.calibration_geometry_apply(_numbers(_transform(transform)), _numbers(given),
                                        len(given), _numbers(moved))
    return moved


def rotation_defect(transform: Any) -> float:
    """How far the upper left 3x3 is from a rotation: the largest element of R^T R - I; infinite
    where it mirrors, where a number is not finite or the last row is not 0 0 0 1."""
    defect: float = _library.calibration_geometry_rotation_defect(_numbers(_transform(transform)))
    return defect


def orthonormalize(transform: Any) -> Array:
    """With the rotation that is nearest (in the sum of squared differences), shape (4, 4). Raises
    GeometryError if there is none."""
    given = _transform(transform)
    if not _library.calibration_geometry_orthonormalize(_numbers(given)):
        raise GeometryError("the transform", Status.NOT_A_ROTATION)
    return given


def quaternion_of(transform: Any) -> Array:
    """w x y z, of length 1 with w >= 0, shape (4,)."""
    return _vector(_library.calibration_geometry_quaternion_of, 4, _transform(transform))


def roll_pitch_yaw_of(transform: Any) -> Array:
    """Angles about the fixed axes x, then y, then z, shape (3,): Rz(yaw) Ry(pitch) Rx(roll)."""
    return _vector(_library.calibration_geometry_roll_pitch_yaw_of, 3, _transform(transform))


def rotation_vector_of(transform: Any) -> Array:
    """The axis of the rotation, as long as its angle, shape (3,)."""
    return _vector(_library.calibration_geometry_rotation_vector_of, 3, _transform(transform))


def from_quaternion(wxyz: Any, translation: Any = (0, 0, 0)) -> Array:
    """The transform, shape (4, 4), of a quaternion w x y z of any length but 0."""
    return _matrix(_library.calibration_geometry_from_quaternion, _list(wxyz, "wxyz", 4),
                   _list(translation, "translation", 3))


def from_roll_pitch_yaw(angles: Any, translation: Any = (0, 0, 0)) -> Array:
    """The transform, shape (4, 4), of roll, pitch and yaw; see roll_pitch_yaw_of()."""
    return _matrix(_library.calibration_geometry_from_roll_pitch_yaw, _list(angles, "angles", 3),
                   _list(translation, "translation", 3))


def from_rotation_vector(vector: Any, translation: Any = (0, 0, 0)) -> Array:
    """The transform, shape (4, 4), of a rotation vector; see rotation_vector_of()."""
    return _matrix(_library.calibration_geometry_from_rotation_vector, _list(vector, "vector", 3),
                   _list(translation, "translation", 3))


# --- What is made of cameras ---------------------------------------------------------------------


class Rectified(NamedTuple):
    """vertical: the pair stands one above the other, and columns are the same. swapped: the second
    camera is left of, or above, the first. baseline: between the cameras, in the transform's unit.
    r1, r2: (3, 3), from each camera to the rectified one. p1, p2: (3, 4), from the first rectified
    camera to pixels of each. q: (4, 4), from u, v, disparity, 1 to homogeneous points."""

    vertical: bool
    swapped: bool
    baseline: float
    r1: Array
    r2: Array
    p1: Array
    p2: Array
    q: Array


def rectify(first: Camera, second: Camera, second_from_first: Any, alpha: float = -1.0,
            zero_disparity: bool = True) -> Rectified:
    """The pair with rows that meet, as OpenCV's stereoRectify has it (fisheye::stereoRectify if a
    lens is FISHEYE). The cameras must have images of one size.

    alpha: from 0, where all pixels of the rectified images show something, to 1, where they show
    all that the cameras see; below 0, the scale stays as it is (with a fisheye as 0).
    zero_disparity: both principal points are the same, so that points at infinity have none.
    Raises GeometryError if there is no such pair.
    """
    c = _library.calibration_geometry_rectify(
        _to_c(first), _to_c(second), _numbers(_transform(second_from_first)), alpha,
        bool(zero_disparity))
    _check("the pair", c.status)
    return Rectified(bool(c.vertical), bool(c.swapped), c.baseline, _shaped(c.r1, 3, 3),
                     _shaped(c.r2, 3, 3), _shaped(c.p1, 3, 4), _shaped(c.p2, 3, 4),
                     _shaped(c.q, 4, 4))


class Difference(NamedTuple):
    """after_from_before: (4, 4), what was taken out. largest, mean: in pixels, over the `compared`
    pixels that both cameras see; where: the largest is there, (u, v). pixels, by: (n, 2), the grid
    row by row, and how much further each is in `after`, NaN where status, (n,), is not OK."""

    after_from_before: Array
    largest: float
    mean: float
    where: Tuple[float, float]
    compared: int
    pixels: Array
    by: Array
    status: Array


def compare(before: Camera, after: Camera, fit: bool = True, distance: float = 0.0,
            columns: int = 60) -> Difference:
    """Where `after` sees what `before` sees. The cameras must have images of one size.

    fit: take out the rotation (at a distance, the rigid transform) that explains most of the
    difference. distance: of the points that are compared; 0: at infinity. columns: of the grid of
    pixels, which spans the image, from 2 to 10000. Raises GeometryError if the cameras are none,
    their images differ in size or they see no three pixels alike.
    """
    if not 2 <= columns <= _MOST_COLUMNS:
        raise ValueError(f"columns: expected 2 to {_MOST_COLUMNS}, not {columns}")
    room = 2 * columns * columns  # enough for images up to twice as high as wide
    while True:
        displacements = numpy.empty((room, 4))
        status = numpy.empty(room, numpy.int32)
        c = _library.calibration_geometry_compare(
            _to_c(before), _to_c(after), bool(fit), distance, columns, room,
            _numbers(displacements), _statuses(status))
        _check("the difference", c.status)
        if c.count <= room:
            break
        room = c.count
    seen, how = displacements[:c.count].copy(), status[:c.count].copy()
    seen[how != Status.OK, 2:] = numpy.nan
    return Difference(_shaped(c.after_from_before, 4, 4), c.largest, c.mean,
                      (c.where[0], c.where[1]), c.compared, seen[:, :2], seen[:, 2:], how)


class FittedLens(NamedTuple):
    """rms, largest: in pixels, over all of the image that was not left out; where: the largest is
    there, (u, v). angle: up to it no error is above max_error. reach: the largest angle in the
    image that was not left out. unseen: pixels of the grid that the camera does not see at all."""

    camera: Camera
    rms: float
    largest: float
    where: Tuple[float, float]
    angle: float
    reach: float
    unseen: int


def fit_lens(source: Camera, target: Lens, coefficients: int, max_error: float = 0.5,
             largest_angle: float = 4.0) -> FittedLens:
    """The camera of the lens `target` (PINHOLE, BROWN or FISHEYE) with so many coefficients that
    sees the image most like `source` does: with the least sum of squared distances.

    max_error: in pixels, what `angle` of the result goes by. largest_angle: leave out what is
    further from the axis. Raises GeometryError if there is none; how good it is, is for the caller
    to judge.
    """
    c = _library.calibration_geometry_fit_lens(
        _to_c(source), int(target), _int("coefficients", coefficients), max_error, largest_angle)
    _check("the lens", c.status)
    return FittedLens(_from_c(c.camera), c.rms, c.largest, (c.where[0], c.where[1]), c.angle,
                      c.reach, c.unseen)


class Resized(NamedTuple):
    """pixel_map: (2, 3), from u, v, 1 of the image to those of the new one. new_from_old: (4, 4),
    of the camera's frame, which turns with the image."""

    camera: Camera
    pixel_map: Array
    new_from_old: Array


def scale(camera: Camera, width: int, height: int) -> Resized:
    """As an image that is resized to that many pixels, with the corners where they were: the first
    pixel's centre is half a pixel from them, before and after. Raises GeometryError without
    sizes, as the three below do."""
    return _resized(_library.calibration_geometry_scale(
        _to_c(camera), _int("width", width), _int("height", height)))


def crop(camera: Camera, u: int, v: int, width: int, height: int) -> Resized:
    """What is within the rectangle, whose first pixel is that of u and v."""
    return _resized(_library.calibration_geometry_crop(
        _to_c(camera), _int("u", u), _int("v", v), _int("width", width), _int("height", height)))


def bin(camera: Camera, columns: int, rows: int,
        decimate: bool = False) -> Resized:
    """The mean of so many pixels as one or, decimated, the first of them."""
    return _resized(_library.calibration_geometry_bin(
        _to_c(camera), _int("columns", columns), _int("rows", rows), bool(decimate)))


def rotate(camera: Camera, quarters: int) -> Resized:
    """Turned clockwise by that many quarters. Raises GeometryError, too, if no such camera has
    these parameters: with skew but for half a turn, and with tilt."""
    return _resized(_library.calibration_geometry_rotate(
        _to_c(camera), _int("quarters", quarters)))


class Pose(NamedTuple):
    """rms: distance between what is seen and what was measured, in pixels."""

    camera_from_target: Array
    rms: float


def fit_pose(camera: Camera, z: float, points: Any) -> Pose:
    """From where the camera sees a flat target so: the least sum of squared distances. The target
    is at z; points, shape (n, 4): x and y on it, and u and v of the pixel that shows it. Raises
    GeometryError if they do not determine the pose, or a pixel sees nothing."""
    given = _array(points, "points", 4)
    c = _library.calibration_geometry_fit_pose(_to_c(camera), z, _numbers(given), len(given))
    _check("the pose", c.status)
    return Pose(_shaped(c.camera_from_target, 4, 4), c.rms)


# --- To and from the library ---------------------------------------------------------------------


def _to_c(camera: Camera) -> geometry_library.Camera:
    for name, most in (("distortion", 14), ("shape", 2)):
        if len(getattr(camera, name)) > most:
            raise ValueError(f"{name}: has {len(getattr(camera, name))} numbers, expected at most "
                             f"{most}")
    return geometry_library.Camera(
        int(camera.lens), camera.fx, camera.fy, camera.skew, camera.cx, camera.cy,
        (ctypes.c_double * 14)(*camera.distortion), (ctypes.c_double * 2)(*camera.shape),
        _int("width", camera.width), _int("height", camera.height))


def _from_c(c: geometry_library.Camera) -> Camera:
    return Camera(Lens(c.lens), c.fx, c.fy, c.skew, c.cx, c.cy, tuple(c.distortion),
                  tuple(c.shape), c.width, c.height)


def _resized(c: geometry_library.Resized) -> Resized:
    _check("the camera", c.status)
    return Resized(_from_c(c.camera), _shaped(c.pixel_map, 2, 3), _shaped(c.new_from_old, 4, 4))


def _check(what: str, status: int) -> None:
    if status != Status.OK:
        raise GeometryError(what, Status(status))


def _array(values: Any, name: str, columns: int) -> Array:
    """Rows of numbers, one behind the other in memory."""
    array = numpy.ascontiguousarray(values, dtype=numpy.float64)
    if array.ndim != 2 or array.shape[1] != columns:
        raise ValueError(f"{name}: has the shape {array.shape}, expected (n, {columns})")
    return array


def _list(values: Any, name: str, size: int) -> Array:
    array = numpy.ascontiguousarray(values, dtype=numpy.float64)
    if array.shape != (size,):
        raise ValueError(f"{name}: has the shape {array.shape}, expected ({size},)")
    return array


def _transform(values: Any) -> Array:
    """A copy."""
    array = numpy.array(values, dtype=numpy.float64, order="C")
    if array.shape != (4, 4):
        raise ValueError(f"a transform has the shape (4, 4), not {array.shape}")
    return array


def _shaped(numbers: Any, rows: int, columns: int) -> Array:
    return numpy.array(numbers, dtype=numpy.float64).reshape(rows, columns)


def _matrix(function: Any, *arrays: Array) -> Array:
    result = numpy.empty((4, 4))
    function(*map(_numbers, arrays), _numbers(result))
    return result


def _vector(function: Any, size: int, *arrays: Array) -> Array:
    result = numpy.empty(size)
    function(*map(_numbers, arrays), _numbers(result))
    return result


def _numbers(array: Array) -> Any:
    return array.ctypes.data_as(ctypes.POINTER(ctypes.c_double))


def _statuses(array: Array) -> Any:
    return array.ctypes.data_as(ctypes.POINTER(ctypes.c_int))
