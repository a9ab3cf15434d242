// ROS camera_info, as a file that its tools read. A record holds the same numbers, but neither the
// distortion model nor what stereo adds: the model is told, the rectification is the identity.
#include <yaml-cpp/yaml.h>

#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/number.h"
#include "calib/fields/presence.h"
#include "calib/tools/exporters.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

namespace {

struct Model {
  const char* name;
  int k, p;  // most coefficients of each
};
constexpr Model kModels[] = {
    {"plumb_bob", 3, 2}, {"rational_polynomial", 6, 2}, {"equidistant", 4, 0}};

bool Fits(const Model& model, const CameraIntrinsics& intrinsics) {
  return intrinsics.k_size() <= model.k && intrinsics.p_size() <= model.p;
}

std::string FittingModels(const CameraIntrinsics& intrinsics) {
  std::string fitting;
  for (const Model& model : kModels) {
    if (Fits(model, intrinsics)) fitting += std::string(fitting.empty() ? "" : ", ") + model.name;
  }
  return fitting.empty() ? "None fits." : "Those that fit are: " + fitting + ".";
}

// A place is a file's name with a colon, which may have a path behind it.
std::string WithColon(const std::string& place) { return place + (place.back() == ':' ? "" : ":"); }

std::string Below(const std::string& place, const std::string& field) {
  return place + (place.back() == ':' ? " " : ".") + field;
}

const Model& ChooseModel(const CameraIntrinsics& intrinsics, const std::string& place,
                         const std::string& name) {
  if (name.empty() && intrinsics.k_size() == 0 && intrinsics.p_size() == 0) return kModels[0];
  const std::string counts =
      std::to_string(intrinsics.k_size()) + " k and " + std::to_string(intrinsics.p_size()) + " p";
  if (name.empty()) {
    throw Failure(
        WithColon(place) + " has " + counts + ", but a record does not tell their distortion model",
        "Give it with --distortion-model. " + FittingModels(intrinsics));
  }
  for (const Model& model : kModels) {
    if (model.name == name && Fits(model, intrinsics)) return model;
  }
  throw Failure(WithColon(place) + " has " + counts + ", which do not fit " + name,
                FittingModels(intrinsics));
}

// Distortion coefficients in the order of the file, with 0 for those that the record does not have.
std::vector<double> Coefficients(const CameraIntrinsics& intrinsics, const Model& model) {
  const auto k = [&](int i) { return i < intrinsics.k_size() ? intrinsics.k(i) : 0; };
  const auto p = [&](int i) { return i < intrinsics.p_size() ? intrinsics.p(i) : 0; };
  std::vector<double> list = {k(0), k(1)};
  for (int i = 0; i < model.p; ++i) list.push_back(p(i));
  for (int i = 2; i < model.k; ++i) list.push_back(k(i));
  return list;
}

// Some readers take a number without a point for an integer, or with an exponent only for text.
std::string WithPoint(double value) {
  std::string text = Shortest(value);
  const size_t end = text.find_first_of(".ein");
  if (end == std::string::npos) return text + ".0";
  if (text[end] == 'e') text.insert(end, ".0");
  return text;
}

void EmitMatrix(YAML::Emitter& out, const char* key, size_t rows, const std::vector<double>& data) {
  out << YAML::Key << key << YAML::Value << YAML::BeginMap;
  out << YAML::Key << "rows" << YAML::Value << rows;
  out << YAML::Key << "cols" << YAML::Value << data.size() / rows;
  out << YAML::Key << "data" << YAML::Value << YAML::Flow << YAML::BeginSeq;
  for (const double value : data) out << WithPoint(value);
  out << YAML::EndSeq << YAML::EndMap;
}

void ReportOthers(const Message& message, const std::string& place, const std::set<int>& kept) {
  std::vector<const FieldDescriptor*> fields;
  message.GetReflection()->ListFields(message, &fields);
  for (const FieldDescriptor* field : fields) {
    if (kept.count(field->number()) != 0) continue;
    Note(Below(place, field->name()) + " not kept: camera_info has no key for it");
  }
}

void CheckWhole(const CameraIntrinsics& intrinsics, const std::string& place) {
  std::vector<std::string> missing = MissingFields(intrinsics);
  if (!intrinsics.has_width()) missing.push_back("width");
  if (!intrinsics.has_height()) missing.push_back("height");
  if (missing.empty()) return;
  throw Failure(Below(place, missing.front()) + " is not set, and camera_info needs it",
                "Set it first.");
}

}  // namespace

std::string CameraInfo(const CameraCalibration& camera, const std::string& camera_place,
                       const std::string& place, const std::string& model_name) {
  const CameraIntrinsics& in = camera.intrinsics();
  CheckWhole(in, place);
  const Model& model = ChooseModel(in, place, model_name);
  YAML::Emitter out;
  out << YAML::BeginMap;
  out << YAML::Key << "image_width" << YAML::Value << in.width();
  out << YAML::Key << "image_height" << YAML::Value << in.height();
  if (camera.has_name()) out << YAML::Key << "camera_name" << YAML::Value << camera.name();
  EmitMatrix(out, "camera_matrix", 3, {in.fx(), in.skew(), in.cx(), 0, in.fy(), in.cy(), 0, 0, 1});
  out << YAML::Key << "distortion_model" << YAML::Value << model.name;
  EmitMatrix(out, "distortion_coefficients", 1, Coefficients(in, model));
  EmitMatrix(out, "rectification_matrix", 3, {1, 0, 0, 0, 1, 0, 0, 0, 1});
  EmitMatrix(out, "projection_matrix", 3,
             {in.fx(), in.skew(), in.cx(), 0, 0, in.fy(), in.cy(), 0, 0, 0, 1, 0});
  out << YAML::EndMap;
  ReportOthers(camera, camera_place,
               {CameraCalibration::kIntrinsicsFieldNumber, CameraCalibration::kNameFieldNumber});
  using I = CameraIntrinsics;
  ReportOthers(in, place,
               {I::kFxFieldNumber, I::kFyFieldNumber, I::kSkewFieldNumber, I::kCxFieldNumber,
                I::kCyFieldNumber, I::kKFieldNumber, I::kPFieldNumber, I::kWidthFieldNumber,
                I::kHeightFieldNumber});
  return std::string(out.c_str()) + "\n";
}

}  // namespace calib
