// Kalibr camchain, and that of OpenVINS, which has other transforms and is read by OpenCV.
#include "calib/tools/export_text.h"
#include "calib/tools/exporters.h"

namespace calib {

using Direction = Conventions::Direction;

namespace {

const char kTopicNote[] =
    "rostopic is written as /cam0/image_raw, and so on, which is a guess: the file needs one";

// OpenCV wants a list deeper than its key.
std::string Transform(const std::string& key, const RigidTransform& transform) {
  return "  " + key + ":\n" + RowLines(transform, "    - ", "\n");
}

std::string Camera(const ExportCamera& camera, size_t number, const std::string& transforms) {
  const auto& in = camera.intrinsics();
  const std::string name = "cam" + std::to_string(number);
  return name + ":\n" + transforms + "  camera_model: pinhole\n  distortion_coeffs: [" +
         NumberList(camera.coefficients) + "]\n  distortion_model: " + camera.form->word +
         "\n  intrinsics: [" + NumberList(Projection(camera)) + "]\n  resolution: [" +
         std::to_string(in.width()) + ", " + std::to_string(in.height()) + "]\n  rostopic: /" +
         name + "/image_raw\n";
}

std::vector<ExportedFile> WriteCamchain(const ExportRig& rig, ExportReport* report) {
  std::string text;
  const ExportCamera& first = rig.cameras[0];
  const bool from_first = !first.has_pose || first.pose.IsIdentity();
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    const ExportCamera& camera = rig.cameras[i];
    std::string transforms;
    if (!from_first) transforms += Transform("T_cam_imu", camera.pose);
    if (i > 0) transforms += Transform("T_cn_cnm1", RelativeTo(rig.cameras[i - 1], camera));
    text += Camera(camera, i, transforms);
  }
  report->notes.emplace_back(kTopicNote);
  return {{"camchain.yaml", text}};
}

std::vector<ExportedFile> WriteOpenVins(const ExportRig& rig, ExportReport* report) {
  std::string text = kFileStorageHeader;
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    const ExportCamera& camera = rig.cameras[i];
    const RigidTransform pose = rig.conventions->FromRecord(Direction::kFromCamera, camera.pose);
    text += Camera(camera, i, Transform("T_imu_cam", pose));
  }
  report->notes.emplace_back(kTopicNote);
  return {{"kalibr_imucam_chain.yaml", text}};
}

Exporter Common(const std::string& format) {
  Exporter exporter;
  exporter.format = format;
  exporter.lenses = {BrownForm("plumb_bob", "radtan", 4), FisheyeForm("equidistant")};
  exporter.keeps = {"width", "height"};
  exporter.needs = {"width", "height"};
  exporter.poses = Exporter::Poses::kNeeded;
  exporter.numbered = true;
  return exporter;
}

}  // namespace

Exporter CamchainExporter() {
  Exporter exporter = Common("kalibr");
  exporter.write = WriteCamchain;
  return exporter;
}

Exporter OpenVinsExporter() {
  Exporter exporter = Common("openvins");
  exporter.write = WriteOpenVins;
  return exporter;
}

}  // namespace calib
