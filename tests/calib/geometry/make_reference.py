#!/usr/bin/env python3
"""Takes from OpenCV the numbers that the tests of calib/geometry compare with.

    make_reference.py > reference.txt

Needs Debian's python3-opencv. A line is one of

    camera LENS fx fy skew cx cy COUNT COEFFICIENT... [XI]
    point x y z u v      projected by that camera
    pixel u v x y        undistorted: a point of the plane z = 1
    rotation x y z NINE  a rotation vector and its matrix
    stereo ...           see stereo() below

The cameras are random ones; the seed is fixed.
"""

import sys

import cv2
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


def main():
    print("# Numbers of OpenCV", cv2.__version__, "(made by make_reference.py).")
    for count in (4, 5, 8, 12, 14):
        for _ in range(2):
            brown_camera(count)
    for _ in range(4):
        fisheye_camera()
        omni_camera()
        rotation()
    return 0


if __name__ == "__main__":
    sys.exit(main())
