#include "calib/tools/camera_geometry.h"

#include <cmath>

#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/number.h"
#include "calib/console/printable.h"
#include "calib/fields/camera_numbers.h"
#include "calib/fields/field_path.h"
#include "calib/fields/presence.h"
#include "calib/fields/walk.h"
#include "calib/tools/export_lens.h"

namespace calib {

using google::protobuf::Message;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::RobotCalibration;

namespace {

GivenCamera Given(const Message& message, const std::string& path, const std::string& file) {
  if (message.GetDescriptor() == CameraIntrinsics::descriptor()) {
    const std::string place = path.empty() ? file + ":" : file + ": " + path;
    return {nullptr, static_cast<const CameraIntrinsics*>(&message), nullptr, place, "the camera"};
  }
  const auto& camera = static_cast<const CameraCalibration&>(message);
  const std::string name = !camera.name().empty() ? Printable(camera.name())
                           : !path.empty()        ? path
                                                  : "the camera";
  return {&camera, &camera.intrinsics(), camera.has_extrinsics() ? &camera.extrinsics() : nullptr,
          file + ": " + JoinPath(path, "intrinsics"), name};
}

[[noreturn]] void RefuseNone(const std::string& file) {
  throw Failure(file + ": has no camera with intrinsics",
                "Name a record of a camera; 'calib show' shows what is in this one.");
}

void CheckNumbers(const GivenCamera& given) {
  const CameraIntrinsics& in = *given.intrinsics;
  const auto check = [&](const std::string& field, double value, bool right, const char* expected) {
    if (right) return;
    throw Failure(Below(given.place, field) + " is " + Shortest(value) + ", expected " + expected,
                  "Correct it in the record.");
  };
  const auto finite = [&](const std::string& field, double value) {
    check(field, value, std::isfinite(value), "a finite number");
  };
  for (const std::string& field : MissingFields(in)) {
    throw Failure(Below(given.place, field) + " is required, but not set", "Set it first.");
  }
  check("fx", in.fx(), std::isfinite(in.fx()) && in.fx() > 0, "a focal length above 0");
  check("fy", in.fy(), std::isfinite(in.fy()) && in.fy() > 0, "a focal length above 0");
  finite("skew", in.skew());
  finite("cx", in.cx());
  finite("cy", in.cy());
  for (int i = 0; i < in.k_size(); ++i) finite("k[" + std::to_string(i) + "]", in.k(i));
  for (int i = 0; i < in.p_size(); ++i) finite("p[" + std::to_string(i) + "]", in.p(i));
}

}  // namespace

std::vector<GivenCamera> CamerasOf(const Message& record, const std::string& file) {
  std::vector<GivenCamera> cameras;
  ForEachMessage(record, [&](const Message& message, const std::string& path) {
    const auto* type = message.GetDescriptor();
    const bool alone = type == CameraIntrinsics::descriptor() && path.empty();
    if (alone || type == CameraCalibration::descriptor())
      cameras.push_back(Given(message, path, file));
  });
  return cameras;
}

std::vector<CameraCalibration*> MutableCameras(Message* record) {
  if (record->GetDescriptor() == CameraCalibration::descriptor()) {
    return {static_cast<CameraCalibration*>(record)};
  }
  std::vector<CameraCalibration*> cameras;
  if (record->GetDescriptor() == RobotCalibration::descriptor()) {
    auto* robot = static_cast<RobotCalibration*>(record);
    for (int i = 0; i < robot->camera_size(); ++i) cameras.push_back(robot->mutable_camera(i));
  }
  return cameras;
}

std::vector<GivenCamera> ChosenCameras(const Message& record, const std::string& file,
                                       const CameraFlag& flag) {
  std::vector<GivenCamera> chosen;
  const std::vector<Part> parts = flag.Choose(record, file, {CameraIntrinsics::descriptor()});
  for (const GivenCamera& camera : CamerasOf(record, file)) {
    for (const Part& part : parts) {
      if (part.message == camera.intrinsics) chosen.push_back(camera);
    }
  }
  if (chosen.empty()) RefuseNone(file);
  return chosen;
}

GivenCamera OnlyCamera(const Message& record, const std::string& file, const CameraFlag& flag) {
  const std::vector<GivenCamera> cameras = ChosenCameras(record, file, flag);
  if (cameras.size() > 1) {
    throw Failure(file + ": has " + std::to_string(cameras.size()) + " cameras, from " +
                      cameras.front().name + " to " + cameras.back().name,
                  "Say which one with --camera N.");
  }
  return cameras[0];
}

GivenCamera CameraCalled(const Message& record, const std::string& file, const std::string& which) {
  const std::vector<GivenCamera> cameras = CamerasOf(record, file);
  if (cameras.empty()) RefuseNone(file);
  std::vector<GivenCamera> found;
  for (size_t i = 0; i < cameras.size(); ++i) {
    if (cameras[i].name == which) found.push_back(cameras[i]);
  }
  if (found.empty()) {
    for (size_t i = 0; i < cameras.size(); ++i) {
      if (std::to_string(i) == which) found.push_back(cameras[i]);
    }
  }
  if (found.size() == 1) return found[0];
  std::string names;
  for (const GivenCamera& camera : cameras) names += (names.empty() ? "" : ", ") + camera.name;
  throw Failure(file + ": has " + (found.empty() ? "no camera" : "several cameras") + " called '" +
                    Printable(which) + "'",
                "Name one, or its number from 0; there are: " + names + ".");
}

geometry::Camera GeometryOf(const GivenCamera& given, const LensModel* chosen,
                            const LensModel** model) {
  CheckNumbers(given);
  *model = &LensOf(*given.intrinsics, given.place, chosen);
  return AsCamera(*given.intrinsics, (*model)->order == LensModel::Order::kFisheye);
}

geometry::Camera GeometryOf(const GivenCamera& given, const LensModel* chosen) {
  const LensModel* model = nullptr;
  const geometry::Camera camera = GeometryOf(given, chosen, &model);
  if (chosen == nullptr) {
    Note(WithColon(given.place) + " " + CoefficientCounts(*given.intrinsics) + " are read as " +
         model->name);
  }
  return camera;
}

void RequireSize(const GivenCamera& camera) {
  const CameraIntrinsics& in = *camera.intrinsics;
  const char* field = in.width() <= 0 ? "width" : in.height() <= 0 ? "height" : nullptr;
  if (field == nullptr) return;
  throw Failure(Below(camera.place, field) + (in.has_width() && in.has_height()
                                                  ? " is not above 0"
                                                  : " is not set, and this needs it"),
                "Set it first.");
}

void StoreGeometry(const geometry::Camera& camera, const LensModel& model, CameraIntrinsics* in) {
  in->set_fx(camera.fx);
  in->set_fy(camera.fy);
  in->set_skew(camera.skew);
  in->set_cx(camera.cx);
  in->set_cy(camera.cy);
  in->clear_k();
  in->clear_p();
  for (int i = 0; i < model.k() + model.p(); ++i) {
    const bool tangential = i >= kFirstTangential && i < kFirstTangential + model.p();
    tangential ? in->add_p(camera.distortion[i]) : in->add_k(camera.distortion[i]);
  }
  if (camera.width > 0) in->set_width(camera.width);
  if (camera.height > 0) in->set_height(camera.height);
}

}  // namespace calib
