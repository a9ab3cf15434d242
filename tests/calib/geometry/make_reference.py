#!/usr/bin/env python3
"""Takes from OpenCV and mrcal the numbers that the tests of calib/geometry compare with.

    make_reference.py > reference.txt

Needs Debian's python3-opencv and python3-mrcal. A line is one of

    camera LENS fx fy skew cx cy COUNT COEFFICIENT... [XI]
    point x y z u v      projected by that camera
    pixel u v x y        undistorted: a point of the plane z = 1
    rotation x y z NINE  a rotation vector and its matrix
    size width height    of the images of the cameras that follow
    stereo ALPHA ZERO T R1 R2 P1 P2 Q
                         the last two cameras rectified: alpha, whether their principal points are to
                         be one, 3x4 from the first to the second, and what comes out
    difference COLUMNS DISTANCE FIT R ROW COLUMN du dv ...
                         of the last two cameras; distance 0 is infinity, the rotation is 3x3
    target z x y u v ... the points of a flat target that a camera sees with some noise
    pose RMS VECTOR T    of the last target from the last camera
    resize FROM TO u at  where pixel u of a resized row was
    turn QUARTERS WIDTH HEIGHT u v u' v'
                         where a pixel of a turned image goes

The cameras are random ones; the seed is fixed.
"""

import sys

import cv2
import mrcal
import numpy as np

RANDOM = np.random.default_rng(20)
UNDISTORTED = (cv2.TERM_CRITERIA_COUNT + cv2.TERM_CRITERIA_EPS, 2000, 1e-15)


def say(*words):
    """One line; numbers in full."""
    print(*(repr(float(word)) if isinstance(word, float) else word for word in words))


def small(*sizes):
    """Random numbers, each up to its size."""
    return [float(size * RANDOM.uniform(-1, 1)) for size in sizes]


def matrix():
    """A camera matrix of an image of 1280 x 960."""
    fx, fy = RANDOM.uniform(500, 900, 2)
    return np.array([[fx, 0, RANDOM.uniform(580, 700)], [0, fy, RANDOM.uniform(430, 530)],
                     [0, 0, 1]])


def say_camera(lens, k, coefficients, *more):
    """The line of a camera."""
    say("camera", lens, *map(float, (k[0, 0], k[1, 1], k[0, 1], k[0, 2], k[1, 2])),
        len(coefficients), *coefficients, *more)


def brown(count):
    """Coefficients of a lens that does not fold within 45 degrees."""
    sizes = (0.1, 0.02, 0.002, 0.002, 0.005, 0.05, 0.01, 0.002, 0.002, 0.001, 0.002, 0.001, 0.03,
             0.03)
    return small(*sizes[:count])


def brown_camera(count):
    k, d = matrix(), brown(count)
    say_camera("brown", k, d)
    points = np.column_stack([RANDOM.uniform(-1, 1, (8, 2)), RANDOM.uniform(1.4, 3, 8)])
    pixels = cv2.projectPoints(points, np.zeros(3), np.zeros(3), k, np.array(d))[0].reshape(-1, 2)
    for point, pixel in zip(points, pixels):
        say("point", *map(float, point), *map(float, pixel))
    pixels = np.floor(pixels)
    plane = cv2.undistortPointsIter(pixels.reshape(-1, 1, 2), k, np.array(d), None, None,
                                    UNDISTORTED).reshape(-1, 2)
    for pixel, point in zip(pixels, plane):
        say("pixel", *map(float, pixel), *map(float, point))


def fisheye_camera():
    k, d = matrix(), small(0.05, 0.01, 0.005, 0.001)
    alpha = float(RANDOM.uniform(-0.01, 0.01))
    k[0, 1] = alpha * k[0, 0]
    say_camera("fisheye", k, d)
    points = np.column_stack([RANDOM.uniform(-3, 3, (8, 2)), RANDOM.uniform(0.5, 3, 8)])
    pixels = cv2.fisheye.projectPoints(points.reshape(-1, 1, 3), np.zeros(3), np.zeros(3), k,
                                       np.array(d), alpha=alpha)[0].reshape(-1, 2)
    for point, pixel in zip(points, pixels):
        say("point", *map(float, point), *map(float, pixel))
    k[0, 1] = 0  # which the inverse does not take
    say_camera("fisheye", k, d)
    pixels = np.floor(pixels)
    plane = cv2.fisheye.undistortPoints(pixels.reshape(-1, 1, 2), k, np.array(d),
                                        criteria=UNDISTORTED).reshape(-1, 2)
    for pixel, point in zip(pixels, plane):
        if abs(point).max() < 1e3:  # elsewhere it means that there is none
            say("pixel", *map(float, pixel), *map(float, point))


def omni_camera():
    k, d = matrix(), small(0.1, 0.02, 0.002, 0.002)
    xi = float(RANDOM.uniform(0.6, 1.8))
    k[0, 1] = RANDOM.uniform(-2, 2)
    say_camera("omni", k, d, xi)
    points = np.column_stack([RANDOM.uniform(-3, 3, (8, 2)), RANDOM.uniform(0.5, 3, 8)])
    pixels = cv2.omnidir.projectPoints(points.reshape(-1, 1, 3), np.zeros(3), np.zeros(3), k, xi,
                                       np.array(d))[0].reshape(-1, 2)
    for point, pixel in zip(points, pixels):
        say("point", *map(float, point), *map(float, pixel))


def rotation():
    vector = RANDOM.uniform(-1.7, 1.7, 3)
    say("rotation", *map(float, vector), *map(float, cv2.Rodrigues(vector)[0].ravel()))


def between(vertical):
    """A rotation and a translation of a stereo pair."""
    rotation = cv2.Rodrigues(RANDOM.uniform(-0.06, 0.06, 3))[0]
    offset = RANDOM.uniform(-0.03, 0.03, 3)
    offset[1 if vertical else 0] = -0.3
    return rotation, offset


def stereo(count, vertical, alpha, zero):
    """A pair of cameras of that many coefficients; 0: fisheyes."""
    size = (1280, 960)
    pair = []
    for _ in range(2):
        k, d = matrix(), brown(count) if count else small(0.02, 0.003, 0.001, 0.0003)
        say_camera("brown" if count else "fisheye", k, d)
        pair += [k, np.array(d)]
    rotation, offset = between(vertical)
    if count:
        flags = cv2.CALIB_ZERO_DISPARITY if zero else 0
        found = cv2.stereoRectify(*pair, size, rotation, offset, flags=flags, alpha=alpha)[:5]
    else:
        flags = cv2.fisheye.CALIB_ZERO_DISPARITY if zero else 0
        found = cv2.fisheye.stereoRectify(*pair, size, rotation, offset, flags, balance=alpha)
    numbers = [np.column_stack([rotation, offset]), *found]
    say("stereo", float(alpha), int(zero), *(float(n) for m in numbers for n in m.ravel()))


def difference(count, distance, fit):
    """Two calibrations that differ a little, and some pixels of how much."""
    models = []
    k, d = matrix(), [0.4 * number for number in brown(count)]
    for _ in range(2):
        say_camera("brown", k, d)
        numbers = np.array([k[0, 0], k[1, 1], k[0, 2], k[1, 2], *d])
        models.append(mrcal.cameramodel(intrinsics=(f"LENSMODEL_OPENCV{count}", numbers),
                                        imagersize=(1280, 960)))
        k = k + np.array([[RANDOM.uniform(-2, 2), 0, 4], [0, RANDOM.uniform(-2, 2), -3], [0, 0, 0]])
        d = [x + y for x, y in zip(d, small(0.004, 0.002, 0.0005, 0.0005, 0.0003, 0.004, 0.001,
                                            0.0002)[:count])]
    columns = 60
    _, by, _, rt = mrcal.projection_diff(models, gridn_width=columns, use_uncertainties=False,
                                         distance=distance, focus_radius=1e6,
                                         intrinsics_only=not fit)
    places = [(row, column) for row in (0, 11, 22, 44) for column in (0, 20, 30, 59)]
    say("difference", columns, float(distance or 0), int(fit), *map(float, rt[:3].ravel()),
        *(number for row, column in places
          for number in (row, column, *map(float, by[row, column]))))


def target():
    """A board that is seen with some noise, and the pose that fits best."""
    k, d = matrix(), brown(5)
    say_camera("brown", k, d)
    z = float(RANDOM.uniform(-0.1, 0.1))
    board = np.array([[0.03 * (i % 9), 0.03 * (i // 9), z] for i in range(54)])
    vector, offset = RANDOM.uniform(-0.4, 0.4, 3), np.array([-0.1, -0.08, RANDOM.uniform(0.4, 0.8)])
    pixels = cv2.projectPoints(board, vector, offset, k, np.array(d))[0].reshape(-1, 2)
    pixels += RANDOM.normal(0, 0.3, pixels.shape)
    say("target", z, *(float(n) for p, q in zip(board, pixels) for n in (p[0], p[1], *q)))
    _, vector, offset = cv2.solvePnP(board, pixels, k, np.array(d), vector, offset, True)
    for _ in range(20):
        vector, offset = cv2.solvePnPRefineLM(board, pixels, k, np.array(d), vector, offset)
    left = cv2.projectPoints(board, vector, offset, k, np.array(d))[0].reshape(-1, 2) - pixels
    say("pose", float(np.sqrt((left ** 2).sum(axis=1).mean())), *map(float, vector.ravel()),
        *map(float, offset.ravel()))


def resize(before, after):
    """A row of pixels that hold their own place tells where each comes from."""
    row = np.tile(np.arange(before, dtype=np.float64), (4, 1))
    scaled = cv2.resize(row, (after, 4), interpolation=cv2.INTER_LINEAR)
    for u in (after // 3, after // 2):
        say("resize", before, after, u, float(scaled[0, u]))


def turn(quarters):
    """The same of an image that is turned."""
    width, height = 7, 5
    image = np.zeros((height, width))
    image[1, 2] = 1
    how = {1: cv2.ROTATE_90_CLOCKWISE, 2: cv2.ROTATE_180, 3: cv2.ROTATE_90_COUNTERCLOCKWISE}
    v, u = np.argwhere(cv2.rotate(image, how[quarters]))[0]
    say("turn", quarters, width, height, 2, 1, int(u), int(v))


def main():
    np.random.seed(20)  # of which mrcal takes where it starts
    print(f"# Numbers of OpenCV {cv2.__version__} and mrcal 2.2 (made by make_reference.py).")
    for count in (4, 5, 8, 12, 14):
        for _ in range(2):
            brown_camera(count)
    for _ in range(4):
        fisheye_camera()
        omni_camera()
        rotation()
    say("size", 1280, 960)
    for count in (4, 5, 8, 14, 0):
        for vertical in (False, True) if count else (False,):
            for alpha in (-1, 0, 0.4, 1) if count else (0, 0.5, 1):
                stereo(count, vertical, alpha, alpha != 0.4)
    for count in (4, 5, 8):
        for distance in (None, 2.0):
            for fit in (True, False):
                difference(count, distance, fit)
    for _ in range(4):
        target()
    for before, after in ((100, 50), (100, 200), (90, 60)):
        resize(before, after)
    for quarters in (1, 2, 3):
        turn(quarters)
    return 0


if __name__ == "__main__":
    sys.exit(main())
