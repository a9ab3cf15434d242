// ROS camera_info, as a file that its tools read. A record holds the same numbers, but not what
// stereo adds: rectification and projection are those of a camera on its own, or are taken over
// from an earlier file.
#include <yaml-cpp/yaml.h>

#include "calib/console/failure.h"
#include "calib/tools/exporters.h"
#include "calib/tools/import_common.h"
#include "calib/tools/yaml_values.h"

namespace calib {

using zarvo::calibration::CameraIntrinsics;

namespace {

void EmitMatrix(YAML::Emitter& out, const char* key, size_t rows, const std::vector<double>& data) {
  out << YAML::Key << key << YAML::Value << YAML::BeginMap;
  out << YAML::Key << "rows" << YAML::Value << rows;
  out << YAML::Key << "cols" << YAML::Value << data.size() / rows;
  out << YAML::Key << "data" << YAML::Value << YAML::Flow << YAML::BeginSeq;
  for (const double value : data) out << YamlNumber(value);
  out << YAML::EndSeq << YAML::EndMap;
}

std::string CameraInfo(const ExportCamera& camera, const ExportOptions& options) {
  const CameraIntrinsics& in = camera.intrinsics();
  YAML::Emitter out;
  out << YAML::BeginMap;
  out << YAML::Key << "image_width" << YAML::Value << in.width();
  out << YAML::Key << "image_height" << YAML::Value << in.height();
  if (camera.camera.has_name()) {
    out << YAML::Key << "camera_name" << YAML::Value;
    EmitText(&out, camera.camera.name());
  }
  EmitMatrix(out, "camera_matrix", 3, {in.fx(), in.skew(), in.cx(), 0, in.fy(), in.cy(), 0, 0, 1});
  out << YAML::Key << "distortion_model" << YAML::Value << camera.form->word;
  EmitMatrix(out, "distortion_coefficients", 1, camera.coefficients);
  std::vector<double> rectification = options.rectification, projection = options.projection;
  if (projection.empty()) {
    rectification = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    projection = {in.fx(), in.skew(), in.cx(), 0, 0, in.fy(), in.cy(), 0, 0, 0, 1, 0};
  }
  EmitMatrix(out, "rectification_matrix", 3, rectification);
  EmitMatrix(out, "projection_matrix", 3, projection);
  out << YAML::EndMap;
  return std::string(out.c_str()) + "\n";
}

std::vector<ExportedFile> Write(const ExportRig& rig, ExportReport* report) {
  std::vector<ExportedFile> files;
  for (const ExportCamera& camera : rig.cameras) {
    files.push_back({CameraFileName(camera, ".yaml"), CameraInfo(camera, rig.options)});
  }
  if (rig.options.projection.empty()) {
    report->notes.push_back(
        "rectification and projection are those of a single camera, since no record holds others; "
        "'calib rectify --camera-info' computes them, --projection-from takes them of a file");
  }
  return files;
}

// A matrix of the file, or the list of a message.
std::vector<double> Matrix(const Foreign& file, const std::string& key, const std::string& list,
                           int columns) {
  if (const auto matrix = file.Find({key})) return MatrixData(*matrix, 3, columns, 1);
  std::string small = list;
  small[0] = static_cast<char>(small[0] - 'A' + 'a');
  const std::optional<Foreign> numbers = file.Find({list, small});
  if (!numbers) file.Refuse("has no " + key, "Name a camera_info, a file or a message.");
  std::vector<double> data = numbers->Numbers();
  if (data.size() != 3 * static_cast<size_t>(columns)) {
    numbers->Refuse(
        "has " + std::to_string(data.size()) + " numbers, expected " + std::to_string(3 * columns),
        "Correct it there.");
  }
  return data;
}

void CheckSize(const Foreign& file, const std::string& key, const std::string& in_message,
               const std::string& place, int32_t size) {
  const auto given = file.Find({key, in_message});
  if (!given || size == 0 || given->Count() == size) return;
  given->Refuse("is " + given->Text() + ", but " + Below(place, in_message) + " is " +
                    std::to_string(size) + ": its projection is for other images",
                "Name the camera_info of this camera.");
}

}  // namespace

void TakeProjection(const Foreign& camera_info, const CameraInRecord& camera,
                    ExportOptions* options) {
  const CameraIntrinsics& in = camera.camera->intrinsics();
  CheckSize(camera_info, "image_width", "width", camera.intrinsics_place, in.width());
  CheckSize(camera_info, "image_height", "height", camera.intrinsics_place, in.height());
  options->rectification = Matrix(camera_info, "rectification_matrix", "R", 3);
  options->projection = Matrix(camera_info, "projection_matrix", "P", 4);
}

Exporter CameraInfoExporter() {
  Exporter exporter;
  exporter.format = "ros";
  exporter.lenses = {BrownForm("plumb_bob", "plumb_bob", 5),
                     BrownForm("rational_polynomial", "rational_polynomial", 8),
                     FisheyeForm("equidistant")};
  exporter.keeps = {"skew", "width", "height", "name"};
  exporter.needs = {"width", "height"};
  exporter.file_a_camera = true;
  exporter.has_projection = true;
  exporter.write = Write;
  return exporter;
}

}  // namespace calib
