#!/usr/bin/env python3
"""Has the tools whose files calib imports read the same files, and compares number by number.

    import_judge.py --calib CALIB [FILE...]

The files are those of inputs/ beside this file, if none is named. Each is read by the library of its
tool: camera_calibration_parsers (ROS), cv2 (OpenCV, camodocal, ORB-SLAM), mrcal and colmap; Kalibr,
OpenVINS and EuRoC read YAML, and Basalt, DepthAI, nerfstudio and COLMAP's rigs JSON, with no library
that Debian has, so that PyYAML and json read theirs. Numbers are the same bit for bit, but where a
convention is converted, or where ROS reads its .ini form, whose digits it rounds by itself: these are
within 1e-12, and the transforms of ORB-SLAM, which it reads as floats, within 1e-6.

Exit status: 0, all numbers agree; 1, some do not, or a file was not read.
"""

import argparse
import copy
import json
import pathlib
import re
import struct
import subprocess
import sys
import tempfile

import camera_calibration_parsers
import cv2
import mrcal
import numpy
import yaml

HERE = pathlib.Path(__file__).resolve().parent
NEAR = 1e-12
FLOAT = 1e-6
# Those of COLMAP by the numbers that it gives them: f, fx fy, k, p and what is left.
COLMAP = {0: "f cx cy", 1: "fx fy cx cy", 2: "f cx cy k", 3: "f cx cy k k", 4: "fx fy cx cy k k p p",
          5: "fx fy cx cy k k k k", 6: "fx fy cx cy k k p p k k k k", 8: "f cx cy k 0 0 0",
          9: "f cx cy k k 0 0"}


def brown(numbers):
    """k and p of coefficients in OpenCV's order."""
    numbers = list(numbers)
    return numbers[:2] + numbers[4:8], numbers[2:4]


def trimmed(numbers):
    """Without zeros at the end, which say the same as no numbers."""
    numbers = list(numbers)
    while numbers and numbers[-1] == 0:
        numbers.pop()
    return numbers


def inverse(matrix):
    """Of a transform, by the arithmetic of numpy."""
    return numpy.linalg.inv(numpy.array(matrix, float).reshape(4, 4))


def from_quaternion(w, x, y, z, t):
    """A transform, by the arithmetic of mrcal."""
    rotation = mrcal.R_from_quat(numpy.array((w, x, y, z), float))
    return numpy.vstack((numpy.column_stack((rotation, t)), (0, 0, 0, 1)))


class Camera(dict):
    """What a tool reads: fx, fy, cx, cy and skew, k and p, width and height, pose, and name."""

    near = NEAR  # how far its pose may be off

    def __init__(self, matrix, coefficients, **others):
        (fx, skew, cx), (_, fy, cy), _ = numpy.array(matrix, float).reshape(3, 3).tolist()
        fisheye = others.pop("fisheye", False)
        k, p = (coefficients, []) if fisheye else brown(coefficients)
        super().__init__(fx=fx, fy=fy, cx=cx, cy=cy, skew=skew, k=trimmed(k), p=trimmed(p), **others)


def pinhole(fx, fy, cx, cy):
    """A camera matrix."""
    return [fx, 0, cx, 0, fy, cy, 0, 0, 1]


def is_fisheye(name):
    """Whether the lens of that name lists k1 to k4."""
    return name.lower().replace("-", "_") in ("equidistant", "kb4", "kannala_brandt", "fisheye")


def ros(path):
    """By ROS's own parser."""
    read = camera_calibration_parsers.readCalibration(str(path))
    if read is None:
        raise ValueError("ROS does not read it")
    name, info = read
    return [Camera(info.K, info.D, name=name, width=info.width, height=info.height,
                   fisheye=is_fisheye(info.distortion_model))]


def load_yaml(path):
    """By PyYAML, which does not know the header that OpenCV writes."""
    return yaml.safe_load(re.sub(r"\A%YAML.*\n(---\n)?", "", path.read_text()))


def kalibr(path):
    """Cameras of a camchain."""
    cameras = []
    for name, chain in load_yaml(path).items():
        camera = Camera(pinhole(*chain["intrinsics"][-4:]), chain["distortion_coeffs"], name=name,
                        width=chain["resolution"][0], height=chain["resolution"][1],
                        fisheye=is_fisheye(chain["distortion_model"]))
        if "T_cam_imu" in chain:
            camera["pose"] = chain["T_cam_imu"]
        elif "T_imu_cam" in chain:
            camera["pose"] = inverse(chain["T_imu_cam"])
        elif "T_cn_cnm1" in chain:
            previous = cameras[-1].get("pose", numpy.identity(4))
            camera["pose"] = numpy.array(chain["T_cn_cnm1"]).reshape(4, 4) @ previous
        cameras.append(camera)
    return cameras


def euroc(path):
    """A camera of a sensor.yaml."""
    sensor = load_yaml(path)
    pose = sensor["T_BS"]
    return [Camera(pinhole(*sensor["intrinsics"]), sensor["distortion_coefficients"],
                   width=sensor["resolution"][0], height=sensor["resolution"][1],
                   pose=inverse(pose["data"] if isinstance(pose, dict) else pose),
                   fisheye=is_fisheye(sensor["distortion_model"]))]


class Storage:
    """A file of OpenCV, by OpenCV."""

    def __init__(self, path):
        self.file = cv2.FileStorage(str(path), cv2.FILE_STORAGE_READ)

    def find(self, *names):
        """The first node of these names, or None."""
        nodes = [self.file.getNode(name) for name in names]
        return next((node for node in nodes if not node.empty()), None)

    def numbers(self, *names):
        """Of a matrix or a list."""
        node = self.find(*names)
        if node is None:
            return []
        if node.isSeq():
            return [node.at(i).real() for i in range(node.size())]
        matrix = node.mat()
        return [] if matrix is None else matrix.flatten().tolist()

    def number(self, *names):
        """Of a single one."""
        node = self.find(*names)
        return node and node.real()


def opencv(path):
    """A camera of OpenCV's calibration program, or Autoware's."""
    storage = Storage(path)
    size = storage.numbers("ImageSize") or [storage.number("image_width", "image_Width"),
                                            storage.number("image_height", "image_Height")]
    camera = Camera(storage.numbers("camera_matrix", "Camera_Matrix", "CameraMat"),
                    storage.numbers("distortion_coefficients", "Distortion_Coefficients", "DistCoeff"),
                    width=size[0], height=size[1],
                    fisheye=(storage.number("fisheye_model") or 0) != 0)
    if storage.find("CameraExtrinsicMat"):
        camera["pose"] = inverse(storage.numbers("CameraExtrinsicMat"))
    target, image = storage.numbers("grid_points"), storage.numbers("image_points")
    if target and image:
        camera["points"] = numpy.column_stack((
            numpy.array(image).reshape(-1, 2),
            numpy.tile(numpy.array(target).reshape(-1, 3)[:, :2], (len(image) * 3 // len(target) // 2, 1))))
    return [camera]


def camodocal(path):
    """A camera of VINS."""
    storage = Storage(path)
    projection, distortion = storage.find("projection_parameters"), storage.find("distortion_parameters")
    fisheye = storage.find("model_type").string() == "KANNALA_BRANDT"

    def read(node, names):
        return [node.getNode(name).real() for name in names.split()]

    names = "mu mv u0 v0" if fisheye else "fx fy cx cy"
    if not projection.getNode("gamma1").empty():
        names = "gamma1 gamma2 u0 v0"
    camera = Camera(pinhole(*read(projection, names)),
                    read(projection, "k2 k3 k4 k5") if fisheye else read(distortion, "k1 k2 p1 p2"),
                    width=storage.number("image_width"), height=storage.number("image_height"),
                    name=storage.find("camera_name").string(), fisheye=fisheye)
    if storage.find("extrinsicRotation"):
        camera["pose"] = inverse(numpy.vstack((numpy.column_stack((
            storage.find("extrinsicRotation").mat(), storage.find("extrinsicTranslation").mat())),
            (0, 0, 0, 1))))
    return [camera]


def of_mrcal(path):
    """A camera of mrcal."""
    model = mrcal.cameramodel(str(path))
    numbers = model.intrinsics()[1].tolist()
    pose = model.extrinsics_Rt_fromref()
    pose = numpy.vstack((numpy.column_stack((pose[:3], pose[3])), (0, 0, 0, 1)))
    return [Camera(pinhole(*numbers[:4]), numbers[4:], width=model.imagersize()[0],
                   height=model.imagersize()[1], pose=pose)]


def basalt(path):
    """The cameras of Basalt."""
    rig = json.loads(path.read_text())["value0"]
    cameras = []
    for i, (model, size, pose) in enumerate(zip(rig["intrinsics"], rig["resolution"], rig["T_imu_cam"])):
        numbers = model["intrinsics"]
        fisheye = is_fisheye(model["camera_type"])
        names = "k1 k2 k3 k4" if fisheye else "k1 k2 p1 p2 k3 k4 k5 k6"
        cameras.append(Camera(
            pinhole(*(numbers[name] for name in ("fx", "fy", "cx", "cy"))),
            [numbers[name] for name in names.split() if name in numbers], name=f"cam{i}",
            width=size[0], height=size[1], fisheye=fisheye,
            pose=inverse(from_quaternion(*(pose[name] for name in ("qw", "qx", "qy", "qz")),
                                         [pose[name] for name in ("px", "py", "pz")]))))
    return cameras


def depthai(path):
    """The cameras of a device that sit relative to at most one other."""
    cameras = []
    for socket, data in json.loads(path.read_text())["cameraData"]:
        fisheye = data["cameraType"] == 1
        coefficients = data["distortionCoeff"]
        camera = Camera(data["intrinsicMatrix"], coefficients[:4] if fisheye else coefficients,
                        name=f"CAM_{'ABCDEFGHIJ'[socket]}", width=data["width"], height=data["height"],
                        fisheye=fisheye)
        extrinsics = data["extrinsics"]
        if extrinsics["toCameraSocket"] != -1:
            t = [extrinsics["translation"][axis] for axis in "xyz"]
            camera["pose"] = inverse(numpy.vstack((
                numpy.column_stack((extrinsics["rotationMatrix"], t)), (0, 0, 0, 1))))
        cameras.append(camera)
    return cameras


def colmap_camera(parameters, numbers, **others):
    """A camera of COLMAP, whose first pixel is centred at (0.5, 0.5)."""
    named = {"k": [], "p": []}
    numbers = list(numbers)
    for parameter in parameters.split():
        value = 0 if parameter == "0" else numbers.pop(0)
        if parameter in "kp0":
            named["p" if parameter == "p" else "k"].append(value)
        else:
            named[parameter] = value
    f = named.get("f")
    camera = Camera(pinhole(named.get("fx", f), named.get("fy", f), named["cx"] - 0.5,
                            named["cy"] - 0.5), [], **others)
    camera.update(k=trimmed(named["k"]), p=trimmed(named["p"]))
    return camera


def colmap(path):
    """The cameras of a list, which COLMAP makes binary."""
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        (folder / "cameras.txt").write_bytes(path.read_bytes())
        for name in ("images.txt", "points3D.txt"):
            (folder / name).touch()
        subprocess.run(["colmap", "model_converter", "--input_path", folder, "--output_path", folder,
                        "--output_type", "BIN"], check=True, stdout=subprocess.DEVNULL)
        data = (folder / "cameras.bin").read_bytes()
    cameras, at = {}, 8
    for _ in range(struct.unpack_from("<Q", data)[0]):
        number, model, width, height = struct.unpack_from("<IiQQ", data, at)
        at += 24
        size = len([name for name in COLMAP[model].split() if name != "0"])
        numbers = struct.unpack_from(f"<{size}d", data, at)
        at += 8 * size
        cameras[number] = colmap_camera(COLMAP[model], numbers, name=str(number), width=width,
                                        height=height)
    # COLMAP keeps no order.
    order = [int(line.split()[0]) for line in path.read_text().splitlines()
             if line.strip() and not line.startswith("#")]
    return [cameras[number] for number in order]


def rig_config(path):
    """The cameras of a rig, without intrinsics or with those of a pinhole."""
    cameras = []
    for data in json.loads(path.read_text())[0]["cameras"]:
        name = data["image_prefix"].removesuffix("/")
        camera = {"name": name}
        if "camera_params" in data:
            camera = colmap_camera("fx fy cx cy", data["camera_params"], name=name)
        if "cam_from_rig_rotation" in data:
            camera["pose"] = from_quaternion(*data["cam_from_rig_rotation"],
                                             data["cam_from_rig_translation"])
        cameras.append(camera)
    return cameras


def orbslam3(path):
    """One camera or a pair of ORB-SLAM's settings."""
    storage = Storage(path)
    word = storage.find("Camera.type")
    fisheye = word is not None and word.string() == "KannalaBrandt8"
    names = ["k1", "k2", "k3", "k4"] if fisheye else ["k1", "k2", "p1", "p2", "k3"]
    pose = storage.numbers("IMU.T_b_c1", "Tbc")
    cameras = []
    for prefix in ("Camera.", "Camera1.", "Camera2."):
        if storage.find(prefix + "fx") is None:
            continue
        camera = Camera(
            pinhole(*(storage.number(prefix + name) for name in ("fx", "fy", "cx", "cy"))),
            [storage.number(prefix + name) or 0 for name in names], fisheye=fisheye,
            width=storage.number("Camera.width"), height=storage.number("Camera.height"))
        camera.near = FLOAT
        pair = storage.numbers("Stereo.T_c1_c2", "Tlr")
        if cameras and pair:
            camera["pose"] = (inverse((pair + [0, 0, 0, 1])[:16])
                              @ cameras[0].get("pose", numpy.identity(4)))
        elif pose:
            camera["pose"] = inverse(pose)
        cameras.append(camera)
    distance = storage.number("Stereo.b")
    if word is not None and word.string() == "Rectified" and distance:
        shift = numpy.identity(4)
        shift[0, 3] = -distance
        second = copy.copy(cameras[0])
        second["pose"] = shift @ cameras[0].get("pose", numpy.identity(4))
        cameras.append(second)
    return cameras


def nerfstudio(path):
    """The camera of all frames, or one a frame."""
    data = json.loads(path.read_text())
    frames = [{**data, **frame} for frame in data["frames"]] if "fl_x" not in data else [data]
    cameras = []
    for frame in frames:
        fisheye = frame.get("camera_model") == "OPENCV_FISHEYE"
        names = ["k1", "k2", "k3", "k4"] if fisheye else ["k1", "k2", "p1", "p2", "k3"]
        camera = Camera(pinhole(frame["fl_x"], frame["fl_y"], frame["cx"] - 0.5, frame["cy"] - 0.5),
                        [frame.get(name, 0) for name in names], width=frame["w"],
                        height=frame["h"], fisheye=fisheye)
        if "transform_matrix" in frame:
            camera["pose"] = numpy.diag((1, -1, -1, 1)) @ inverse(frame["transform_matrix"])
        cameras.append(camera)
    return cameras


# By the words with which calib says what it takes a file for.
READERS = {"ros": ros, "kalibr": kalibr, "opencv": opencv, "euroc": euroc, "mrcal": of_mrcal,
           "basalt": basalt, "colmap": colmap, "camodocal": camodocal, "depthai": depthai,
           "orbslam3": orbslam3, "nerfstudio": nerfstudio}


def imported(calib, path):
    """The format and the cameras that calib reads, or None and why it refuses."""
    done = subprocess.run([calib, "import", "--lossy", "--as", "RobotCalibration", path, "--output",
                           "-", "--to", "json"], capture_output=True, text=True, check=False)
    told = re.search(r"\(--from (\w+)\)", done.stderr)
    if done.returncode != 0 or not told:
        return None, done.stderr.strip()
    return told.group(1), json.loads(done.stdout).get("camera", [])


def field(camera, name):
    """What calib has for a field of Camera."""
    if name == "name":
        return camera.get("name", "")
    if name == "pose":
        return camera.get("extrinsics", {}).get("a", [])
    intrinsics = camera.get("intrinsics", {})
    if name == "points":
        return [[point[key] for key in ("imgX", "imgY", "tgtX", "tgtY")]
                for point in intrinsics.get("samplePoints", [])]
    value = intrinsics.get(name, [] if name in ("k", "p") else None)
    return trimmed(value) if name in ("k", "p") else value


def count(value):
    """How many numbers there are in it."""
    return 0 if isinstance(value, str) else numpy.size(value)


def differences(read, ours, rounded):
    """What the tool reads otherwise, each with both values."""
    found = []
    if len(read) != len(ours):
        return [f"{len(read)} cameras, calib has {len(ours)}"]
    for i, (theirs, camera) in enumerate(zip(read, ours)):
        for name, value in theirs.items():
            if value is None:
                continue
            own = field(camera, name)
            if name in ("pose", "points") or (rounded and name != "name"):
                near = getattr(theirs, "near", NEAR)
                same = numpy.size(own) == numpy.size(value) and numpy.allclose(
                    numpy.ravel(own), numpy.ravel(value), rtol=near, atol=near)
            else:
                same = own == value
            if not same:
                found.append(f"camera {i}: {name}: the tool reads {value}, calib {own}")
    return found


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--calib", type=pathlib.Path, required=True)
    parser.add_argument("files", type=pathlib.Path, nargs="*", metavar="FILE")
    arguments = parser.parse_args()
    inputs = HERE / "inputs"
    files = arguments.files or [inputs / name for name in (
        "left.camera_info.yaml", "left.ini", "camchain.yaml", "kalibr_imucam_chain.yaml", "opencv.yml",
        "opencv.xml", "opencv-points.yml", "autoware.yml", "sensor.yaml", "left.cameramodel",
        "basalt.json", "cameras.txt", "rig_config.json", "camodocal.yaml", "camodocal_mei.yaml",
        "depthai.json", "orbslam3.yaml", "orbslam2.yaml", "transforms.json", "transforms_rig.json")]
    numbers, failed, readers = 0, 0, set()
    for path in files:
        name, ours = imported(arguments.calib, path)
        if name is None:
            print(f"{path}: {ours}")
            failed += 1
            continue
        is_rig = name == "colmap" and path.suffix == ".json"
        try:
            read = (rig_config if is_rig else READERS[name])(path)
        except (ValueError, KeyError) as error:
            print(f"{path}: {error!r}")
            failed += 1
            continue
        for difference in differences(read, ours, path.suffix == ".ini"):
            print(f"{path}: {difference}")
            failed += 1
        readers.add(name)
        numbers += sum(count(value) for camera in read for value in camera.values()
                       if value is not None)
    print(f"{len(files)} files of {len(readers)} tools, {numbers} numbers compared, {failed} differ")
    if not arguments.files and readers != set(READERS):
        print(f"no file of {', '.join(sorted(set(READERS) - readers))}")
        failed += 1
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
