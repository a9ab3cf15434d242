// COLMAP: cameras.txt, which lists cameras, and rig_config.json, which says how they sit to the
// first of them.
#include "calib/tools/export_text.h"
#include "calib/tools/exporters.h"

namespace calib {

namespace {

std::vector<ExportedFile> WriteList(const ExportRig& rig, ExportReport* /*report*/) {
  std::string text = "# CAMERA_ID MODEL WIDTH HEIGHT PARAMS[]\n";
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    const ExportCamera& camera = rig.cameras[i];
    text += std::to_string(i + 1) + " " + camera.form->word + " " +
            std::to_string(camera.intrinsics().width()) + " " +
            std::to_string(camera.intrinsics().height()) + " " +
            NumberList(Parameters(camera), " ") + "\n";
  }
  return {{"cameras.txt", text}};
}

std::string Field(const std::string& key, const std::string& value) {
  return ",\n        \"" + key + "\": " + value;
}

// A camera's images are in a folder of its name.
std::vector<ExportedFile> WriteRig(const ExportRig& rig, ExportReport* report) {
  std::string text = "[\n  {\n    \"cameras\": [";
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    const ExportCamera& camera = rig.cameras[i];
    text += std::string(i == 0 ? "" : ",") +
            "\n      {\n        \"image_prefix\": " + QuotedName(camera, "/", report);
    if (i == 0) {
      text += Field("ref_sensor", "true");
    } else if (camera.has_pose) {
      const RigidTransform pose = RelativeTo(rig.cameras[0], camera);
      const Quaternion q = pose.ToQuaternion();
      text +=
          Field("cam_from_rig_rotation", "[" + NumberList({q.w, q.x, q.y, q.z}) + "]") +
          Field("cam_from_rig_translation", "[" + NumberList({pose.t.begin(), pose.t.end()}) + "]");
    }
    text += Field("camera_model_name", "\"" + camera.form->word + "\"") +
            Field("camera_params", "[" + NumberList(Parameters(camera)) + "]") + "\n      }";
  }
  if (rig.cameras[0].has_pose && !rig.cameras[0].pose.IsIdentity()) {
    report->notes.push_back("COLMAP's rig begins at " + rig.cameras[0].name +
                            ": where it sits itself is not written");
  }
  return {{"rig_config.json", text + "\n    ]\n  }\n]\n"}};
}

std::vector<LensForm> Lenses() {
  return {{"none", "PINHOLE", {}},
          BrownForm("plumb_bob", "OPENCV", 4),
          BrownForm("rational_polynomial", "FULL_OPENCV", 8),
          FisheyeForm("OPENCV_FISHEYE")};
}

}  // namespace

Exporter ColmapExporter() {
  Exporter exporter;
  exporter.format = "colmap";
  exporter.lenses = Lenses();
  exporter.keeps = {"width", "height"};
  exporter.needs = {"width", "height"};
  exporter.write = WriteList;
  return exporter;
}

Exporter ColmapRigExporter() {
  Exporter exporter;
  exporter.format = "colmap-rig";
  exporter.lenses = Lenses();
  exporter.keeps = {"name"};
  exporter.poses = Exporter::Poses::kOptional;
  exporter.write = WriteRig;
  return exporter;
}

}  // namespace calib
