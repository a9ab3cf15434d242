"""Uses the records as a program may; for types_test.py, which does not run it."""

from typing import List

from calibration_protolib import (CameraCalibration, FocusCheckProto, RobotCalibration, formats,
                                  parse, read, read_log, to_numpy, write, write_log)


def names(robot: RobotCalibration) -> List[str]:
    return [camera.name for camera in robot.camera if camera.HasField("name")]


def change(path: str) -> float:
    robot = read(path, RobotCalibration)
    camera: CameraCalibration = robot.camera[0]
    camera.serial = "0042"
    camera.intrinsics.k.append(0.001)
    camera.intrinsics.k.extend(range(3))
    camera.intrinsics.ClearField("p")
    camera.extrinsics.a[:] = [1, 0, 0]
    robot.camera.add(name="cam1").intrinsics.fx = 458
    robot.camera.append(CameraCalibration(name="cam2", model=None))
    del robot.camera[2]
    write(path, robot)
    write_log(path + ".log", [FocusCheckProto(ok=True, bins=[1, 2.5])])
    points = to_numpy(camera.intrinsics, "sample_points")
    return float(points.shape[0]) + sum(value for value in camera.intrinsics.k)


def count(path: str, data: bytes) -> int:
    parse(data, RobotCalibration).FindInitializationErrors()
    return sum(check.ok for check in read_log(path, FocusCheckProto))


def as_camera_info(path: str) -> List[str]:
    with open(path, "rb") as stream:
        robot, format, notes = formats.read(stream, lens="plumb_bob", lossy=True)
    assert format in formats.readable_formats()
    options = formats.WriteOptions(rectification=[1, 0, 0, 0, 1, 0, 0, 0, 1], width=752)
    texts = [formats.write_camera_info(camera, options).text for camera in robot.camera]
    files = formats.write(formats.read_ros(texts[0].encode()).robot, "kalibr").files
    return texts + [note.text for note in notes] + [text.decode() for text in files.values()]
