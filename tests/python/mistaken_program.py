"""Mistakes that type checkers find; for types_test.py, which does not run it."""

from calibration_protolib import (CameraCalibration, FocusCheckProto, RobotCalibration, formats,
                                  parse, read, read_log, to_numpy, write, write_log)

robot = read("robot.binpb", RobotCalibration)
camera = robot.camera[0]
print(robot.cameras)  # error
camera.name = 7  # error
camera.intrinsics.fx = "458"  # error
camera.intrinsics = CameraCalibration().intrinsics  # error
camera.intrinsics.k = [1.0]  # error
camera.intrinsics.k.append("1")  # error
camera.HasField("nmae")  # error
robot.HasField("camera")  # error
robot.ClearField("cam")  # error
robot.camera.append(robot)  # error
robot.camera[0] = camera  # error
CameraCalibration("cam0")  # error
CameraCalibration(nmae="cam0")  # error
check: FocusCheckProto = read("robot.binpb", RobotCalibration)  # error
read(7, RobotCalibration)  # error
read("robot.binpb", str)  # error
parse("text", RobotCalibration)  # error
write("robot.binpb", [robot])  # error
write_log("checks.log", robot)  # error
to_numpy(camera.intrinsics.k)  # error
for other in read_log("checks.log", FocusCheckProto):
    print(other.camera)  # error
formats.read_kalibr(7)  # error
formats.read("camchain.yaml").cameras  # error
formats.write_camera_info(robot)  # error
formats.write(robot, "ros", width=752)  # error
