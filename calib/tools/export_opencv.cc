// OpenCV FileStorage in YAML: a camera as the calibration program writes it, and a pair in the two
// files of stereo calibration.
#include <cmath>

#include "calib/console/failure.h"
#include "calib/tools/export_text.h"
#include "calib/tools/exporters.h"

namespace calib {

using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::CameraIntrinsicsSamplePoints;

namespace {

const char kFisheye[] = "fisheye_model";

std::string CameraMatrix(const std::string& key, const CameraIntrinsics& in) {
  return FileStorageMatrix(key, 3, 3, "d",
                           {in.fx(), in.skew(), in.cx(), 0, in.fy(), in.cy(), 0, 0, 1});
}

std::string LensKeys(const ExportCamera& camera) {
  return camera.form->word.empty() ? "" : camera.form->word + ": 1\n";
}

std::string Distortion(const std::string& key, const ExportCamera& camera) {
  return FileStorageMatrix(key, 1, camera.coefficients.size(), "d", camera.coefficients);
}

bool IsWhole(const CameraIntrinsicsSamplePoints& sample) {
  return sample.has_img_x() && sample.has_img_y() && sample.has_tgt_x() && sample.has_tgt_y();
}

bool IsFinite(const CameraIntrinsicsSamplePoints& sample) {
  return std::isfinite(sample.img_x()) && std::isfinite(sample.img_y()) &&
         std::isfinite(sample.tgt_x()) && std::isfinite(sample.tgt_y());
}

// All samples as one view of a target that has a point for each, since a record does not tell
// which view they belong to.
std::string Samples(const ExportCamera& camera, ExportReport* report) {
  const CameraIntrinsics& in = camera.intrinsics();
  std::vector<double> image, target;
  for (const auto& sample : in.sample_points()) {
    if (!IsWhole(sample)) {
      report->leftovers.push_back({Below(camera.intrinsics_place, "sample_points") + " ",
                                   "not kept: not each has all of its coordinates"});
      return "";
    }
    if (!IsFinite(sample) || !std::isfinite(in.tgt_z())) {
      const size_t i = image.size() / 2;
      throw Failure(Below(camera.intrinsics_place, "sample_points[" + std::to_string(i) + "]") +
                        " has a coordinate that is not finite",
                    "Correct it in the record.");
    }
    image.insert(image.end(), {sample.img_x(), sample.img_y()});
    target.insert(target.end(), {sample.tgt_x(), sample.tgt_y(), in.tgt_z()});
  }
  if (image.empty()) return "";
  const size_t count = image.size() / 2;
  return FileStorageMatrix("grid_points", count, 1, "\"3f\"", target) +
         FileStorageMatrix("image_points", 1, count, "\"2f\"", image);
}

std::string Camera(const ExportCamera& camera, ExportReport* report) {
  const CameraIntrinsics& in = camera.intrinsics();
  std::string text = kFileStorageHeader;
  if (in.has_width()) text += "image_width: " + std::to_string(in.width()) + "\n";
  if (in.has_height()) text += "image_height: " + std::to_string(in.height()) + "\n";
  text += LensKeys(camera) + CameraMatrix("camera_matrix", in) +
          Distortion("distortion_coefficients", camera);
  if (in.has_error_per_point()) {
    text += "avg_reprojection_error: " + NumberList({in.error_per_point()}) + "\n";
  }
  return text + Samples(camera, report);
}

std::vector<ExportedFile> WriteCameras(const ExportRig& rig, ExportReport* report) {
  std::vector<ExportedFile> files;
  for (const ExportCamera& camera : rig.cameras) {
    files.push_back({CameraFileName(camera, ".yml"), Camera(camera, report)});
  }
  return files;
}

std::vector<ExportedFile> WritePair(const ExportRig& rig, ExportReport* report) {
  std::string intrinsics = kFileStorageHeader + LensKeys(rig.cameras[0]);
  for (size_t i = 0; i < 2; ++i) {
    const std::string number = std::to_string(i + 1);
    intrinsics += CameraMatrix("M" + number, rig.cameras[i].intrinsics()) +
                  Distortion("D" + number, rig.cameras[i]);
  }
  const RigidTransform pose = RelativeTo(rig.cameras[0], rig.cameras[1]);
  const std::string extrinsics = kFileStorageHeader +
                                 FileStorageMatrix("R", 3, 3, "d", {pose.r.begin(), pose.r.end()}) +
                                 FileStorageMatrix("T", 3, 1, "d", {pose.t.begin(), pose.t.end()});
  report->notes.emplace_back(
      "R1, R2, P1, P2 and Q are not written; cv::stereoRectify computes them");
  return {{"intrinsics.yml", intrinsics}, {"extrinsics.yml", extrinsics}};
}

std::vector<LensForm> Lenses() {
  return {BrownForm("plumb_bob", "", 5), BrownForm("rational_polynomial", "", 8),
          FisheyeForm(kFisheye)};
}

}  // namespace

Exporter FileStorageExporter() {
  Exporter exporter;
  exporter.format = "opencv";
  exporter.lenses = Lenses();
  exporter.keeps = {"skew", "width", "height", "error_per_point", "sample_points", "tgt_z"};
  exporter.file_a_camera = true;
  exporter.write = WriteCameras;
  return exporter;
}

Exporter StereoExporter() {
  Exporter exporter;
  exporter.format = "opencv-stereo";
  exporter.lenses = Lenses();
  exporter.keeps = {"skew"};
  exporter.poses = Exporter::Poses::kNeeded;
  exporter.one_lens = true;
  exporter.least = exporter.most = 2;
  exporter.write = WritePair;
  return exporter;
}

}  // namespace calib
