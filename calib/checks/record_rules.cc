// Rules for transforms, names and serials, images, focus measurements and the drive base.
#include <cmath>
#include <map>
#include <regex>

#include "calib/checks/rules.h"
#include "calib/console/number.h"
#include "calib/fields/field_path.h"
#include "calib/fields/rigid_numbers.h"
#include "calib/fields/value.h"

namespace calib {

using google::protobuf::Message;
using zarvo::calibration::BaseCalibrationProto;
using zarvo::calibration::CalibrationImage;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraExtrinsics;
using zarvo::calibration::FocusInfo;
using zarvo::calibration::RobotCalibration;

namespace {

std::string Value(const Message& message, int field) {
  return ShortValue(message, message.GetDescriptor()->FindFieldByNumber(field), -1);
}

// The first camera of each name, or of each serial number.
class FirstOf {
 public:
  explicit FirstOf(int field) : field_(field) {}

  // `text` is what the field of the camera holds.
  void Check(const CameraCalibration& camera, const std::string& text, const std::string& place,
             Findings* findings) {
    const std::string path =
        JoinPath(place, CameraCalibration::descriptor()->FindFieldByNumber(field_)->name());
    const auto added = first_.insert({text, path});
    if (added.second) return;
    AddWrong("unique", path, Value(camera, field_),
             "one of its own, but that is " + added.first->second, findings);
  }

 private:
  int field_;
  std::map<std::string, std::string> first_;
};

// Whether all that the image's name for its pixels tells is how they lie in memory, a row behind
// the other: as ROS, OpenCV and cameras name such, and not "jpeg", "bgr8; jpeg compressed bgr8" or
// what has further planes, such as "nv12".
bool IsRaw(const std::string& format) {
  static const std::regex raw(
      "(mono|gr[ae]y|y|raw|rgba?|bgra?|bayer_?[a-z]*|bggr|gbrg|grbg|rggb)[_-]?"
      "(8|10|12|14|16|32f?)?|(8|16|32|64)[usf]c?[0-9]*|(yuv422|yuyv|uyvy|yvyu)(_[a-z0-9]+)?",
      std::regex::icase);
  constexpr size_t kLongest = 32;
  return format.size() <= kLongest && std::regex_match(format, raw);
}

}  // namespace

void CheckExtrinsics(const CameraExtrinsics& extrinsics, const std::string& path,
                     double rotation_tolerance, Findings* findings) {
  for (int i = 0; i < extrinsics.a_size(); ++i) {
    if (std::isfinite(extrinsics.a(i))) continue;
    AddWrong("finite", JoinPath(path, "a[" + std::to_string(i) + "]"), Shortest(extrinsics.a(i)),
             "a finite number", findings);
  }
  const std::optional<RigidNumbers> transform = AsRigidNumbers(extrinsics.a());
  if (!transform || transform->off <= rotation_tolerance) return;
  const std::string value = Shortest(static_cast<float>(transform->off));
  findings->push_back({"rotation", JoinPath(path, "a"), value,
                       "is off a rotation by " + value + ", expected " +
                           Shortest(rotation_tolerance) + " at most"});
}

void CheckCameras(const RobotCalibration& robot, const std::string& path, Findings* findings) {
  FirstOf names(CameraCalibration::kNameFieldNumber);
  FirstOf serials(CameraCalibration::kSerialFieldNumber);
  for (int i = 0; i < robot.camera_size(); ++i) {
    const CameraCalibration& camera = robot.camera(i);
    const std::string place = JoinPath(path, "camera[" + std::to_string(i) + "]");
    if (camera.has_name()) names.Check(camera, camera.name(), place, findings);
    if (camera.has_serial()) serials.Check(camera, camera.serial(), place, findings);
  }
}

void CheckImage(const CalibrationImage& image, const std::string& path, Findings* findings) {
  if (image.has_width()) CheckSize(image.width(), JoinPath(path, "width"), findings);
  if (image.has_height()) CheckSize(image.height(), JoinPath(path, "height"), findings);
  if (image.has_stride()) CheckSize(image.stride(), JoinPath(path, "stride"), findings);
  const bool known = image.has_stride() && image.has_height() && image.has_imgdata() &&
                     image.stride() > 0 && image.height() > 0 && IsRaw(image.format());
  if (!known) return;
  const auto expected =
      static_cast<uint64_t>(image.stride()) * static_cast<uint64_t>(image.height());
  if (image.imgdata().size() == expected) return;
  const std::string value = std::to_string(image.imgdata().size()) + " bytes";
  findings->push_back({"image-size", JoinPath(path, "imgdata"), value,
                       "has " + value + ", expected " + std::to_string(expected) + " of " +
                           image.format() + ", stride " + std::to_string(image.stride()) +
                           " times height " + std::to_string(image.height())});
}

void CheckFocus(const FocusInfo& focus, const std::string& path, Findings* findings) {
  int first = -1;
  for (int i = 0; i < focus.focus_size(); ++i) {
    const int size = focus.focus(i).transfer_function_size();
    if (size == 0) continue;
    if (first < 0) first = i;
    const int expected = focus.focus(first).transfer_function_size();
    if (size == expected) continue;
    const std::string value = std::to_string(size) + " values";
    findings->push_back({"transfer-function",
                         JoinPath(path, "focus[" + std::to_string(i) + "].transfer_function"),
                         value,
                         "has " + value + ", expected " + std::to_string(expected) +
                             ", as many as focus[" + std::to_string(first) + "]"});
  }
}

void CheckBase(const BaseCalibrationProto& base, const std::string& path, Findings* findings) {
  const auto check = [&](bool set, float value, const char* field) {
    if (!set || value > 0) return;
    AddWrong("size", JoinPath(path, field), Shortest(value), "a size above 0", findings);
  };
  check(base.has_wheel_base(), base.wheel_base(), "wheel_base");
  check(base.has_base_width(), base.base_width(), "base_width");
  check(base.has_base_length(), base.base_length(), "base_length");
}

}  // namespace calib
