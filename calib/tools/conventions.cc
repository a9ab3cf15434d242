#include "calib/tools/conventions.h"

#include <algorithm>
#include <stdexcept>

namespace calib {

namespace {

// From the axes of OpenCV to those of OpenGL, and back.
RigidTransform Turn() { return {{1, 0, 0, 0, -1, 0, 0, 0, -1}, {0, 0, 0}}; }

}  // namespace

const std::vector<Conventions>& AllConventions() {
  using Axes = Conventions::Axes;
  using Direction = Conventions::Direction;
  using Rotation = Conventions::Rotation;
  constexpr auto kCv = Axes::kOpenCv;
  static const std::vector<Conventions> all = {
      {"ros", "ROS camera_info", 0, kCv, {}},
      {"kalibr",
       "Kalibr camchain",
       0,
       kCv,
       {{"T_cam_imu", Direction::kToCamera, Rotation::kMatrix},
        {"T_cn_cnm1", Direction::kBetween, Rotation::kMatrix}}},
      {"opencv", "OpenCV FileStorage", 0, kCv, {}},
      {"opencv-stereo",
       "OpenCV stereo files",
       0,
       kCv,
       {{"R, T", Direction::kBetween, Rotation::kMatrix}},
       0},
      {"autoware",
       "Autoware camera file",
       0,
       kCv,
       {{"CameraExtrinsicMat", Direction::kFromCamera, Rotation::kMatrix}}},
      {"orbslam3",
       "ORB-SLAM3 settings",
       0,
       kCv,
       {{"IMU.T_b_c1", Direction::kFromCamera, Rotation::kMatrix},
        {"Stereo.T_c1_c2", Direction::kFromCamera, Rotation::kMatrix}}},
      {"openvins",
       "OpenVINS kalibr_imucam_chain",
       0,
       kCv,
       {{"T_imu_cam", Direction::kFromCamera, Rotation::kMatrix}}},
      {"camodocal",
       "camodocal (VINS)",
       0,
       kCv,
       {{"body_T_cam0", Direction::kFromCamera, Rotation::kMatrix}}},
      {"euroc", "EuRoC sensor.yaml", 0, kCv, {{"T_BS", Direction::kFromCamera, Rotation::kMatrix}}},
      {"basalt",
       "Basalt calibration",
       0,
       kCv,
       {{"T_imu_cam", Direction::kFromCamera, Rotation::kQuaternionXyzw}}},
      {"mrcal",
       "mrcal .cameramodel",
       0,
       kCv,
       {{"extrinsics", Direction::kToCamera, Rotation::kVector}},
       0},
      {"depthai",
       "DepthAI calibration",
       0,
       kCv,
       {{"extrinsics", Direction::kFromCamera, Rotation::kMatrix}},
       0.01},
      {"colmap", "COLMAP cameras.txt", 0.5, kCv, {}},
      {"colmap-rig",
       "COLMAP rig_config.json",
       0.5,
       kCv,
       {{"cam_from_rig", Direction::kToCamera, Rotation::kQuaternionWxyz}},
       0},
      {"nerfstudio",
       "nerfstudio transforms.json",
       0.5,
       Axes::kOpenGl,
       {{"transform_matrix", Direction::kFromCamera, Rotation::kMatrix}},
       0},
      {"mcap",
       "MCAP with Foxglove's messages",
       0,
       kCv,
       {{"foxglove.FrameTransform", Direction::kFromCamera, Rotation::kQuaternionXyzw}}},
      {"tf",
       "ROS TFMessage",
       0,
       kCv,
       {{"transform", Direction::kFromCamera, Rotation::kQuaternionXyzw}}},
      {"urdf", "URDF", 0, kCv, {{"origin", Direction::kFromCamera, Rotation::kRollPitchYaw}}},
  };
  return all;
}

const Conventions& ConventionsOf(std::string_view format) {
  const std::vector<Conventions>& all = AllConventions();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [&](const Conventions& of) { return of.format == format; });
  if (found == all.end()) throw std::invalid_argument("no conventions of " + std::string(format));
  return *found;
}

RigidTransform Conventions::ToRecord(Direction direction, const RigidTransform& file) const {
  const RigidTransform to_camera = direction == Direction::kFromCamera ? file.Inverse() : file;
  return axes == Axes::kOpenCv ? to_camera : Turn() * to_camera;
}

RigidTransform Conventions::FromRecord(Direction direction, const RigidTransform& record) const {
  const RigidTransform turned = axes == Axes::kOpenCv ? record : Turn() * record;
  return direction == Direction::kFromCamera ? turned.Inverse() : turned;
}

}  // namespace calib
