// ROS camera_info, as a file that its tools read. A record holds the same numbers, but not what
// stereo adds: the rectification is the identity.
#include <yaml-cpp/yaml.h>

#include <cmath>

#include "calib/console/failure.h"
#include "calib/console/number.h"
#include "calib/fields/presence.h"
#include "calib/tools/exporters.h"
#include "calib/tools/yaml_values.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

namespace {

// Four radial coefficients and no tangential one are those of a fisheye: no other model is listed
// so.
bool IsFisheye(const CameraIntrinsics& intrinsics) {
  return intrinsics.k_size() == 4 && intrinsics.p_size() == 0;
}

bool Fits(const LensModel& model, const CameraIntrinsics& intrinsics) {
  if (IsFisheye(intrinsics) && model.order != LensModel::Order::kFisheye) return false;
  return model.in_camera_info && intrinsics.k_size() <= model.k() &&
         intrinsics.p_size() <= model.p();
}

std::string FittingModels(const CameraIntrinsics& intrinsics) {
  std::string fitting;
  for (const LensModel& model : LensModels()) {
    if (Fits(model, intrinsics)) fitting += (fitting.empty() ? "" : ", ") + model.name;
  }
  return fitting.empty() ? "None fits." : "Those that fit are: " + fitting + ".";
}

// A place is a file's name with a colon, which may have a path behind it.
std::string WithColon(const std::string& place) { return place + (place.back() == ':' ? "" : ":"); }

std::string Below(const std::string& place, const std::string& field) {
  return place + (place.back() == ':' ? " " : ".") + field;
}

// Distortion coefficients in the order of the file, with 0 for those that the record does not have.
std::vector<double> Coefficients(const CameraIntrinsics& intrinsics, const LensModel& model) {
  const auto k = [&](int i) { return i < intrinsics.k_size() ? intrinsics.k(i) : 0; };
  const auto p = [&](int i) { return i < intrinsics.p_size() ? intrinsics.p(i) : 0; };
  std::vector<double> list = {k(0), k(1)};
  for (int i = 0; i < model.p(); ++i) list.push_back(p(i));
  for (int i = 2; i < model.k(); ++i) list.push_back(k(i));
  return list;
}

void EmitMatrix(YAML::Emitter& out, const char* key, size_t rows, const std::vector<double>& data) {
  out << YAML::Key << key << YAML::Value << YAML::BeginMap;
  out << YAML::Key << "rows" << YAML::Value << rows;
  out << YAML::Key << "cols" << YAML::Value << data.size() / rows;
  out << YAML::Key << "data" << YAML::Value << YAML::Flow << YAML::BeginSeq;
  for (const double value : data) out << YamlNumber(value);
  out << YAML::EndSeq << YAML::EndMap;
}

void VisitOthers(const Message& message, const std::string& place, const std::set<int>& kept,
                 const LeftoverVisitor& visit) {
  std::vector<const FieldDescriptor*> fields;
  message.GetReflection()->ListFields(message, &fields);
  for (const FieldDescriptor* field : fields) {
    if (kept.count(field->number()) != 0) continue;
    visit({Below(place, field->name()) + " ", "not kept: camera_info has no key for it"});
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

// Numbers that no camera has; a reader would take them all the same.
void CheckSane(const CameraIntrinsics& in, const std::string& place) {
  const auto check = [&](const std::string& field, double value, bool right, const char* expected) {
    if (right) return;
    throw Failure(Below(place, field) + " is " + Shortest(value) + ", expected " + expected,
                  "Correct it in the record.");
  };
  const auto check_finite = [&](const std::string& field, double value) {
    check(field, value, std::isfinite(value), "a finite number");
  };
  check_finite("fx", in.fx());
  check_finite("fy", in.fy());
  check_finite("skew", in.skew());
  check_finite("cx", in.cx());
  check_finite("cy", in.cy());
  for (int i = 0; i < in.k_size(); ++i) check_finite("k[" + std::to_string(i) + "]", in.k(i));
  for (int i = 0; i < in.p_size(); ++i) check_finite("p[" + std::to_string(i) + "]", in.p(i));
  check("fx", in.fx(), in.fx() > 0, "a focal length above 0");
  check("fy", in.fy(), in.fy() > 0, "a focal length above 0");
  check("width", in.width(), in.width() > 0, "a size above 0");
  check("height", in.height(), in.height() > 0, "a size above 0");
}

}  // namespace

std::string CoefficientCounts(const CameraIntrinsics& intrinsics) {
  return std::to_string(intrinsics.k_size()) + " k and " + std::to_string(intrinsics.p_size()) +
         " p";
}

const LensModel& CameraInfoModel(const CameraIntrinsics& intrinsics, const std::string& place,
                                 const LensModel* chosen) {
  if (chosen != nullptr && Fits(*chosen, intrinsics)) return *chosen;
  if (chosen == nullptr) {
    for (const LensModel& model : LensModels()) {
      if (Fits(model, intrinsics)) return model;
    }
  }
  throw Failure(WithColon(place) + " has " + CoefficientCounts(intrinsics) + ", which do not fit " +
                    (chosen == nullptr ? "any model of camera_info" : chosen->name),
                FittingModels(intrinsics));
}

std::string CameraInfo(const CameraCalibration& camera, const std::string& camera_place,
                       const std::string& place, const LensModel& model,
                       const LeftoverVisitor& visit) {
  const CameraIntrinsics& in = camera.intrinsics();
  CheckWhole(in, place);
  CheckSane(in, place);
  YAML::Emitter out;
  out << YAML::BeginMap;
  out << YAML::Key << "image_width" << YAML::Value << in.width();
  out << YAML::Key << "image_height" << YAML::Value << in.height();
  if (camera.has_name()) {
    out << YAML::Key << "camera_name" << YAML::Value;
    EmitText(&out, camera.name());
  }
  EmitMatrix(out, "camera_matrix", 3, {in.fx(), in.skew(), in.cx(), 0, in.fy(), in.cy(), 0, 0, 1});
  out << YAML::Key << "distortion_model" << YAML::Value << model.name;
  EmitMatrix(out, "distortion_coefficients", 1, Coefficients(in, model));
  EmitMatrix(out, "rectification_matrix", 3, {1, 0, 0, 0, 1, 0, 0, 0, 1});
  EmitMatrix(out, "projection_matrix", 3,
             {in.fx(), in.skew(), in.cx(), 0, 0, in.fy(), in.cy(), 0, 0, 0, 1, 0});
  out << YAML::EndMap;
  VisitOthers(camera, camera_place,
              {CameraCalibration::kIntrinsicsFieldNumber, CameraCalibration::kNameFieldNumber},
              visit);
  using I = CameraIntrinsics;
  VisitOthers(in, place,
              {I::kFxFieldNumber, I::kFyFieldNumber, I::kSkewFieldNumber, I::kCxFieldNumber,
               I::kCyFieldNumber, I::kKFieldNumber, I::kPFieldNumber, I::kWidthFieldNumber,
               I::kHeightFieldNumber},
              visit);
  return std::string(out.c_str()) + "\n";
}

}  // namespace calib
