#!/usr/bin/env python3
"""Has OpenCV judge the lenses of libcalibration_geometry that no record holds, on random cameras.

    lens_judge.py [CAMERAS]

Needs Debian's python3-opencv, and the package calibration_protolib with its library. For each lens
as many random cameras (1000 unless said) project points, up to a right angle and beyond where the
lens sees that far, and come back from the pixels. OpenCV knows Brown's with thin prism and tilt and
the unified model of Mei; the others are held to the formulas of the papers, as numpy has them. A
fiftieth has an image of 2 x 2, all have skew. The seed is fixed. Exit status: 0, they agree; 1, they
do not, and which camera it was is told.
"""

import math
import sys

import cv2
import numpy as np

from calibration_protolib import geometry
from calibration_protolib.geometry import Camera, Lens

RANDOM = np.random.default_rng(19)
POINTS = 30
BROWN = (0.3, 0.1, 0.004, 0.004, 0.05, 0.2, 0.05, 0.01, 0.004, 0.002, 0.004, 0.002, 0.05, 0.05)
ZERO = np.zeros(3)


def small(sizes):
    return [float(size * RANDOM.uniform(-1, 1)) for size in sizes]


def between(low, high):
    return float(RANDOM.uniform(low, high))


# Each lens: what is random of a camera, how far from the axis it is asked, and where points of length
# 1 land in the plane.


def brown(count):
    return lambda: (small(BROWN[:count]), ()), 0.9, lambda camera, points: cv2.projectPoints(
        points.reshape(-1, 1, 3), ZERO, ZERO, np.eye(3), np.array(camera.distortion))[0].reshape(-1, 2)


def omni(camera, points):
    return cv2.omnidir.projectPoints(points.reshape(-1, 1, 3), ZERO, ZERO, np.eye(3), camera.shape[0],
                                     np.array(camera.distortion))[0].reshape(-1, 2)


def double_sphere(camera, points):
    x, y, z = points.T
    xi, alpha = camera.shape
    d1 = np.sqrt(x * x + y * y + z * z)
    d2 = np.sqrt(x * x + y * y + (xi * d1 + z) ** 2)
    return (points[:, :2].T / (alpha * d2 + (1 - alpha) * (xi * d1 + z))).T


def extended_unified(camera, points):
    x, y, z = points.T
    alpha, beta = camera.shape
    return (points[:, :2].T / (alpha * np.sqrt(beta * (x * x + y * y) + z * z) + (1 - alpha) * z)).T


def field_of_view(camera, points):
    w = camera.distortion[0]
    plane = points[:, :2] / points[:, 2:]
    radius = np.linalg.norm(plane, axis=1)
    return (plane.T / radius * np.arctan(2 * radius * math.tan(w / 2)) / w).T


def thin_prism_fisheye(camera, points):
    k1, k2, p1, p2, k3, k4, _, _, s1, s2, s3, s4 = camera.distortion
    radius = np.linalg.norm(points[:, :2], axis=1)
    u, v = points[:, :2].T / radius * np.arctan2(radius, points[:, 2])
    r2 = u * u + v * v
    radial = np.polyval([k4, k3, k2, k1, 1], r2)
    return np.column_stack([
        u * radial + 2 * p1 * u * v + p2 * (r2 + 2 * u * u) + s1 * r2 + s2 * r2 * r2,
        v * radial + 2 * p2 * u * v + p1 * (r2 + 2 * v * v) + s3 * r2 + s4 * r2 * r2])


def division(camera, points):
    """From where the inverse leads: the root of lambda r^2 sin - r cos + sin = 0 by bisection, in the
    angle's terms tan(angle) = r / (1 + lambda r^2)."""
    radius = np.linalg.norm(points[:, :2], axis=1)
    angle = np.arctan2(radius, points[:, 2])
    coefficient = camera.distortion[0]
    low, high = np.zeros(len(points)), np.full(len(points), 1e3)
    if coefficient > 0:
        high[:] = 1 / math.sqrt(coefficient)
    for _ in range(200):
        middle = (low + high) / 2
        short = np.arctan2(middle, 1 + coefficient * middle ** 2) < angle
        low, high = np.where(short, middle, low), np.where(short, high, middle)
    return (points[:, :2].T / radius * low).T


LENSES = {
    "12 of Brown": (Lens.BROWN, *brown(12)),
    "14 of Brown": (Lens.BROWN, *brown(14)),
    "omni": (Lens.OMNI, lambda: (small(BROWN[:4]), [between(0.5, 2.2)]), 1.1, omni),
    "double sphere": (Lens.DOUBLE_SPHERE,
                      lambda: ((), [between(-0.4, 0.6), between(0.2, 0.9)]), 1.66, double_sphere),
    "extended unified": (Lens.EXTENDED_UNIFIED,
                         lambda: ((), [between(0.2, 0.9), between(0.6, 2)]), 1.66, extended_unified),
    "field of view": (Lens.FIELD_OF_VIEW, lambda: ([between(0.3, 1.5)], ()), 1.5, field_of_view),
    "thin prism fisheye": (
        Lens.THIN_PRISM_FISHEYE,
        lambda: ([0.1 * d for d in small(BROWN[:6])] + [0, 0] + small(BROWN[8:12]), ()), 1.66,
        thin_prism_fisheye),
    "division": (Lens.DIVISION, lambda: ([between(-0.6, 0.2)], ()), 1.66, division),
}


def judge(name, cameras):
    lens, make, widest, formula = LENSES[name]
    compared, worst, back = 0, 0.0, 0.0
    for number in range(cameras):
        width, height = (2, 2) if number % 50 == 0 else (1280, 960)
        fx, fy = (between(0.3, 0.9) * width for _ in range(2))
        distortion, shape = make()
        camera = Camera(lens, fx, fy, between(-0.01, 0.01) * fx, between(0.4, 0.6) * width,
                        between(0.4, 0.6) * height, distortion, shape, width, height)
        angle, turn = RANDOM.uniform(0.01, widest, POINTS), RANDOM.uniform(0, 2 * math.pi, POINTS)
        points = np.column_stack([np.sin(angle) * np.cos(turn), np.sin(angle) * np.sin(turn),
                                  np.cos(angle)])
        pixels, status = geometry.project(camera, points)
        there = status == 0
        if not there.any():
            continue
        compared += int(there.sum())
        plane = formula(camera, points[there])
        matrix = np.array([[camera.fx, camera.skew], [0, camera.fy]])
        expected = plane @ matrix.T + (camera.cx, camera.cy)
        # A lens may spread what is far from the axis over thousands of pixels.
        scale = np.maximum(1, np.abs(expected).max(axis=1) / 1000)
        worst = max(worst, float((np.abs(expected - pixels[there]).max(axis=1) / scale).max()))
        rays, status = geometry.unproject(camera, pixels[there])
        again = geometry.project(camera, rays).pixels
        off = float((np.abs(again - pixels[there]).max(axis=1) / scale).max())
        back = max(back, off)
        if not worst <= 1e-9 or status.any() or not back <= 1e-8:
            sys.exit(f"lens_judge: {name}: off by {worst} and {back}, {status}: {camera}")
    if compared < cameras * POINTS // 3:
        sys.exit(f"lens_judge: only {compared} points were compared of {name}")
    print(f"{name}: {compared} points of {cameras} cameras: project is off by {worst:.2g} at most, "
          f"unproject by {back:.2g}")


def main():
    if len(sys.argv) > 2:
        sys.exit(__doc__)
    for name in LENSES:
        judge(name, int(sys.argv[1]) if len(sys.argv) == 2 else 1000)


if __name__ == "__main__":
    main()
