"""The arithmetic of cameras from Python: the same numbers as from C++, every function and every
enumerator of the headers, refusals, and the example of the page.

    geometry_test.py HEADER-FOLDER PAGE

Ends with 77, for ctest's "Skipped", where numpy is not installed.
"""

import math
import pathlib
import re
import sys
import unittest

try:
    import numpy
except ImportError:
    print("skipped: needs Debian's package python3-numpy")
    sys.exit(77)

import page_example
from calibration_protolib import CameraIntrinsics, geometry, geometry_library
from calibration_protolib.geometry import Camera, GeometryError, Lens, Status

HEADERS, PAGE = pathlib.Path(sys.argv.pop(1)), pathlib.Path(sys.argv.pop(1))
LEFT = Camera(Lens.BROWN, 458.654, 457.296, 0, 367.215, 248.375,
              [-0.28340811, 0.07395907, 0.00019359, 1.76187114e-05], (), 752, 480)
RIGHT = Camera(Lens.BROWN, 457.587, 456.134, 0, 379.999, 255.238,
               [-0.28368365, 0.07451284, -0.00010473, -3.555907e-05], (), 752, 480)
FISHEYE = Camera(Lens.FISHEYE, 190.9, 190.9, 0, 254.9, 256.9, [0.0034, 0.0007, -0.002, 0.0002], (),
                 512, 512)
OMNI = Camera(Lens.OMNI, 400, 401, 0, 320, 240, [-0.2, 0.05, 0.001, 0], [1.1], 640, 480)
POSE = geometry.from_roll_pitch_yaw((0.0141, -0.0003, 0.0023), (0.11, -0.0001, 0.0009))


def near(actual, expected, tolerance=1e-9):
    numpy.testing.assert_allclose(actual, expected, rtol=0, atol=tolerance)


class Headers(unittest.TestCase):
    def test_every_function_is_declared(self):
        text = (HEADERS / "calibration_geometry_c.h").read_text(encoding="utf-8")
        declared = set(re.findall(r"\bcalibration_geometry_([a-z_]+)\(", text))
        self.assertEqual(declared, set(geometry_library._FUNCTIONS))
        for name in declared:
            self.assertTrue(callable(getattr(geometry, name)), name)

    def test_every_enumerator_is_there(self):
        text = (HEADERS / "calibration_geometry.h").read_text(encoding="utf-8")
        for kind in (Lens, Status):
            body = re.search(rf"enum class {kind.__name__} {{(.*?)}};", text, re.DOTALL).group(1)
            names = re.findall(r"^ *k(\w+)", body, re.MULTILINE)
            names = [re.sub(r"(?<!^)(?=[A-Z])", "_", name).upper() for name in names]
            self.assertEqual(names, [member.name for member in kind])
            self.assertEqual([int(member) for member in kind], list(range(len(names))))


class Cameras(unittest.TestCase):
    def test_pixels_are_where_they_look(self):
        generator = numpy.random.default_rng(1)
        for camera in (LEFT, FISHEYE, OMNI):
            pixels = generator.uniform((60, 60), (camera.width - 60, camera.height - 60), (500, 2))
            rays, status = geometry.unproject(camera, pixels)
            self.assertFalse(status.any(), camera)
            near(numpy.linalg.norm(rays, axis=1), 1)
            again = geometry.project(camera, 3 * rays)
            self.assertEqual((again.status.dtype, again.status.shape), (numpy.int32, (500,)))
            near(again.pixels, pixels)

    def test_numbers_of_cpp(self):  # those that examples/rectify_pair.cc prints
        near(geometry.unproject(LEFT, [[0, 0]]).rays, [[-0.660515, -0.448346, 0.602250]], 1e-6)
        pair = geometry.rectify(LEFT, RIGHT, geometry.invert(POSE))
        near((pair.baseline, pair.p1[0, 0], pair.p2[0, 3]), (0.110004, 456.715, -50.240352), 1e-6)
        self.assertFalse(pair.swapped or pair.vertical)

    def test_each_point_has_a_status(self):
        points = [[0, 0, 1], [0, 0, -1], [math.nan, 0, 1], [2, 0, 1]]
        folds = Camera(Lens.BROWN, 400, 400, 0, LEFT.cx, LEFT.cy, [-1 / 3])
        pixels, status = geometry.project(folds, points)
        self.assertEqual(list(status), [Status.OK, Status.BEHIND, Status.NOT_FINITE,
                                        Status.BEYOND_LENS])
        near(pixels[0], (LEFT.cx, LEFT.cy))
        self.assertTrue(numpy.isnan(pixels[1:]).all())
        self.assertEqual(geometry.explain(status[1]), "is behind the camera, or at its centre")
        broken = Camera(Lens.BROWN, -1, 1)
        self.assertEqual(list(geometry.project(broken, points).status), [Status.NOT_A_CAMERA] * 4)
        self.assertEqual(geometry.project(LEFT, numpy.empty((0, 3))).pixels.shape, (0, 2))

    def test_largest_angle(self):
        near(geometry.largest_angle(Camera(Lens.FISHEYE, 1, 1)), math.pi)
        near(geometry.largest_angle(Camera(Lens.BROWN, 1, 1, distortion=[-1 / 3])), math.pi / 4)

    def test_of_records(self):
        record = CameraIntrinsics(fx=3, fy=4, skew=0.5, cx=1, cy=2, k=[0.1, 0.2, 0.3], p=[5, 6],
                                  width=7, height=8)
        self.assertEqual(Camera.from_intrinsics(record, Lens.BROWN),
                         Camera(Lens.BROWN, 3, 4, 0.5, 1, 2, [0.1, 0.2, 5, 6, 0.3], (), 7, 8))
        for lens in (Lens.FISHEYE, Lens.PINHOLE, Lens.OMNI):
            with self.assertRaises(ValueError):
                Camera.from_intrinsics(record, lens)


class Transforms(unittest.TestCase):
    def test_there_and_back(self):
        near(geometry.compose(POSE, geometry.invert(POSE)), numpy.eye(4), 1e-15)
        near(geometry.compose(POSE, POSE), POSE @ POSE, 1e-15)
        near(geometry.apply(POSE, [[1, 2, 3]])[0], (POSE @ [1, 2, 3, 1])[:3], 1e-15)
        for of, make in ((geometry.quaternion_of, geometry.from_quaternion),
                         (geometry.roll_pitch_yaw_of, geometry.from_roll_pitch_yaw),
                         (geometry.rotation_vector_of, geometry.from_rotation_vector)):
            near(make(of(POSE), POSE[:3, 3]), POSE, 1e-15)

    def test_orthonormalize(self):
        bent = POSE.copy()
        bent[0, 0] += 1e-3
        kept = bent.copy()
        self.assertGreater(geometry.rotation_defect(bent), 1e-3)
        self.assertLess(geometry.rotation_defect(geometry.orthonormalize(bent)), 1e-15)
        numpy.testing.assert_array_equal(bent, kept)
        with self.assertRaisesRegex(GeometryError, "is no rotation") as caught:
            geometry.orthonormalize(-numpy.eye(4))
        self.assertEqual(caught.exception.status, Status.NOT_A_ROTATION)


class Made(unittest.TestCase):
    def test_difference(self):
        moved = Camera(Lens.FISHEYE, 190.9, 190.9, 0, 255.9, 256.9, FISHEYE.distortion, (), 512, 512)
        as_it_is = geometry.compare(FISHEYE, moved, fit=False, columns=20)
        near((as_it_is.largest, as_it_is.mean), (1, 1))
        near(as_it_is.by, numpy.broadcast_to((1, 0), as_it_is.by.shape))
        self.assertLess(geometry.compare(FISHEYE, moved).mean, 0.5)
        tall = Camera(Lens.PINHOLE, 10, 10, 0, 5, 50, width=10, height=100)
        self.assertEqual(geometry.compare(tall, tall, columns=10).pixels.shape, (100 * 10, 2))
        with self.assertRaises(GeometryError):
            geometry.compare(LEFT, FISHEYE)

    def test_fitted_lens(self):
        fitted = geometry.fit_lens(OMNI, Lens.FISHEYE, 4)
        self.assertEqual((fitted.camera.lens, fitted.camera.width, fitted.unseen),
                         (Lens.FISHEYE, 640, 0))
        self.assertLess(fitted.rms, fitted.largest)
        rays = geometry.unproject(OMNI, [[330, 250]]).rays
        near(geometry.project(fitted.camera, rays).pixels, [[330, 250]], fitted.largest)
        with self.assertRaises(GeometryError):
            geometry.fit_lens(OMNI, Lens.DOUBLE_SPHERE, 0)

    def test_resized(self):
        half = geometry.scale(LEFT, 376, 240)
        near((half.camera.fx, half.camera.cx), (229.327, 183.3575))
        near(half.pixel_map @ [367.215, 248.375, 1], (half.camera.cx, half.camera.cy))
        near(geometry.crop(LEFT, 10, 20, 100, 100).camera.cy, 228.375)
        near(geometry.bin(LEFT, 2, 2, decimate=True).camera.cx, 183.6075)
        turned = geometry.rotate(LEFT, 1)
        self.assertEqual((turned.camera.width, turned.camera.height), (480, 752))
        near(turned.new_from_old[:2, :2], [[0, -1], [1, 0]])
        with self.assertRaises(GeometryError):
            geometry.rotate(Camera(Lens.PINHOLE, 1, 1), 1)

    def test_pose(self):
        pose = geometry.from_rotation_vector((0.2, -0.1, 0.3), (-0.1, -0.2, 1.5))
        target = numpy.array([[x, y, 0] for x in (0, 0.2, 0.4) for y in (0, 0.2, 0.4)])
        pixels = geometry.project(LEFT, geometry.apply(pose, target)).pixels
        found = geometry.fit_pose(LEFT, 0, numpy.hstack([target[:, :2], pixels]))
        near(found.camera_from_target, pose, 1e-8)
        near(found.rms, 0, 1e-8)
        with self.assertRaisesRegex(GeometryError, "the pose is not determined by the numbers"):
            geometry.fit_pose(LEFT, 0, [[0, 0, 1, 1]])

    def test_shapes_are_told(self):
        for call, words in (
                (lambda: geometry.project(LEFT, [1, 2, 3]), r"points: .*\(3,\), expected \(n, 3\)"),
                (lambda: geometry.invert(numpy.eye(3)), r"\(4, 4\), not \(3, 3\)"),
                (lambda: geometry.from_quaternion([1, 2]), r"wxyz: .*expected \(4,\)"),
                (lambda: geometry.largest_angle(Camera(Lens.BROWN, 1, 1, distortion=[0] * 15)),
                 "distortion: has 15 numbers, expected at most 14"),
                (lambda: geometry.compare(LEFT, LEFT, columns=1), "expected 2 to 10000, not 1"),
                (lambda: geometry.crop(LEFT, 2**40, 0, 10, 10), "u: 1099511627776 is no number of"),
                (lambda: geometry.scale(LEFT, 2**33 + 320, 240), "width: .* 32 bits"),
                (lambda: geometry.fit_lens(LEFT, Lens.FISHEYE, 2**32 + 2), "coefficients: "),
                (lambda: geometry.largest_angle(Camera(Lens.BROWN, 1, 1, width=2**32 + 5)),
                 "width: 4294967301")):
            with self.assertRaisesRegex(ValueError, words):
                call()


class Page(unittest.TestCase):
    def test_example_prints_what_is_shown(self):
        printed, shown = page_example.run(PAGE)
        self.assertEqual(printed, shown)


if __name__ == "__main__":
    unittest.main()
