#!/usr/bin/env python3
"""Has OpenCV and mrcal judge what calib computes, on random cameras.

    judge.py CALIB [CAMERAS]

Needs Debian's python3-opencv and python3-mrcal. For each lens, as many random cameras (1000 unless
said) are projected with, each its points and its pixels; as many pairs are rectified. Wild but real
ones are among them: an image of 2 x 2, skew, 190 degrees. The seed is fixed. Exit status: 0, they
agree; 1, they do not, and which camera it was is told.
"""

import math
import pathlib
import subprocess
import sys
import tempfile

import cv2
import mrcal
import numpy as np

RANDOM = np.random.default_rng(18)
UNDISTORTED = (cv2.TERM_CRITERIA_COUNT + cv2.TERM_CRITERIA_EPS, 5000, 1e-16)
BROWN = (0.3, 0.1, 0.004, 0.004, 0.05, 0.2, 0.05, 0.01)


class Camera:
    """A random camera, and its record."""

    def __init__(self, count, size=(1280, 960), wild=1.0):
        self.size = size
        self.fx, self.fy = RANDOM.uniform(0.3, 0.9, 2) * size[0]
        self.cx, self.cy = (RANDOM.uniform(0.4, 0.6) * n for n in size)
        self.count = count
        sizes = BROWN[:count] if count else (0.08, 0.02, 0.01, 0.002)
        self.d = np.array([wild * s * RANDOM.uniform(-1, 1) for s in sizes])
        # OpenCV takes skew with a fisheye alone.
        self.skew = 0.0 if count else float(RANDOM.uniform(-0.01, 0.01) * self.fx)

    def matrix(self, skew=True):
        return np.array([[self.fx, self.skew if skew else 0, self.cx], [0, self.fy, self.cy],
                         [0, 0, 1]])

    def text(self):
        d = list(map(float, self.d))
        k, p = (d[:2] + d[4:], d[2:4]) if self.count else (d, [])
        return (f"fx: {self.fx!r} fy: {self.fy!r} skew: {self.skew!r} cx: {self.cx!r} cy: {self.cy!r} "
                f"k: {k} p: {p} width: {self.size[0]} height: {self.size[1]}")

    def project(self, points):
        points = np.asarray(points, dtype=float).reshape(-1, 1, 3)
        zero = np.zeros(3)
        if self.count:
            pixels = cv2.projectPoints(points, zero, zero, self.matrix(), self.d)[0]
        else:
            pixels = cv2.fisheye.projectPoints(points, zero, zero, self.matrix(), self.d,
                                               alpha=self.skew / self.fx)[0]
        return pixels.reshape(-1, 2)


class Judge:
    """Runs calib, and keeps count."""

    def __init__(self, calib, folder):
        self.calib, self.folder = calib, folder
        self.worst = {}

    def write(self, name, text):
        path = self.folder / name
        path.write_text(text, encoding="utf-8")
        return path

    def run(self, *words):
        done = subprocess.run([self.calib, *map(str, words)], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, check=False, text=True)
        if done.returncode not in (0, 1):
            sys.exit(f"judge: calib {' '.join(map(str, words))} ended with {done.returncode}: "
                     f"{done.stderr}")
        return done.stdout

    def table(self, command, record, rows):
        points = self.write("points.txt", "".join(" ".join(map(repr, map(float, row))) + "\n"
                                                  for row in rows))
        lines = self.run(command, record, points).splitlines()
        return np.array([list(map(float, line.split())) for line in lines])

    def compare(self, what, expected, actual, tolerance, camera):
        expected, actual = np.asarray(expected), np.asarray(actual)
        off = float(np.abs(expected - actual).max()) if expected.size else 0.0
        self.worst[what] = max(self.worst.get(what, 0.0), off)
        if not off <= tolerance:
            sys.exit(f"judge: {what} is off by {off}, more than {tolerance}: {camera}")


def projection(judge, count, cameras):
    """Projection and its inverse."""
    compared = 0
    lens = f"{count} of Brown" if count else "fisheye"
    for number in range(cameras):
        camera = Camera(count, (2, 2) if number % 50 == 0 else (1280, 960))
        record = judge.write("camera.CameraIntrinsics.txtpb", camera.text())
        angle, turn = RANDOM.uniform(0, 0.9, 30), RANDOM.uniform(0, 2 * math.pi, 30)
        points = np.column_stack([np.sin(angle) * np.cos(turn), np.sin(angle) * np.sin(turn),
                                  np.cos(angle)])
        pixels = judge.table("project", record, points)
        there = np.isfinite(pixels[:, 0])
        compared += int(there.sum())
        if not there.any():
            continue
        # OpenCV also projects what has folded; it is not seen.
        judge.compare(f"project, {lens}", camera.project(points)[there], pixels[there], 1e-9,
                      camera.text())
        rays = judge.table("unproject", record, pixels[there])
        judge.compare(f"unproject, {lens}", pixels[there], camera.project(rays), 1e-8, camera.text())
        judge.compare(f"unproject after project, {lens}", points[there], rays, 1e-6, camera.text())
    if compared < 15 * cameras:
        sys.exit(f"judge: only {compared} points were compared of {lens}")
    print(f"{lens}: {compared} points of {cameras} cameras")


def beyond(judge, cameras):
    """Fisheyes of 190 degrees, which OpenCV does not project: the formula does."""
    for _ in range(cameras):
        camera = Camera(0)
        camera.d *= 0.1
        record = judge.write("camera.CameraIntrinsics.txtpb", camera.text())
        angle, turn = RANDOM.uniform(1.6, 1.65, 4), RANDOM.uniform(0, 2 * math.pi, 4)
        points = np.column_stack([np.sin(angle) * np.cos(turn), np.sin(angle) * np.sin(turn),
                                  np.cos(angle)])
        bent = angle * (1 + sum(k * angle ** (2 * i + 2) for i, k in enumerate(camera.d)))
        x, y = bent * np.cos(turn), bent * np.sin(turn)
        pixels = np.column_stack([camera.fx * x + camera.skew * y + camera.cx,
                                  camera.fy * y + camera.cy])
        judge.compare("project, 190 degrees", pixels, judge.table("project", record, points), 1e-9,
                      camera.text())


def remap_table(judge, count, cameras):
    """Where the pixels of an undistorted image come from. OpenCV's table holds floats."""
    for _ in range(cameras):
        camera = Camera(count, (64, 48), 0.3)
        record = judge.write("camera.CameraIntrinsics.txtpb", camera.text())
        image, table = judge.folder / "image.png", judge.folder / "map.npy"
        cv2.imwrite(str(image), np.zeros((48, 64), np.uint8))
        judge.run("undistort-image", record, image, "--output", judge.folder / "out.png", "--map", table)
        expected = cv2.initUndistortRectifyMap(camera.matrix(), camera.d, np.eye(3), camera.matrix(),
                                               camera.size, cv2.CV_32FC1)
        expected = np.dstack(expected).astype(float)
        actual = np.load(table)
        # OpenCV has a number beyond the lens, too.
        there = np.isfinite(actual)
        if there.mean() < 0.5:
            sys.exit(f"judge: most of the remap table is empty: {camera.text()}")
        judge.compare("remap table, beside the rounding to float", expected[there], actual[there],
                      1e-6 + float(np.spacing(np.float32(np.abs(expected).max()))), camera.text())
    print(f"remap tables: {cameras} cameras")


def read_matrices(text):
    """What rectify wrote."""
    return [np.array(list(map(float, line.split("[")[1].rstrip("]").split(","))))
            for line in text.splitlines() if "data:" in line]


def rectification(judge, count, pairs):
    """Pairs of all kinds."""
    for number in range(pairs):
        left, right = (Camera(count, wild=0.25) for _ in range(2))
        for camera in (left, right):
            camera.skew = 0.0
        if not count:
            left.fx, left.fy, right.fx, right.fy = RANDOM.uniform(600, 1000, 4)
        rotation = cv2.Rodrigues(RANDOM.uniform(-0.1, 0.1, 3))[0]
        offset = RANDOM.uniform(-0.05, 0.05, 3)
        offset[1 if count and number % 4 == 0 else 0] = -0.3
        transform = np.vstack([np.column_stack([rotation, offset]), [0, 0, 0, 1]])
        numbers = ", ".join(map(repr, map(float, transform.ravel())))
        record = judge.write("pair.RobotCalibration.txtpb",
                             f"camera {{ intrinsics {{ {left.text()} }} }} camera {{ intrinsics "
                             f"{{ {right.text()} }} extrinsics {{ a: [{numbers}] }} }}")
        alpha = float(RANDOM.uniform(0, 1))
        found = read_matrices(judge.run("rectify", record, "--alpha", repr(alpha)))
        cameras = (left.matrix(), left.d, right.matrix(), right.d, left.size, rotation, offset)
        if count:
            expected = cv2.stereoRectify(*cameras, flags=cv2.CALIB_ZERO_DISPARITY, alpha=alpha)[:5]
        else:
            expected = cv2.fisheye.stereoRectify(*cameras, cv2.fisheye.CALIB_ZERO_DISPARITY,
                                                 balance=alpha)
        lens = f"{count} of Brown" if count else "fisheye"
        for name, one, other in zip(("R1", "R2", "P1", "P2", "Q"), expected, found):
            scale = max(1.0, float(np.abs(one).max()) / 1000)
            judge.compare(f"rectify, {lens}, {name}", one.ravel() / scale, other / scale, 1e-9,
                          record.read_text(encoding="utf-8"))
    print(f"rectified: {pairs} pairs")


def difference(judge, count, pairs):
    """The largest and the mean displacement, as mrcal has them."""
    np.random.seed(18)
    for _ in range(pairs):
        before = Camera(count, wild=0.2)
        before.fx = before.fy = RANDOM.uniform(600, 1000)
        models, records = [], []
        for name in ("before", "after"):
            numbers = np.array([before.fx, before.fy, before.cx, before.cy, *before.d])
            models.append(mrcal.cameramodel(intrinsics=(f"LENSMODEL_OPENCV{count}", numbers),
                                            imagersize=before.size))
            records.append(judge.write(f"{name}.CameraIntrinsics.txtpb", before.text()))
            before.cx += 3
            before.d = before.d * 1.02
        by = mrcal.projection_diff(models, gridn_width=60, use_uncertainties=False, distance=None,
                                   focus_radius=1e6)[0]
        words = judge.run("diff", "--pixels", *records).split()
        # A lens need not reach the corners: calib counts these, mrcal has no number there.
        seen = np.isfinite(by)
        beyond_lens = int(words[words.index("are") - 4]) if "beyond" in words else 0
        judge.compare("diff --pixels, pixels beyond a lens", (~seen).sum(), beyond_lens, 0, records[0])
        # Four digits are printed.
        judge.compare("diff --pixels, mean", by[seen].mean(), float(words[words.index("on") - 2]), 0.01,
                      records[0])
        judge.compare("diff --pixels, largest", by[seen].max(), float(words[words.index("at") - 1]), 0.01,
                      records[0])
    print(f"differences: {pairs} pairs")


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    cameras = int(sys.argv[2]) if len(sys.argv) == 3 else 1000
    with tempfile.TemporaryDirectory() as folder:
        judge = Judge(sys.argv[1], pathlib.Path(folder))
        for count in (4, 5, 8, 0):
            projection(judge, count, cameras)
            rectification(judge, count, max(1, cameras // 4))
        for count in (4, 5, 8):
            remap_table(judge, count, max(1, cameras // 50))
        beyond(judge, cameras)
        for count in (4, 5, 8):
            difference(judge, count, max(1, cameras // 50))
        for what, off in judge.worst.items():
            print(f"{what}: off by {off:.2g} at most")


if __name__ == "__main__":
    main()
