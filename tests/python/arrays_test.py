"""Fields as numpy arrays: values, shapes, types and refusals.

Ends with 77, for ctest's "Skipped", where numpy is not installed.
"""

import math
import random
import sys
import unittest

try:
    import numpy
except ImportError:
    print("skipped: needs Debian's package python3-numpy")
    sys.exit(77)

from calibration_protolib import (CalibrationImage, CameraExtrinsics, CameraIntrinsics,
                                  FocusCheckProto, MarkerPositionSet, PTZIntrinsics, to_numpy)


class Numbers(unittest.TestCase):
    def test_doubles_and_floats(self):
        values = [1.5, -0.0, math.inf, 5e-324]
        for record, field, dtype in [(CameraExtrinsics(a=values), "a", "float64"),
                                     (CameraIntrinsics(k=values), "k", "float64"),
                                     (FocusCheckProto(bins=values), "bins", "float32")]:
            array = to_numpy(record, field)
            self.assertEqual((array.shape, array.dtype), ((4,), numpy.dtype(dtype)))
            numpy.testing.assert_array_equal(array, numpy.array(values, dtype))
            self.assertTrue(numpy.signbit(array[1]))
            array[0] = 2
            self.assertEqual(getattr(record, field)[0], 1.5)

    def test_none(self):
        self.assertEqual(to_numpy(CameraExtrinsics(), "a").shape, (0,))


class Tables(unittest.TestCase):
    NAMES = ("img_x", "img_y", "tgt_x", "tgt_y")

    def expect(self, record, field, names, dtype):
        expected = [[getattr(element, name) if element.HasField(name) else math.nan
                     for name in names] for element in getattr(record, field)]
        array = to_numpy(record, field)
        self.assertEqual((array.shape, array.dtype), ((len(expected), len(names)), dtype))
        numpy.testing.assert_array_equal(array, numpy.array(expected, dtype).reshape(array.shape))

    def record(self, rows):
        record = CameraIntrinsics(fx=1, k=[1, 2], width=640, tgt_z=0.5, tgt_width=7)
        for row in rows:
            record.sample_points.add(**row)
        return record

    def test_sample_points(self):
        """Those of one shape, of which one differs, and all mixed up."""
        rng = random.Random(7)
        for subset in range(16):
            names = [name for index, name in enumerate(self.NAMES) if subset >> index & 1]
            for count in (0, 1, 2, 100):
                rows = [{name: rng.uniform(-1e3, 1e3) for name in names} for _ in range(count)]
                self.expect(self.record(rows), "sample_points", self.NAMES, "float32")
                for place in {0, count // 2, count - 1} if count else ():
                    for other in ({"img_x": 1}, {"tgt_y": 1}, {}):
                        changed = rows[:place] + [other] + rows[place + 1:]
                        self.expect(self.record(changed), "sample_points", self.NAMES, "float32")
        rows = [{name: rng.random() for name in self.NAMES if rng.random() < 0.5}
                for _ in range(1000)]
        self.expect(self.record(rows), "sample_points", self.NAMES, "float32")

    def test_unknown_fields_do_not_show(self):
        record = self.record([{"img_x": 1.0}, {"img_x": 2.0}])
        for point in record.sample_points:
            point.MergeFromString(b"\xa5\x06\0\0\0\0")
        self.expect(record, "sample_points", self.NAMES, "float32")
        record.MergeFromString(b"\xa0\x06\1")
        self.expect(record, "sample_points", self.NAMES, "float32")

    def test_zooms(self):
        names = ("zoom", "fxy", "cx", "cy", "k1", "k4", "p1", "p2", "error_per_point")
        record = PTZIntrinsics(zx=1, samples=[{name: i + 0.5 for name in names} for i in range(9)])
        self.expect(record, "samples", names, "float64")
        record.samples[3].ClearField("k4")
        self.expect(record, "samples", names, "float64")


class Images(unittest.TestCase):
    def test_rows(self):
        image = CalibrationImage(width=3, height=2, stride=4, imgdata=bytes(range(8)))
        array = to_numpy(image, "imgdata")
        self.assertEqual((array.shape, array.dtype), ((2, 4), numpy.uint8))
        self.assertEqual(array.tolist(), [[0, 1, 2, 3], [4, 5, 6, 7]])
        self.assertFalse(array.flags.writeable)
        image.ClearField("stride")
        self.assertEqual(to_numpy(image, "imgdata").shape, (2, 4))

    def test_sizes_that_disagree(self):
        for fields in ({}, {"height": 0}, {"height": -1, "stride": -8}, {"height": 3},
                       {"height": 2, "stride": 3}, {"height": 2, "stride": 5},
                       {"height": 1, "stride": -8}):
            with self.subTest(fields=fields), self.assertRaisesRegex(ValueError, "imgdata: .*exp"):
                to_numpy(CalibrationImage(imgdata=bytes(8), **fields), "imgdata")


class Refusals(unittest.TestCase):
    def test_other_fields(self):
        with self.assertRaisesRegex(ValueError, "CameraIntrinsics has no field 'points'"):
            to_numpy(CameraIntrinsics(), "points")
        for record, field in [(CameraIntrinsics(), "fx"), (MarkerPositionSet(), "pos"),
                              (CalibrationImage(), "format")]:
            with self.assertRaisesRegex(TypeError, f"{field}: expected repeated"):
                to_numpy(record, field)


if __name__ == "__main__":
    unittest.main()
