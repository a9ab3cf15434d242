// Basalt calibration: all cameras, and an IMU of which a record knows nothing.
#include "calib/tools/export_text.h"
#include "calib/tools/exporters.h"

namespace calib {

using Direction = Conventions::Direction;

namespace {

// A line for each field.
std::string Map(const std::vector<std::string>& names, const std::vector<double>& values,
                const std::string& indent) {
  std::string text = "{\n";
  for (size_t i = 0; i < names.size(); ++i) {
    text += indent + "  \"" + names[i] + "\": " + NumberList({values[i]}) +
            (i + 1 < names.size() ? "," : "") + "\n";
  }
  return text + indent + "}";
}

std::string Pose(const RigidTransform& pose) {
  const Quaternion q = pose.ToQuaternion();
  return Map({"px", "py", "pz", "qx", "qy", "qz", "qw"},
             {pose.t[0], pose.t[1], pose.t[2], q.x, q.y, q.z, q.w}, "      ");
}

std::string Lens(const ExportCamera& camera) {
  std::vector<std::string> names = {"fx", "fy", "cx", "cy"};
  names.insert(names.end(), camera.form->coefficients.begin(), camera.form->coefficients.end());
  return "{\n        \"camera_type\": \"" + camera.form->word +
         "\",\n        \"intrinsics\": " + Map(names, Parameters(camera), "        ") + "\n      }";
}

// What Basalt's reader wants beside the cameras: no bias, and the noise that it has itself where
// nobody says another.
std::string Imu() {
  const auto field = [](const std::string& key, const std::vector<double>& values) {
    return ",\n    \"" + key + "\": [" + NumberList(values) + "]";
  };
  const auto three = [](double value) { return std::vector<double>(3, value); };
  return field("calib_accel_bias", std::vector<double>(9)) +
         field("calib_gyro_bias", std::vector<double>(12)) + ",\n    \"imu_update_rate\": 200.0" +
         field("accel_noise_std", three(0.016)) + field("gyro_noise_std", three(0.000282)) +
         field("accel_bias_std", three(0.001)) + field("gyro_bias_std", three(0.0001)) +
         ",\n    \"cam_time_offset_ns\": 0,\n    \"vignette\": []";
}

std::vector<ExportedFile> Write(const ExportRig& rig, ExportReport* report) {
  std::string poses, lenses, sizes;
  for (const ExportCamera& camera : rig.cameras) {
    const std::string before = poses.empty() ? "\n      " : ",\n      ";
    poses += before + Pose(rig.conventions->FromRecord(Direction::kFromCamera, camera.pose));
    lenses += before + Lens(camera);
    sizes += before + "[" + std::to_string(camera.intrinsics().width()) + ", " +
             std::to_string(camera.intrinsics().height()) + "]";
  }
  report->notes.emplace_back(
      "calib_*_bias, imu_update_rate, *_std and cam_time_offset_ns are Basalt's defaults, since no "
      "record holds them: put those of your IMU");
  return {{"calibration.json", "{\n  \"value0\": {\n    \"T_imu_cam\": [" + poses +
                                   "\n    ],\n    \"intrinsics\": [" + lenses +
                                   "\n    ],\n    \"resolution\": [" + sizes + "\n    ]" + Imu() +
                                   "\n  }\n}\n"}};
}

}  // namespace

Exporter BasaltExporter() {
  Exporter exporter;
  exporter.format = "basalt";
  exporter.lenses = {{"none", "pinhole", {}}, FisheyeForm("kb4")};
  exporter.keeps = {"width", "height"};
  exporter.needs = {"width", "height"};
  exporter.poses = Exporter::Poses::kNeeded;
  exporter.numbered = true;
  exporter.write = Write;
  return exporter;
}

}  // namespace calib
