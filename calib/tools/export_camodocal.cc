// camodocal, the camera files of VINS-Mono and VINS-Fusion. Where the cameras sit is part of the
// estimator's own configuration, whose keys are written to a file of their own.
#include "calib/tools/export_text.h"
#include "calib/tools/exporters.h"

namespace calib {

using Direction = Conventions::Direction;

namespace {

const char kFisheye[] = "KANNALA_BRANDT";

std::string Map(const std::string& key, const std::vector<std::string>& names,
                const std::vector<double>& values) {
  std::string text = key + ":\n";
  for (size_t i = 0; i < names.size(); ++i) {
    text += "   " + names[i] + ": " + NumberList({values[i]}) + "\n";
  }
  return text;
}

std::string Camera(const ExportCamera& camera, ExportReport* report) {
  const auto& in = camera.intrinsics();
  std::string text = kFileStorageHeader;
  text += "model_type: " + camera.form->word + "\ncamera_name: " + QuotedName(camera, "", report) +
          "\nimage_width: " + std::to_string(in.width()) +
          "\nimage_height: " + std::to_string(in.height()) + "\n";
  if (camera.form->word == kFisheye) {
    std::vector<double> all = camera.coefficients;
    all.insert(all.end(), {in.fx(), in.fy(), camera.cx, camera.cy});
    return text +
           Map("projection_parameters", {"k2", "k3", "k4", "k5", "mu", "mv", "u0", "v0"}, all);
  }
  return text + Map("distortion_parameters", camera.form->coefficients, camera.coefficients) +
         Map("projection_parameters", {"fx", "fy", "cx", "cy"}, Projection(camera));
}

std::vector<ExportedFile> Write(const ExportRig& rig, ExportReport* report) {
  std::vector<ExportedFile> files;
  std::string poses;
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    const ExportCamera& camera = rig.cameras[i];
    files.push_back({CameraFileName(camera, ".yaml"), Camera(camera, report)});
    if (!camera.has_pose) continue;
    const RigidTransform pose = rig.conventions->FromRecord(Direction::kFromCamera, camera.pose);
    poses += FileStorageMatrix("body_T_cam" + std::to_string(i), 4, 4, "d", pose.Rows());
  }
  if (!poses.empty()) files.push_back({"extrinsics.yaml", kFileStorageHeader + poses});
  return files;
}

}  // namespace

Exporter CamodocalExporter() {
  Exporter exporter;
  exporter.format = "camodocal";
  exporter.lenses = {BrownForm("plumb_bob", "PINHOLE", 4), FisheyeForm(kFisheye)};
  exporter.keeps = {"width", "height", "name"};
  exporter.needs = {"width", "height"};
  exporter.poses = Exporter::Poses::kApart;
  exporter.file_a_camera = true;
  exporter.write = Write;
  return exporter;
}

}  // namespace calib
