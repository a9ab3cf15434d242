// mrcal .cameramodel, which is a dictionary of Python.
#include "calib/tools/export_text.h"
#include "calib/tools/exporters.h"

namespace calib {

namespace {

std::string Camera(const ExportCamera& camera) {
  const auto& in = camera.intrinsics();
  const std::array<double, 3> v = camera.pose.ToRotationVector(), t = camera.pose.t;
  return "{\n    'lensmodel':  '" + camera.form->word + "',\n    'intrinsics': [ " +
         NumberList(Parameters(camera)) + " ],\n    'extrinsics': [ " +
         NumberList({v[0], v[1], v[2], t[0], t[1], t[2]}) + " ],\n    'imagersize': [ " +
         std::to_string(in.width()) + ", " + std::to_string(in.height()) + " ],\n}\n";
}

std::vector<ExportedFile> Write(const ExportRig& rig, ExportReport* /*report*/) {
  std::vector<ExportedFile> files;
  for (const ExportCamera& camera : rig.cameras) {
    files.push_back({CameraFileName(camera, ".cameramodel"), Camera(camera)});
  }
  return files;
}

}  // namespace

Exporter MrcalExporter() {
  Exporter exporter;
  exporter.format = "mrcal";
  exporter.lenses = {{"none", "LENSMODEL_PINHOLE", {}},
                     BrownForm("plumb_bob", "LENSMODEL_OPENCV4", 4),
                     BrownForm("plumb_bob", "LENSMODEL_OPENCV5", 5),
                     BrownForm("rational_polynomial", "LENSMODEL_OPENCV8", 8)};
  exporter.keeps = {"width", "height"};
  exporter.needs = {"width", "height"};
  exporter.poses = Exporter::Poses::kOptional;
  exporter.file_a_camera = true;
  exporter.write = Write;
  return exporter;
}

}  // namespace calib
