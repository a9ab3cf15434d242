"""Files of other tools from Python: every function of the header, the same records and notes as from
C++, refusals, and the example of the page.

    formats_test.py HEADER-FOLDER INPUTS PAGE
"""

import io
import os
import pathlib
import re
import sys
import unittest

import page_example
from calibration_protolib import CameraCalibration, RobotCalibration, formats, formats_library
from calibration_protolib.formats import FormatsError, NoteKind, WriteOptions

HEADERS, INPUTS, PAGE = (pathlib.Path(sys.argv.pop(1)) for _ in range(3))
# One file of each format, and how many cameras are in it.
FILES = {"ros": ("left.camera_info.yaml", 1), "kalibr": ("camchain.yaml", 2),
         "opencv": ("opencv.yml", 1), "euroc": ("sensor.yaml", 1),
         "mrcal": ("left.cameramodel", 1), "basalt": ("basalt.json", 2),
         "colmap": ("cameras.txt", 4), "camodocal": ("camodocal.yaml", 1),
         "depthai": ("depthai.json", 2), "orbslam3": ("orbslam3.yaml", 2),
         "nerfstudio": ("transforms.json", 1), "mcap": ("drive.mcap", 2)}
CHAIN = INPUTS / "camchain.yaml"
OMNI = INPUTS / "omni.yaml"


class Headers(unittest.TestCase):
    def test_every_function_is_declared(self):
        text = (HEADERS / "calibration_formats_c.h").read_text(encoding="utf-8")
        # Mentions in comments have no arguments.
        declared = set(re.findall(r"\bcalibration_formats_([a-z_]+)\((?!\))", text))
        self.assertEqual(declared, set(formats_library._FUNCTIONS))

    def test_every_member_is_there(self):
        text = (HEADERS / "calibration_formats_c.h").read_text(encoding="utf-8")
        text = re.sub(r"/\*.*?\*/", "", text, flags=re.DOTALL)
        for kind in (formats_library.File, formats_library.Note, formats_library.Result,
                     formats_library.ReadOptions, formats_library.WriteOptions):
            name = re.sub(r"(?<!^)(?=[A-Z])", "_", kind.__name__).lower()
            body = re.search(rf"struct calibration_formats_{name} {{(.*?)}}", text, re.DOTALL)
            members = re.findall(r"(\w+)\s*(?=[,;])", body.group(1))
            self.assertEqual(members, [field[0] for field in kind._fields_])

    def test_every_enumerator_is_there(self):
        text = (HEADERS / "calibration_formats.h").read_text(encoding="utf-8")
        body = re.search(r"enum class Kind {(.*?)};", text, re.DOTALL).group(1)
        names = [re.sub(r"(?<!^)(?=[A-Z])", "_", name).upper()
                 for name in re.findall(r"^ *k(\w+)", body, re.MULTILINE)]
        self.assertEqual(names, [kind.name for kind in NoteKind])


class Reading(unittest.TestCase):
    def test_every_format(self):
        self.assertEqual(formats.readable_formats(), list(FILES))
        for name, (file, cameras) in FILES.items():
            with self.subTest(name):
                found = formats.read(INPUTS / file)
                self.assertEqual((found.format, len(found.robot.camera)), (name, cameras))
                self.assertIsInstance(found.robot, RobotCalibration)
                named = getattr(formats, f"read_{name}")(INPUTS / file)
                self.assertEqual(named, found)

    def test_numbers(self):
        robot = formats.read_kalibr(CHAIN).robot
        self.assertEqual([camera.name for camera in robot.camera], ["cam0", "cam1"])
        self.assertEqual(list(robot.camera[0].intrinsics.k), [-0.28340811, 0.07395907])
        self.assertEqual(robot.camera[1].extrinsics.a[3], -0.11007380812713243)

    def test_paths_files_and_bytes(self):
        whole = formats.read(str(CHAIN))
        with CHAIN.open("rb") as stream:
            self.assertEqual(formats.read(stream), whole)
            self.assertFalse(stream.closed)
        found = formats.read(CHAIN.read_bytes())
        self.assertEqual(found.robot, whole.robot)
        self.assertTrue(found.notes[0].text.startswith("the text:2:17: cam0.cam_overlaps: "))
        self.assertTrue(whole.notes[0].text.startswith(f"{CHAIN}:2:17: "))
        self.assertEqual(formats.read(io.BytesIO(CHAIN.read_bytes())).robot, whole.robot)
        with CHAIN.open() as stream, self.assertRaisesRegex(TypeError, "open for bytes"):
            formats.read(stream)
        with self.assertRaises(FileNotFoundError):
            formats.read("nowhere.yaml")

    def test_two_files_of_a_pair(self):
        found = formats.read_opencv(INPUTS / "intrinsics.yml", INPUTS / "extrinsics.yml")
        self.assertEqual(len(found.robot.camera), 2)

    def test_lens_is_lost_only_if_asked(self):
        with self.assertRaisesRegex(FormatsError, r"omni\.yaml:6:15: .* points would land elsewhere"):
            formats.read(OMNI)
        self.assertIn(NoteKind.LOST, [note.kind for note in formats.read(OMNI, lossy=True).notes])

    def test_refusals(self):
        for call, words in (
                (lambda: formats.read(b""), "the text: "),
                (lambda: formats.read(b"a: 1"), "the text: is of no tool that is known"),
                (lambda: formats.read(b"a: 1", format="lisp"), "'lisp' is none that is read"),
                (lambda: formats.read(CHAIN, lens="omni"), "lens: is 'omni', expected plumb_bob"),
                (lambda: formats.read_ros(CHAIN), r"camchain\.yaml:1:1: has no")):
            with self.assertRaisesRegex(FormatsError, words):
                call()
        with self.assertRaisesRegex(ValueError, "lens: holds a zero byte"):
            formats.read(CHAIN, lens="plumb_bob\0")


class Writing(unittest.TestCase):
    def setUp(self):
        self.robot = formats.read_kalibr(CHAIN).robot

    def test_every_format(self):
        for name in formats.writable_formats():
            with self.subTest(name):
                if name == "basalt":
                    with self.assertRaisesRegex(FormatsError, "Basalt calibration has no k1"):
                        formats.write(self.robot, name)
                    continue
                files = formats.write(self.robot, name).files
                self.assertTrue(files)
                self.assertTrue(all(files.values()))

    def test_what_is_written_is_read_again(self):
        for name in ("kalibr", "mrcal", "ros", "mcap"):
            with self.subTest(name):
                cameras = [camera for text in formats.write(self.robot, name).files.values()
                           for camera in formats.read(text).robot.camera]
                for camera, was in zip(cameras, self.robot.camera):
                    self.assertEqual((camera.intrinsics.fx, list(camera.intrinsics.k)[:2]),
                                     (was.intrinsics.fx, list(was.intrinsics.k)))
                self.assertEqual(len(cameras), 2)

    def test_camera_info_with_all_options(self):
        camera = CameraCalibration()
        camera.CopyFrom(self.robot.camera[0])
        for field in ("width", "height"):
            camera.intrinsics.ClearField(field)
        camera.ClearField("name")
        projection = [400, 0, 320, -44.5, 0, 400, 240, 0, 0, 0, 1, 0]
        text, notes = formats.write_camera_info(camera, WriteOptions(
            lens="plumb_bob", width=752, height=480, name="left",
            rectification=[1, 0, 0, 0, 1, 0, 0, 0, 1], projection=projection))
        self.assertIn("image_width: 752\nimage_height: 480\ncamera_name: left\n", text)
        self.assertIn("data: [400.0, 0.0, 320.0, -44.5,", text)
        self.assertNotIn(NoteKind.LOST, [note.kind for note in notes])
        self.assertEqual(list(formats.read_ros(text.encode()).robot.camera[0].intrinsics.k)[:2],
                         list(camera.intrinsics.k))

    def test_frames(self):
        text = formats.write_text(self.robot, "urdf", WriteOptions(frame="body")).text
        self.assertIn('<link name="body"/>', text)
        there = formats.write_text(self.robot, "tf").text
        self.assertNotEqual(formats.write_text(self.robot, "tf", WriteOptions(from_camera=True)).text,
                            there)

    def test_refusals(self):
        incomplete = RobotCalibration()
        incomplete.camera.add().intrinsics.fx = 1
        one = WriteOptions(rectification=[1])
        for error, call, words in (
                (FormatsError, lambda: formats.write(self.robot, "lisp"), "'lisp' is none that is"),
                (FormatsError, lambda: formats.write(incomplete, "ros"), r"misses camera\[0\]\.intr"),
                (FormatsError, lambda: formats.write_text(self.robot, "ros"), "becomes 2 files"),
                (FormatsError, lambda: formats.write_text(self.robot, "mcap"), "mcap: is no text"),
                (ValueError, lambda: formats.write(self.robot, "ros", one), "has 1 numbers, expec"),
                (ValueError, lambda: formats.write(self.robot, "ros", WriteOptions(width=2**32 + 752)),
                 "width: 4294968048 is no number of 32 bits")):
            with self.assertRaisesRegex(error, words):
                call()

    def test_nothing_is_left_in_use(self):
        def resident():
            return int(pathlib.Path("/proc/self/statm").read_text().split()[1])

        robot = formats.read(INPUTS / "drive.mcap").robot
        for _ in range(20):
            formats.write(robot, "mcap")
        before = resident()
        for _ in range(200):
            formats.write(robot, "mcap")
        self.assertLess(resident() - before, 200)  # pages of 4096 bytes; a file has 5


class Page(unittest.TestCase):
    def test_example_prints_what_is_shown(self):
        folder = os.getcwd()
        os.chdir(INPUTS)
        self.addCleanup(os.chdir, folder)
        printed, shown = page_example.run(PAGE)
        self.assertEqual(printed, shown)


if __name__ == "__main__":
    unittest.main()
