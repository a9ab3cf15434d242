#!/usr/bin/env python3
"""Has OpenCV and mrcal judge what calib computes, on random cameras.

    judge.py CALIB [CAMERAS]

Needs Debian's python3-opencv, python3-mrcal and mrcal. For each lens that a record holds, as many
random cameras (1000 unless said) are projected with, each its points and its pixels, as many make
tables of an image without distortion; as many pairs are rectified, and as many compared. A fiftieth
is turned into another lens, which takes mrcal seconds each, and calibrated by OpenCV, whose errors
are to be found again. Wild but real ones are among them: images of 2 x 2, skew, 190 degrees. The
seed is fixed. lens_judge.py has the lenses that no record holds. Exit status: 0, they agree; 1, they
do not, and which camera it was is told.
"""

import json
import math
import pathlib
import re
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
        self.skew = float(RANDOM.uniform(-0.01, 0.01) * self.fx)

    def matrix(self):
        return np.array([[self.fx, self.skew, self.cx], [0, self.fy, self.cy], [0, 0, 1]])

    def text(self):
        d = list(map(float, self.d))
        k, p = (d[:2] + d[4:], d[2:4]) if self.count else (d, [])
        return (f"fx: {self.fx!r} fy: {self.fy!r} skew: {self.skew!r} cx: {self.cx!r} cy: {self.cy!r} "
                f"k: {k} p: {p} width: {self.size[0]} height: {self.size[1]}")

    def project(self, points):
        points = np.asarray(points, dtype=float).reshape(-1, 1, 3)
        zero = np.zeros(3)
        if self.count:
            # OpenCV takes skew with a fisheye alone: here only what the lens does is its.
            plane = cv2.projectPoints(points, zero, zero, np.eye(3), self.d)[0].reshape(-1, 2)
            pixels = plane @ self.matrix()[:2, :2].T + (self.cx, self.cy)
        else:
            pixels = cv2.fisheye.projectPoints(points, zero, zero, self.matrix(), self.d,
                                               alpha=self.skew / self.fx)[0]
        return pixels.reshape(-1, 2)


class Judge:
    """Runs calib, and keeps count."""

    def __init__(self, calib, folder):
        self.calib, self.folder = calib, folder
        self.worst, self.told = {}, ""

    def write(self, name, text):
        path = self.folder / name
        path.write_text(text, encoding="utf-8")
        return path

    def run(self, *words, fails=False):
        done = subprocess.run([self.calib, *map(str, words)], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, check=False, text=True)
        if (done.returncode == 2) != fails:
            sys.exit(f"judge: calib {' '.join(map(str, words))} ended with {done.returncode}: "
                     f"{done.stderr}")
        self.told = done.stderr
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
        judge.compare("unproject, 190 degrees", points, judge.table("unproject", record, pixels), 1e-9,
                      camera.text())
    print(f"190 degrees: {cameras} cameras")


def remap_table(judge, count, cameras):
    """Where the pixels of an undistorted image come from. OpenCV's table holds floats."""
    lens = f"{count} of Brown" if count else "fisheye"
    make = cv2.initUndistortRectifyMap if count else cv2.fisheye.initUndistortRectifyMap
    filled = 0.0
    for number in range(cameras):
        camera = Camera(count, (2, 2) if number % 50 == 0 else (64, 48), 0.3)
        camera.skew = 0.0  # which OpenCV does not take
        width, height = camera.size
        record = judge.write("camera.CameraIntrinsics.txtpb", camera.text())
        image, table = judge.folder / "image.png", judge.folder / "map.npy"
        cv2.imwrite(str(image), np.zeros((height, width), np.uint8))
        judge.run("undistort-image", record, image, "--output", judge.folder / "out.png", "--map", table)
        expected = np.dstack(make(camera.matrix(), camera.d, np.eye(3), camera.matrix(), camera.size,
                                  cv2.CV_32FC1))
        actual = np.load(table)
        # OpenCV has a number beyond the lens, too.
        there = np.isfinite(actual)
        filled += there.mean() / cameras
        rounding = np.spacing(np.abs(expected)).astype(float) / 2
        off = np.maximum(np.abs(expected.astype(float) - actual) - rounding, 0)[there]
        judge.compare(f"remap table, {lens}, beside the rounding to float", 0, off, 1e-6, camera.text())
        if not there.any():
            continue
        rows, columns = np.nonzero(there[:, :, 0])
        rays = np.column_stack([(columns - camera.cx) / camera.fx, (rows - camera.cy) / camera.fy,
                                np.ones(len(rows))])
        judge.compare(f"remap table, {lens}, in double", camera.project(rays), actual[rows, columns],
                      1e-9, camera.text())
    if filled < 0.9:
        sys.exit(f"judge: only {filled:.0%} of the remap tables is filled: {lens}")
    print(f"remap tables, {lens}: {cameras} cameras")


def read_matrices(text):
    """What rectify wrote."""
    return [np.array(list(map(float, line.split("[")[1].rstrip("]").split(","))))
            for line in text.splitlines() if "data:" in line]


def rectification(judge, count, pairs):
    """Pairs of all kinds."""
    lens, refused = f"{count} of Brown" if count else "fisheye", 0
    for number in range(pairs):
        size = (2, 2) if number % 50 == 0 else (1280, 960)
        left, right = (Camera(count, size, 0.25) for _ in range(2))
        for camera in (left, right):
            camera.skew = 0.0
        if not count:
            left.fx, left.fy, right.fx, right.fy = RANDOM.uniform(0.47, 0.78, 4) * size[0]
        rotation = cv2.Rodrigues(RANDOM.uniform(-0.1, 0.1, 3))[0]
        offset = RANDOM.uniform(-0.05, 0.05, 3)
        offset[1 if count and number % 4 == 0 else 0] = -0.3
        transform = np.vstack([np.column_stack([rotation, offset]), [0, 0, 0, 1]])
        numbers = ", ".join(map(repr, map(float, transform.ravel())))
        record = judge.write("pair.RobotCalibration.txtpb",
                             f"camera {{ intrinsics {{ {left.text()} }} }} camera {{ intrinsics "
                             f"{{ {right.text()} }} extrinsics {{ a: [{numbers}] }} }}")
        alpha = float(RANDOM.uniform(0, 1))
        cameras = (left.matrix(), left.d, right.matrix(), right.d, left.size, rotation, offset)
        if count:
            expected = cv2.stereoRectify(*cameras, flags=cv2.CALIB_ZERO_DISPARITY, alpha=alpha)[:5]
        else:
            expected = cv2.fisheye.stereoRectify(*cameras, cv2.fisheye.CALIB_ZERO_DISPARITY,
                                                 balance=alpha)
        # OpenCV also has images that are mirrored, which are told to be none.
        mirrored = not expected[2][0, 0] > 0
        refused += mirrored
        text = judge.run("rectify", record, "--alpha", repr(alpha), fails=mirrored)
        if mirrored:
            continue
        found = read_matrices(text)
        for name, one, other in zip(("R1", "R2", "P1", "P2", "Q"), expected, found):
            scale = max(1.0, float(np.abs(one).max()) / 1000)
            judge.compare(f"rectify, {lens}, {name}", one.ravel() / scale, other / scale, 1e-9,
                          record.read_text(encoding="utf-8"))
    if refused > pairs / 20:
        sys.exit(f"judge: {refused} of {pairs} pairs are refused: {lens}")
    print(f"rectified, {lens}: {pairs} pairs, {refused} of them refused")


def mrcal_difference(models, fit):
    """The displacements, and the sum of fourth powers that mrcal's rotation is to make least. What
    mrcal projects across a fold does not come back from the pixel, and is none."""
    by, _, pixels, transform = mrcal.projection_diff(
        models, gridn_width=60, use_uncertainties=False, distance=None, focus_radius=1e6 if fit else 0)
    before, after = (mrcal.unproject(pixels, *model.intrinsics(), normalize=True) for model in models)
    turned = mrcal.transform_point_Rt(transform, before)
    lens = models[1].intrinsics()
    again = mrcal.unproject(mrcal.project(turned, *lens), *lens, normalize=True)
    by = np.where(np.linalg.norm(again - turned, axis=-1) < 1e-5, by, np.nan)
    apart = 2 - 2 * (turned * after).sum(axis=-1)
    return by, np.nansum(apart ** 2)


def difference(judge, count, pairs):
    """The largest and the mean displacement, as mrcal has them."""
    np.random.seed(18)
    folded = again = at_fold = 0
    for _ in range(pairs):
        camera = Camera(count, wild=0.2)
        camera.fx = camera.fy = RANDOM.uniform(600, 1000)
        camera.skew = 0.0  # which mrcal does not take
        models, records = [], []
        for name in ("before", "after"):
            numbers = np.array([camera.fx, camera.fy, camera.cx, camera.cy, *camera.d])
            models.append(mrcal.cameramodel(intrinsics=(f"LENSMODEL_OPENCV{count}", numbers),
                                            imagersize=camera.size))
            records.append(judge.write(f"{name}.CameraIntrinsics.txtpb", camera.text()))
            camera.cx += 3
            camera.d = camera.d * 1.02
        words = judge.run("diff", "--pixels", *records).split()
        # Where a lens does not reach the corners, mrcal fits the rotation to what is seen behind the
        # fold, too: there the lenses alone are compared.
        folds = "beyond" in words
        folded += folds
        if folds:
            words = judge.run("diff", "--pixels", "--no-fit", *records).split()
        by = mrcal_difference(models, not folds)[0]
        # "0.3981 pixels on average, 3.516 at most": four digits.
        found = [float(words[words.index("on") - 2]), float(words[words.index("at") - 1])]
        if max(abs(np.nanmean(by) - found[0]), abs(np.nanmax(by) - found[1])) > 0.01:
            # mrcal starts at random, and may stop early: the best of some starts.
            by = min((mrcal_difference(models, not folds) for _ in range(20)), key=lambda one: one[1])[0]
            again += 1
        seen = np.isfinite(by)
        beyond_lens = int(words[words.index("are") - 4]) if folds else 0
        which = "diff --pixels --no-fit" if folds else "diff --pixels"
        # Whether a pixel at the very fold is seen, is for neither to say.
        judge.compare(f"{which}, pixels beyond a lens", (~seen).sum(), beyond_lens, 2, camera.text())
        if (~seen).sum() != beyond_lens:
            at_fold += 1
            continue
        judge.compare(f"{which}, mean", by[seen].mean(), found[0], 0.01, camera.text())
        judge.compare(f"{which}, largest", by[seen].max(), found[1], 0.01, camera.text())
    told = (f"{pairs} pairs, {folded} of them without a rotation, {again} with more starts of mrcal's, "
            f"{at_fold} with a pixel at the fold, which are not compared")
    if folded > pairs / 4 or again > pairs / 4 or at_fold > pairs / 100:
        sys.exit(f"judge: differences, {count} of Brown: {told}")
    print(f"differences, {count} of Brown: {told}")


def conversion(judge, count, target, model, cameras):
    """A lens of another model is no worse than mrcal-convert-lensmodel's, and as good as is told."""
    what, found, failed = f"convert-lens, {count} to {target} of Brown", [], 0
    while len(found) < cameras:
        camera = Camera(count, wild=0.4)
        camera.skew = 0.0  # which mrcal does not take
        source = mrcal.cameramodel(
            intrinsics=(f"LENSMODEL_OPENCV{count}",
                        np.array([camera.fx, camera.fy, camera.cx, camera.cy, *camera.d])),
            imagersize=camera.size)
        pixels = np.dstack(np.meshgrid(np.linspace(0, 1279, 120), np.linspace(0, 959, 90)))
        rays = mrcal.unproject(pixels, *source.intrinsics())
        record = judge.write("camera.CameraIntrinsics.txtpb", camera.text())
        # One that folds within the image is not one to convert.
        seen = judge.table("unproject", record, pixels.reshape(-1, 2)[::97])
        if not np.isfinite(seen).all():
            continue
        judge.run("convert-lens", record, "--to-model", model, "--max-error", "1000", "--output",
                  judge.folder / "ours.CameraIntrinsics.txtpb")
        told = judge.told.split("RMS ")[1].split()
        ours = Camera(target)
        for line in (judge.folder / "ours.CameraIntrinsics.txtpb").read_text().splitlines():
            name, value = line.split(": ", 1)
            setattr(ours, name, json.loads(value) if value[0] == "[" else float(value))
        ours.d = np.array(ours.k[:2] + ours.p + ours.k[2:])
        source.write(str(judge.folder / "theirs.cameramodel"))
        made = subprocess.run(
            ["mrcal-convert-lensmodel", "--sampled", "--intrinsics-only", "--radius", "0", "--gridn",
             "40", "30", "--num-trials", "5", "--force", "--outdir", judge.folder,
             f"LENSMODEL_OPENCV{target}", judge.folder / "theirs.cameramodel"],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False, text=True)
        if "No valid intrinsics found" in made.stdout:
            failed += 1
            if failed > cameras / 4:
                sys.exit(f"judge: mrcal-convert-lensmodel found {failed} times nothing")
            continue
        if made.returncode != 0:
            sys.exit(f"judge: mrcal-convert-lensmodel ended with {made.returncode}: {made.stdout}")
        theirs = mrcal.cameramodel(
            str(judge.folder / f"theirs-LENSMODEL_OPENCV{target}.cameramodel"))
        rms = []
        for again in (ours.project(rays), mrcal.project(rays, *theirs.intrinsics()).reshape(-1, 2)):
            off = np.linalg.norm(again - pixels.reshape(-1, 2), axis=1)
            rms.append(math.sqrt((off * off).mean()))
            if len(rms) == 1:
                judge.compare("convert-lens, RMS that is told", rms[0], float(told[0]),
                              1e-4 + 0.01 * rms[0], camera.text())
                judge.compare("convert-lens, largest that is told", off.max(), float(told[4]),
                              1e-4 + 0.01 * off.max(), camera.text())
        # The grids that are fitted differ.
        judge.compare(f"{what}, RMS beyond mrcal's", 0, max(0, rms[0] - 1.02 * rms[1]), 1e-5,
                      camera.text())
        found.append(rms)
    ours, theirs = np.median(found, axis=0)
    print(f"{what}: {cameras} cameras, RMS {ours:.3g} pixels, mrcal's {theirs:.3g} (medians); "
          f"of {failed} more mrcal found none")


def residuals(judge, count, cameras):
    """The errors of OpenCV's own calibrations, from the files that its calibration writes."""
    views, columns, rows = 8, 9, 6
    grid = np.array([[25.0 * x, 25.0 * y, 0] for y in range(rows) for x in range(columns)], np.float32)
    lens = f"{count} of Brown" if count else "fisheye"
    for _ in range(cameras):
        camera = Camera(count, wild=0.2)
        camera.fx, camera.fy, camera.skew = *RANDOM.uniform(700, 1100, 2), 0.0
        seen = []
        while len(seen) < views:
            turn = cv2.Rodrigues(RANDOM.uniform(-0.5, 0.5, 3))[0]
            place = (*RANDOM.uniform(-60, 60, 2), RANDOM.uniform(250, 400))
            points = (grid - (100, 62.5, 0)) @ turn.T + place
            seen.append((camera.project(points) + RANDOM.normal(0, 0.3, (len(grid), 2))).astype(np.float32))
        if count:
            found = cv2.calibrateCameraExtended([grid] * views, seen, camera.size, None, None,
                                                criteria=UNDISTORTED)
            rms, matrix, d, by_view = found[0], found[1], found[2].ravel()[:count], found[-1].ravel()
        else:
            rms, matrix, d = cv2.fisheye.calibrate(
                [grid.reshape(-1, 1, 3).astype(float)] * views,
                [one.reshape(-1, 1, 2).astype(float) for one in seen], camera.size,
                camera.matrix(), np.zeros((4, 1)), flags=cv2.fisheye.CALIB_USE_INTRINSIC_GUESS |
                cv2.fisheye.CALIB_RECOMPUTE_EXTRINSIC | cv2.fisheye.CALIB_FIX_SKEW)[:3]
            by_view = np.zeros(0)
        path = judge.folder / "calibration.yml"
        storage = cv2.FileStorage(str(path), cv2.FILE_STORAGE_WRITE)
        for name, value in (("image_width", camera.size[0]), ("image_height", camera.size[1]),
                            ("camera_matrix", matrix), ("distortion_coefficients", d.reshape(-1, 1)),
                            ("fisheye_model", 0 if count else 1), ("avg_reprojection_error", rms),
                            ("image_points", np.array(seen)), ("grid_points", grid.reshape(-1, 1, 3))):
            storage.write(name, value)
        storage.release()
        record = judge.folder / "calibrated.CameraCalibration.txtpb"
        judge.run("import", path, "--from", "opencv", "--output", record)
        told = re.findall(r"RMS ([0-9.e-]+)", judge.run("residuals", record, "--views", views))
        # Four digits are printed, and OpenCV stops early.
        judge.compare(f"residuals, {lens}, all", rms, float(told[0]), 2e-4, path)
        judge.compare(f"residuals, {lens}, by view", by_view,
                      list(map(float, told[1:1 + len(by_view)])), 2e-3, path)
    print(f"residuals, {lens}: {cameras} calibrations")


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    cameras = int(sys.argv[2]) if len(sys.argv) == 3 else 1000
    with tempfile.TemporaryDirectory() as folder:
        judge = Judge(sys.argv[1], pathlib.Path(folder))
        for count in (4, 5, 8, 0):
            projection(judge, count, cameras)
            rectification(judge, count, cameras)
            remap_table(judge, count, cameras)
        beyond(judge, cameras)
        for count in (4, 5, 8):
            difference(judge, count, cameras)
        for count in (5, 0):  # with more of Brown's, OpenCV's fits come to lenses that fold
            residuals(judge, count, max(1, cameras // 50))
        for count, target, model in ((4, 8, "rational_polynomial"), (8, 5, "plumb_bob")):
            conversion(judge, count, target, model, max(1, cameras // 50))
        for what, off in judge.worst.items():
            print(f"{what}: off by {off:.2g} at most")


if __name__ == "__main__":
    main()
