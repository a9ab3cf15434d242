#!/usr/bin/env python3
"""Has other tools judge what calib exports for them.

    export_judge.py CALIB

Each file is read by the tool's own parser where Debian has the tool (OpenCV, mrcal, COLMAP, ROS's
camera_calibration_parsers), else by the library that the tool reads with (OpenCV, PyYAML, JSON),
and points are projected through it by OpenCV and mrcal. They must land within 1e-6 of a pixel of
where the record puts them. Needs Debian's python3-opencv, python3-yaml, python3-mrcal, colmap and
python3-camera-calibration-parsers.
"""

import json
import pathlib
import subprocess
import sys
import tempfile

import camera_calibration_parsers
import cv2
import mrcal
import numpy as np
import yaml

LENSES = {
    "none": ([], []),
    "plumb_bob_4": ([-0.28, 0.07], [2e-4, 1.7e-5]),
    "plumb_bob_5": ([-0.28, 0.07, -0.01], [2e-4, 1.7e-5]),
    "rational": ([0.5, -0.2, 0.03, 0.8, -0.1, 0.02], [2e-4, 1.7e-5]),
    "fisheye": ([0.01, -0.02, 0.003, -0.0004], []),
}
# What each format takes; the rest it has to refuse.
TAKES = {
    "ros": ["none", "plumb_bob_4", "plumb_bob_5", "rational", "fisheye"],
    "opencv": ["none", "plumb_bob_4", "plumb_bob_5", "rational", "fisheye"],
    "opencv-stereo": ["none", "plumb_bob_4", "plumb_bob_5", "rational", "fisheye"],
    "kalibr": ["none", "plumb_bob_4", "fisheye"],
    "openvins": ["none", "plumb_bob_4", "fisheye"],
    "orbslam3": ["none", "plumb_bob_4", "plumb_bob_5", "fisheye"],
    "camodocal": ["none", "plumb_bob_4", "fisheye"],
    "basalt": ["none", "fisheye"],
    "mrcal": ["none", "plumb_bob_4", "plumb_bob_5", "rational"],
    "colmap": ["none", "plumb_bob_4", "plumb_bob_5", "rational", "fisheye"],
    "colmap-rig": ["none", "plumb_bob_4", "plumb_bob_5", "rational", "fisheye"],
    "nerfstudio": ["none", "plumb_bob_4", "plumb_bob_5", "fisheye"],
}


def rigid(rotation_vector, translation):
    matrix = np.eye(4)
    matrix[:3, :3] = cv2.Rodrigues(np.array(rotation_vector, float))[0]
    matrix[:3, 3] = translation
    return matrix


def rig(lens):
    """A record of two cameras, as JSON has it."""
    k, p = LENSES[lens]
    poses = [rigid([0.1, -0.2, 1.5], [0.02, -0.06, 0.01]),
             rigid([0.12, -0.17, 1.52], [-0.1, 0.05, 0])]
    return {"camera": [{
        "name": f"cam{i}",
        "intrinsics": {
            "fx": 458.654 + i, "fy": 457.296, "skew": 0, "cx": 367.215, "cy": 248.375 - i,
            "k": [value * (1 + 0.01 * i) for value in k], "p": p, "width": 752, "height": 480},
        "extrinsics": {"a": pose.ravel().tolist()}} for i, pose in enumerate(poses)]}


def project(points, matrix, coefficients, fisheye):
    """OpenCV's own projection of points in the camera's frame."""
    k, zero = np.array(matrix, float), np.zeros(3)
    d = np.array(coefficients, float)
    if fisheye:
        return cv2.fisheye.projectPoints(points[:, None], zero, zero, k, d)[0][:, 0]
    return cv2.projectPoints(points, zero, zero, k, d if d.size else None)[0][:, 0]


def camera_matrix(fx, fy, cx, cy):
    return [[fx, 0, cx], [0, fy, cy], [0, 0, 1]]


def move(transform, points):
    return points @ transform[:3, :3].T + transform[:3, 3]


def expected(camera, points):
    intrinsics = camera["intrinsics"]
    k, p = intrinsics["k"], intrinsics["p"]
    fisheye = len(k) == 4 and not p
    d = k if fisheye else (list(k[:2]) + list(p) + list(k[2:]))
    matrix = camera_matrix(*(intrinsics[key] for key in ("fx", "fy", "cx", "cy")))
    pose = np.array(camera["extrinsics"]["a"]).reshape(4, 4)
    return project(move(pose, points), matrix, d, fisheye)


# Each reader gives, for each camera, a function that projects points of the frame of reference, or
# of the first camera if the format has only that (`relative`), or of the camera itself (`own`).

def read_ros(folder):
    for path in sorted(folder.glob("*.yaml")):
        _, info = camera_calibration_parsers.readCalibration(str(path))
        yield "own", lambda points, info=info: project(
            points, np.reshape(info.K, (3, 3)), info.D, info.distortion_model == "equidistant")


def storage(path):
    opened = cv2.FileStorage(str(path), cv2.FILE_STORAGE_READ)
    assert opened.isOpened(), path
    return opened


def read_opencv(folder):
    for path in sorted(folder.glob("*.yml")):
        file = storage(path)
        fisheye = file.getNode("fisheye_model")
        yield "own", lambda points, file=file, fisheye=fisheye: project(
            points, file.getNode("camera_matrix").mat(),
            file.getNode("distortion_coefficients").mat(),
            not fisheye.empty() and fisheye.real() == 1)


def read_opencv_stereo(folder):
    intrinsics, extrinsics = storage(folder / "intrinsics.yml"), storage(folder / "extrinsics.yml")
    fisheye = not intrinsics.getNode("fisheye_model").empty()
    second = np.eye(4)
    second[:3, :3] = extrinsics.getNode("R").mat()
    second[:3, 3] = extrinsics.getNode("T").mat()[:, 0]
    for number, pose in (("1", np.eye(4)), ("2", second)):
        matrix, d = intrinsics.getNode("M" + number).mat(), intrinsics.getNode("D" + number).mat()
        yield "relative", lambda points, matrix=matrix, d=d, pose=pose: project(
            move(pose, points), matrix, d, fisheye)


def kalibr_lens(camera):
    return (camera_matrix(*camera["intrinsics"]), camera["distortion_coeffs"],
            camera["distortion_model"] == "equidistant")


def read_kalibr(folder):
    chain = yaml.safe_load((folder / "camchain.yaml").read_text())
    before = None
    for name, camera in sorted(chain.items()):
        pose = np.array(camera["T_cam_imu"])
        if before is not None:
            assert np.allclose(np.array(camera["T_cn_cnm1"]) @ before, pose, atol=1e-14), name
        before = pose
        yield "rig", lambda points, pose=pose, camera=camera: project(
            move(pose, points), *kalibr_lens(camera))


def read_openvins(folder):
    path = folder / "kalibr_imucam_chain.yaml"
    file = storage(path)
    for name in ("cam0", "cam1"):
        node = file.getNode(name)

        def numbers(key, node=node):
            given = node.getNode(key)
            return [given.at(i).real() for i in range(given.size())]
        rows = node.getNode("T_imu_cam")
        pose = np.array([[rows.at(i).at(j).real() for j in range(4)] for i in range(4)])
        rotation = pose[:3, :3].T  # as the tool inverts
        to_camera = np.eye(4)
        to_camera[:3, :3], to_camera[:3, 3] = rotation, -rotation @ pose[:3, 3]
        lens = (camera_matrix(*numbers("intrinsics")), numbers("distortion_coeffs"),
                node.getNode("distortion_model").string() == "equidistant")
        assert numbers("resolution") == [752, 480]
        yield "rig", lambda points, pose=to_camera, lens=lens: project(move(pose, points), *lens)


def read_orbslam3(folder):
    file = storage(folder / "settings.yaml")

    def lens(number):
        def value(key):
            return file.getNode(f"Camera{number}.{key}")
        matrix = camera_matrix(*(value(key).real() for key in ("fx", "fy", "cx", "cy")))
        fisheye = file.getNode("Camera.type").string() == "KannalaBrandt8"
        keys = ("k1", "k2", "k3", "k4") if fisheye else ("k1", "k2", "p1", "p2", "k3")
        return matrix, [value(key).real() for key in keys if not value(key).empty()], fisheye
    text = (folder / "settings.yaml").read_text().split("Stereo.T_c1_c2")[1]
    data = text.split("data: [")[1].split("]")[0]  # OpenCV itself makes floats of them
    pose = np.linalg.inv(np.array([float(n) for n in data.split(",")]).reshape(4, 4))
    assert np.allclose(np.linalg.inv(pose), file.getNode("Stereo.T_c1_c2").mat(), atol=1e-6)
    assert file.getNode("Stereo.T_c1_c2").mat().dtype == np.float32
    yield "relative", lambda points: project(points, *lens(1))
    yield "relative", lambda points: project(move(pose, points), *lens(2))


def read_camodocal(folder):
    poses = storage(folder / "extrinsics.yaml")
    for name in ("cam0", "cam1"):
        file = storage(folder / f"{name}.yaml")
        assert file.getNode("camera_name").string() == name
        given = file.getNode("projection_parameters")
        fisheye = file.getNode("model_type").string() == "KANNALA_BRANDT"
        keys = ("mu", "mv", "u0", "v0") if fisheye else ("fx", "fy", "cx", "cy")
        matrix = camera_matrix(*(given.getNode(key).real() for key in keys))
        list_ = given if fisheye else file.getNode("distortion_parameters")
        d = [list_.getNode(key).real() for key in
             (("k2", "k3", "k4", "k5") if fisheye else ("k1", "k2", "p1", "p2"))]
        pose = np.linalg.inv(poses.getNode("body_T_" + name).mat())
        yield "rig", lambda points, pose=pose, lens=(matrix, d, fisheye): project(
            move(pose, points), *lens)


def from_quaternion(w, x, y, z):
    return mrcal.R_from_quat(np.array((w, x, y, z)))


def read_basalt(folder):
    value = json.loads((folder / "calibration.json").read_text())["value0"]
    for place, camera in zip(value["T_imu_cam"], value["intrinsics"]):
        rotation = from_quaternion(*(place[key] for key in ("qw", "qx", "qy", "qz")))
        pose = np.eye(4)
        pose[:3, :3], pose[:3, 3] = rotation, [place[key] for key in ("px", "py", "pz")]
        given = camera["intrinsics"]
        matrix = camera_matrix(*(given[key] for key in ("fx", "fy", "cx", "cy")))
        fisheye = camera["camera_type"] == "kb4"
        d = [given[key] for key in ("k1", "k2", "k3", "k4")] if fisheye else []
        yield "rig", lambda points, pose=np.linalg.inv(pose), lens=(matrix, d, fisheye): project(
            move(pose, points), *lens)


def read_mrcal(folder):
    for path in sorted(folder.glob("*.cameramodel")):
        model = mrcal.cameramodel(str(path))
        assert list(model.imagersize()) == [752, 480]
        yield "rig", lambda points, model=model: mrcal.project(
            mrcal.transform_point_Rt(model.extrinsics_Rt_fromref(), points), *model.intrinsics())


def colmap_lens(model, parameters):
    d = parameters[4:]
    return camera_matrix(parameters[0], parameters[1], parameters[2], parameters[3]), d, \
        model == "OPENCV_FISHEYE"


def read_colmap(folder):
    (folder / "images.txt").write_text("")
    (folder / "points3D.txt").write_text("")
    written = folder / "again"
    written.mkdir()
    # Read and written by the tool.
    for kind, source in (("BIN", folder), ("TXT", written)):
        subprocess.run(["colmap", "model_converter", "--input_path", source,
                        "--output_path", written, "--output_type", kind], check=True,
                       stdout=subprocess.DEVNULL)
    for line in (written / "cameras.txt").read_text().splitlines():
        if line.startswith("#"):
            continue
        _, model, width, height, *numbers = line.split()
        assert (width, height) == ("752", "480")
        lens = colmap_lens(model, [float(number) for number in numbers])
        yield "own", lambda points, lens=lens: project(points, *lens) - 0.5


def read_colmap_rig(folder):
    rigs = json.loads((folder / "rig_config.json").read_text())
    for camera in rigs[0]["cameras"]:
        pose = np.eye(4)
        if not camera.get("ref_sensor"):
            pose[:3, :3] = from_quaternion(*camera["cam_from_rig_rotation"])
            pose[:3, 3] = camera["cam_from_rig_translation"]
        lens = colmap_lens(camera["camera_model_name"], camera["camera_params"])
        yield "relative", lambda points, pose=pose, lens=lens: project(
            move(pose, points), *lens) - 0.5


def read_nerfstudio(folder):
    value = json.loads((folder / "transforms.json").read_text())
    fisheye = value["camera_model"] == "OPENCV_FISHEYE"
    for frame in value["frames"]:
        from_world = np.linalg.inv(np.array(frame["transform_matrix"]))
        matrix = camera_matrix(*(frame[key] for key in ("fl_x", "fl_y", "cx", "cy")))
        keys = ("k1", "k2", "k3", "k4") if fisheye else ("k1", "k2", "p1", "p2", "k3")
        lens = (matrix, [frame.get(key, 0) for key in keys], fisheye)
        yield "rig", lambda points, pose=from_world, lens=lens: project(
            move(pose, points) * [1, -1, -1], *lens) - 0.5


READERS = {"ros": read_ros, "opencv": read_opencv, "opencv-stereo": read_opencv_stereo,
           "kalibr": read_kalibr, "openvins": read_openvins, "orbslam3": read_orbslam3,
           "camodocal": read_camodocal, "basalt": read_basalt, "mrcal": read_mrcal,
           "colmap": read_colmap, "colmap-rig": read_colmap_rig, "nerfstudio": read_nerfstudio}


def judge(calib, format_, lens, folder):
    """The farthest that a point is off, in pixels; None if the format has to refuse the lens."""
    record = rig(lens)
    path = folder / "rig.RobotCalibration.json"
    path.write_text(json.dumps(record))
    out = folder / "out"
    done = subprocess.run([calib, "export", "--to", format_, path, "--output-dir", out],
                          stderr=subprocess.PIPE, text=True, check=False)
    if lens not in TAKES[format_]:
        assert done.returncode == 2, f"{format_} takes {lens}: {done.stderr}"
        return None
    assert done.returncode == 0, done.stderr
    random = np.random.default_rng(20)
    worst, cameras = 0, 0
    for camera, (frame, projected) in zip(record["camera"], READERS[format_](out)):
        in_camera = random.uniform((-1, -0.7, 1), (1, 0.7, 4), (200, 3))
        pose = np.array(camera["extrinsics"]["a"]).reshape(4, 4)
        points = move(np.linalg.inv(pose), in_camera)
        first = np.array(record["camera"][0]["extrinsics"]["a"]).reshape(4, 4)
        given = {"own": in_camera, "rig": points, "relative": move(first, points)}[frame]
        worst = max(worst, np.abs(projected(given) - expected(camera, points)).max())
        cameras += 1
    assert cameras == 2, f"{format_} has {cameras} cameras of {lens}"
    return worst


def main():
    calib = pathlib.Path(sys.argv[1]).resolve()
    bad = 0
    for format_ in READERS:
        for lens in LENSES:
            with tempfile.TemporaryDirectory() as folder:
                off = judge(calib, format_, lens, pathlib.Path(folder))
            if off is None:
                continue
            print(f"{format_:14} {lens:12} off by {off:.1e} pixel")
            bad += not off <= 1e-6
    sys.exit(1 if bad else 0)


if __name__ == "__main__":
    main()
