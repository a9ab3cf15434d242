"""Reading and writing records and logs of them with the package, and what is refused."""

import io
import os
import pathlib
import pickle
import subprocess
import sys
import tempfile
import types
import unittest

import calibration_protolib
from calibration_protolib import (FocusCheckProto, RecordError, RobotCalibration, parse, parsing,
                                  read, read_log, wire, write, write_log)


def complete():
    robot = RobotCalibration()
    camera = robot.camera.add(name="cam0")
    camera.intrinsics.fx = camera.intrinsics.fy = 458.654
    camera.intrinsics.skew = 0
    camera.intrinsics.cx, camera.intrinsics.cy = 367.215, 248.375
    return robot


class InFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = os.path.join(folder.name, "file")

    def refused(self, words, call, *arguments):
        with self.assertRaises(RecordError) as caught:
            call(*arguments)
        self.assertIn(words, str(caught.exception))
        return caught.exception


class Classes(unittest.TestCase):
    def test_all_are_there_under_their_names(self):
        names = calibration_protolib.records.__all__
        self.assertIn("PTZSystemCalibration", names)
        for name in names:
            self.assertEqual(getattr(calibration_protolib, name).DESCRIPTOR.full_name,
                             f"zarvo.calibration.{name}")

    def test_defaults(self):
        self.assertAlmostEqual(calibration_protolib.BaseCalibrationProto().wheel_base, 0.4064)

    def test_they_are_made_by_either_name_that_the_run_time_has_for_it(self):
        program = """
from google.protobuf import descriptor_pb2, message_factory
make = getattr(message_factory, "GetMessageClass", None) or \\
    message_factory.MessageFactory().GetPrototype
message_factory.GetMessageClass = make
message_factory.MessageFactory = None
from calibration_protolib import RobotCalibration, parse
print(parse(b"\\x0a\\x02\\x2a\\0", RobotCalibration).camera[0].HasField("name"))
"""
        self.assertEqual(subprocess.check_output([sys.executable, "-c", program]), b"True\n")

    def test_repeated_fields_are_known_by_either_name_that_the_run_time_has_for_it(self):
        for fields in ({"is_repeated": True}, {"label": 3}, {"is_repeated": True, "label": 1}):
            self.assertTrue(wire.is_repeated(types.SimpleNamespace(**fields)))
        for fields in ({"is_repeated": False}, {"label": 1}, {"label": 2}):
            self.assertFalse(wire.is_repeated(types.SimpleNamespace(**fields)))

    def test_pickle(self):
        self.assertEqual(pickle.loads(pickle.dumps(complete())), complete())


class OneRecord(InFolder):
    def test_what_is_written_is_read(self):
        write(self.path, complete())
        self.assertEqual(read(self.path, RobotCalibration), complete())
        self.assertEqual(read(pathlib.Path(self.path), RobotCalibration), complete())

    def test_open_files_stay_open(self):
        file = io.BytesIO()
        write(file, complete())
        file.seek(0)
        self.assertEqual(read(file, RobotCalibration), complete())
        self.assertFalse(file.closed)

    def test_missing_fields_are_named(self):
        robot = complete()
        robot.camera.add().intrinsics.fx = 1
        missing = [f"camera[1].intrinsics.{name}" for name in ("fy", "skew", "cx", "cy")]
        error = self.refused(f"{self.path}: cannot be written: no complete RobotCalibration: "
                             f"missing: {', '.join(missing)}", write, self.path, robot)
        self.assertEqual(error.missing, missing)
        self.assertFalse(os.path.exists(self.path))
        with open(self.path, "wb") as file:
            file.write(robot.SerializePartialToString())
        error = self.refused(f"{self.path}: holds no complete RobotCalibration: missing: camera[1]",
                             read, self.path, RobotCalibration)
        self.assertEqual(error.missing, missing)

    def test_of_many_missing_fields_the_first_are_named(self):
        robot = RobotCalibration()
        for _ in range(10):
            robot.camera.add().intrinsics.SetInParent()
        error = self.refused("camera[0].intrinsics.cy and 45 more", write, self.path, robot)
        self.assertEqual(len(error.missing), 50)

    def test_a_file_that_cannot_be_written_or_read(self):
        self.assertRaises(FileNotFoundError, read, self.path, RobotCalibration)
        self.assertRaises(IsADirectoryError, write, os.path.dirname(self.path), complete())

    def test_a_short_write_is_reported(self):
        class Short(io.RawIOBase):
            def write(self, data):
                return len(data) - 1
        self.assertRaises(OSError, write, Short(), complete())


class Refusals(InFolder):
    """One of each kind; the exchange with C++ holds thousands against the library."""

    CASES = [
        (b"\x0a", "byte 1: a varint is cut off"),
        (b"\x0a\x05ab", "byte 2: field 1 has 5 bytes, of which 2 are there"),
        (b"\0", "byte 0: a field number is zero"),
        (b"\x0e", "byte 0: field 1 has wire type 6"),
        (b"\x0c", "the end of group 1, which was not begun"),
        (b"\x13", "group 2 is not closed"),
        (b"\x13\x1c", "group 2 is closed as 3"),
        (b"\x13" * 101 + b"\x14" * 101, "nested more than 100 levels deep"),
        (b"\x10" + b"\x80" * 10 + b"\0", "a varint is longer than ten bytes"),
        (b"\x15abc", "field 2 has 4 bytes, of which 3 are there"),
        (b"\x0a\x04\x0a\x02\x09\0", "byte 5: field 1 has 8 bytes, of which 1 are there"),
        (b"\x0a\x0b\x0a\x09\x32\x07" + bytes(7),
         "the packed field 6 has 7 bytes, expected a multiple of 8"),
    ]

    def test_say_what_is_wrong_and_where(self):
        for data, words in self.CASES:
            with self.subTest(data=data):
                self.refused(words, parse, data, RobotCalibration)

    def test_of_a_run_time_that_does_not_look_into_unknown_fields(self):
        class Record:
            DESCRIPTOR = RobotCalibration.DESCRIPTOR

            def __init__(self, data):
                self.data = data

            FromString = classmethod(lambda cls, data: cls(data))

            def DiscardUnknownFields(self):
                self.data = b""

            def SerializePartialToString(self):
                return self.data

        self.refused("nested more than 100", parse, b"\x13" * 101 + b"\x14" * 101, Record)

    def test_unknown_fields_are_kept(self):
        unknown = complete().SerializeToString() + b"\x13\x1b\x1c\x14\xa0\x06\x01"
        self.assertEqual(parse(unknown, RobotCalibration).SerializeToString(), unknown)

    def test_other_spellings_are_read(self):
        robot = parse(b"\x0a\x87\x80\x00\x2a\x84\x00cam0", RobotCalibration)
        self.assertEqual(robot.camera[0].name, "cam0")
        bins = parse(b"\x1a\x08" + b"\0\0\x80\x3f" * 2, FocusCheckProto).bins
        self.assertEqual(list(bins), [1, 1])

    def test_a_size_that_no_record_has(self):
        size = parsing._MAX_SIZE
        self.addCleanup(setattr, parsing, "_MAX_SIZE", size)
        parsing._MAX_SIZE = 10
        self.refused("expected at most 10", parse, complete().SerializeToString(), RobotCalibration)

    def test_nothing_that_is_cut_off_is_read(self):
        data = complete().SerializeToString()
        for size in range(1, len(data)):
            self.refused("holds no", parse, data[:size], RobotCalibration)


class Logs(InFolder):
    def checks(self, count):
        return [FocusCheckProto(name="x" * i, ok=i % 2 == 0) for i in range(count)]

    def test_what_is_written_is_read(self):
        self.assertEqual(write_log(self.path, self.checks(300)), 300)
        self.assertEqual(list(read_log(self.path, FocusCheckProto)), self.checks(300))

    def test_none_and_empty_ones(self):
        self.assertEqual(write_log(self.path, []), 0)
        self.assertEqual(list(read_log(self.path, FocusCheckProto)), [])
        write_log(self.path, [FocusCheckProto()] * 2)
        self.assertEqual(os.path.getsize(self.path), 2)
        self.assertEqual(list(read_log(self.path, FocusCheckProto)), [FocusCheckProto()] * 2)

    def test_appending(self):
        for _ in range(2):
            with open(self.path, "ab") as file:
                write_log(file, self.checks(3))
        self.assertEqual(list(read_log(self.path, FocusCheckProto)), self.checks(3) * 2)

    def test_an_incomplete_record_is_not_written(self):
        robots = [complete(), RobotCalibration(camera=[{"intrinsics": {}}])]
        self.refused("record 1: cannot be written", write_log, self.path, robots)
        self.assertEqual(list(read_log(self.path, RobotCalibration)), [complete()])

    def test_every_cut(self):
        write_log(self.path, self.checks(20))
        data = pathlib.Path(self.path).read_bytes()
        begins, whole = {0: 0}, 0
        for number, check in enumerate(self.checks(20)):
            whole += 1 + check.ByteSize()
            begins[whole] = number + 1
        for size in range(len(data)):
            records = []
            try:
                for record in read_log(io.BytesIO(data[:size]), FocusCheckProto):
                    records.append(record)
                self.assertIn(size, begins)
            except RecordError as error:
                self.assertNotIn(size, begins)
                begin = max(place for place in begins if place < size)
                self.assertIn(f"record {begins[begin]}, byte {begin}: ", str(error))
            self.assertEqual(records, self.checks(len(records)))
            self.assertEqual(len(records), max(n for place, n in begins.items() if place <= size))

    def test_lengths(self):
        for head, words in [(b"\xff\xff\xff\xff\x07", "ends after 0 of 2147483647 bytes"),
                            (b"\x80\x80\x80\x80\x08", "a length of 2147483648, expected at most"),
                            (b"\x80" * 10 + b"\1", "its length has more than ten bytes"),
                            (b"\x80", "ends within its length")]:
            self.refused(words, list, read_log(io.BytesIO(head), FocusCheckProto))
        self.assertEqual(len(list(read_log(io.BytesIO(b"\x80\0"), FocusCheckProto))), 1)

    def test_a_file_that_is_not_there(self):
        self.assertRaises(FileNotFoundError, read_log, self.path, FocusCheckProto)


if __name__ == "__main__":
    unittest.main(warnings="ignore")  # the run-time's, of broken input
