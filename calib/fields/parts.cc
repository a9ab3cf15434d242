#include "calib/fields/parts.h"

#include <algorithm>

#include "calib/console/closest.h"
#include "calib/console/failure.h"
#include "calib/fields/walk.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::Message;
using zarvo::calibration::CameraCalibration;

namespace {

// Whether the path leads to what is at `place`, or below it.
bool IsIn(const std::string& path, const std::string& place) {
  return (path + ".").compare(0, place.size() + 1, place + ".") == 0;
}

bool EndsIn(const std::string& path, const std::string& element) {
  const std::string with_dot = "." + path, end = "." + element;
  return with_dot.size() >= end.size() &&
         with_dot.compare(with_dot.size() - end.size(), end.size(), end) == 0;
}

// The paths of all cameras of which `fits` is true.
std::vector<std::string> CameraPaths(
    const Message& record,
    const std::function<bool(const CameraCalibration& camera, const std::string& path)>& fits) {
  std::vector<std::string> paths;
  ForEachMessage(record, [&](const Message& message, const std::string& path) {
    if (message.GetDescriptor() != CameraCalibration::descriptor()) return;
    if (fits(static_cast<const CameraCalibration&>(message), path)) paths.push_back(path);
  });
  return paths;
}

std::string CameraPath(const Message& record, const std::string& file, const std::string& camera) {
  const bool number = camera.find_first_not_of("0123456789") == std::string::npos;
  const std::string element = "camera[" + camera + "]";
  std::vector<std::string> names;
  std::vector<std::string> paths = CameraPaths(record, [&](const auto&, const std::string& path) {
    return number && EndsIn(path, element);
  });
  if (!paths.empty()) return paths[0];
  paths = CameraPaths(record, [&](const CameraCalibration& of, const std::string& path) {
    names.push_back(of.name());
    return of.name() == camera && !path.empty();
  });
  if (paths.size() == 1) return paths[0];
  if (paths.empty()) {
    throw Failure(file + ": has no " + (number ? element : "camera of the name '" + camera + "'"),
                  (number ? "" : SuggestClosest(camera, names)) +
                      "'calib show' shows its cameras; leave --camera out if there are none.");
  }
  throw Failure(
      file + ": has several cameras of the name '" + camera + "', " + paths[0] + " and " + paths[1],
      "Name it by its number.");
}

}  // namespace

void CameraFlag::AddTo(Command* command) {
  command
      ->AddOption("--camera", camera,
                  "Only the camera of that name, or camera[N]; they count from 0")
      ->ValueName("N|NAME");
}

std::vector<Part> CameraFlag::Choose(const Message& record, const std::string& name,
                                     const std::vector<const Descriptor*>& types) const {
  const std::string place = camera.empty() ? "" : CameraPath(record, name, camera);
  std::vector<Part> parts;
  ForEachMessage(record, [&](const Message& message, const std::string& path) {
    if (!camera.empty() && !IsIn(path, place)) return;
    const bool wanted =
        std::find(types.begin(), types.end(), message.GetDescriptor()) != types.end();
    if (wanted) parts.push_back({&message, path});
  });
  return parts;
}

}  // namespace calib
