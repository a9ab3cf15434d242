// ORB-SLAM3 settings of one camera or of a stereo pair: what is calibrated of them. The rest are
// choices of the user.
#include "calib/tools/export_text.h"
#include "calib/tools/exporters.h"

namespace calib {

using Direction = Conventions::Direction;

namespace {

const char kFisheye[] = "KannalaBrandt8";

std::string Camera(const ExportCamera& camera, const std::string& name) {
  const std::vector<double> values = Parameters(camera);
  std::vector<std::string> keys = {"fx", "fy", "cx", "cy"};
  keys.insert(keys.end(), camera.form->coefficients.begin(), camera.form->coefficients.end());
  std::string text;
  for (size_t i = 0; i < keys.size(); ++i) {
    text += name + "." + keys[i] + ": " + NumberList({values[i]}) + "\n";
  }
  return text;
}

// The reader makes floats of the numbers, whatever they are said to be.
std::string Transform(const std::string& key, const RigidTransform& transform) {
  return FileStorageMatrix(key, 4, 4, "f", transform.Rows());
}

std::vector<ExportedFile> Write(const ExportRig& rig, ExportReport* report) {
  const ExportCamera& first = rig.cameras[0];
  std::string text = kFileStorageHeader;
  text += "File.version: \"1.0\"\nCamera.type: \"" + first.form->word + "\"\n";
  text += Camera(first, "Camera1");
  const bool pair = rig.cameras.size() == 2;
  if (pair) text += Camera(rig.cameras[1], "Camera2");
  text += "Camera.width: " + std::to_string(first.intrinsics().width()) +
          "\nCamera.height: " + std::to_string(first.intrinsics().height()) + "\n";
  const auto inverse = [&](const RigidTransform& transform) {
    return rig.conventions->FromRecord(Direction::kFromCamera, transform);
  };
  if (pair) text += Transform("Stereo.T_c1_c2", inverse(RelativeTo(first, rig.cameras[1])));
  if (first.has_pose && !(pair && first.pose.IsIdentity())) {
    text += Transform("IMU.T_b_c1", inverse(first.pose));
  }
  report->notes.emplace_back(
      "Camera.fps, Camera.RGB, ORBextractor.*, Viewer.* and, of a pair, Stereo.ThDepth (and "
      "Camera*.overlapping* of fisheyes) are settings that no calibration tells: add yours");
  if (pair && first.form->word == kFisheye && first.coefficients != rig.cameras[1].coefficients) {
    report->notes.emplace_back(
        "ORB-SLAM3 1.0 reads k1 to k4 of Camera1 for Camera2, too; those of Camera2 are written "
        "as they are");
  }
  return {{"settings.yaml", text}};
}

}  // namespace

Exporter OrbSlamExporter() {
  Exporter exporter;
  exporter.format = "orbslam3";
  exporter.lenses = {{"none", "PinHole", {}},
                     BrownForm("plumb_bob", "PinHole", 4),
                     BrownForm("plumb_bob", "PinHole", 5),
                     FisheyeForm(kFisheye)};
  exporter.keeps = {"width", "height"};
  exporter.needs = {"width", "height"};
  exporter.poses = Exporter::Poses::kNeeded;
  exporter.one_lens = exporter.one_size = true;
  exporter.most = 2;
  exporter.write = Write;
  return exporter;
}

}  // namespace calib
