#include "calib/views/rig.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "calib/fields/rigid_numbers.h"
#include "calib/views/chart_points.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraExtrinsics;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration_geometry::Apply;
using zarvo::calibration_geometry::Invert;
using zarvo::calibration_geometry::RotationDefect;
using zarvo::calibration_geometry::Transform;

namespace {

constexpr double kFrustumOfRig = 0.25;  // its depth, as a share of the rig's size
constexpr double kWidestFrustum = 4;    // half of its width, in depths; beyond, lenses bend it much
constexpr double kFarBody = 2.5;        // the body is drawn if it is no more rigs away
constexpr size_t kMostDrawn = 400;      // more cameras are not told apart
constexpr size_t kMostNamed = 12;       // cameras for which one reason holds
constexpr size_t kMostReasons = 20;
constexpr int kXColor = 1, kYColor = 2, kZColor = 0, kFrustumColor = 4, kBodyColor = 3;

struct RigCamera {
  size_t index;  // among all cameras
  const CameraCalibration* camera;
  std::string path;
  Transform body_from_camera;
};

// Why the numbers are no rigid transform; "" if they are.
std::string ReadTransform(const CameraExtrinsics& extrinsics, Transform* transform) {
  const int count = extrinsics.a_size();
  if (count != 16 && count != 12) {
    return "extrinsics.a has " + std::to_string(count) + " numbers, not 16 or 12";
  }
  for (int i = 0; i < count; ++i) {
    if (!IsDrawable(extrinsics.a(i)))
      return "extrinsics.a[" + std::to_string(i) + "] is not finite";
    transform->m[i] = extrinsics.a(i);
  }
  const double defect = RotationDefect(*transform);
  if (defect <= kRotationTolerance) return "";
  return "extrinsics.a is not rigid: its " +
         (std::isfinite(defect) ? "axes are off length 1 or right angles by " + RoundedText(defect)
                                : std::string("axes mirror, or its last row is not 0 0 0 1"));
}

Point3 PlaceOf(const RigCamera& camera) { return Apply(camera.body_from_camera, {0, 0, 0}); }

double Distance(const Point3& a, const Point3& b) {
  return std::hypot(std::hypot(a.x - b.x, a.y - b.y), a.z - b.z);
}

// The direction of a camera's axis in the body's frame.
std::array<double, 3> AxisOf(const RigCamera& camera, int axis) {
  const double* m = camera.body_from_camera.m;
  return {m[axis], m[4 + axis], m[8 + axis]};
}

// The largest distance between two corners of the box around the cameras; of a single place, that
// to the body; 1 if there is none either.
double SizeOf(const std::vector<RigCamera>& cameras) {
  Point3 low = PlaceOf(cameras[0]), high = low;
  for (const RigCamera& camera : cameras) {
    const Point3 place = PlaceOf(camera);
    low = {std::min(low.x, place.x), std::min(low.y, place.y), std::min(low.z, place.z)};
    high = {std::max(high.x, place.x), std::max(high.y, place.y), std::max(high.z, place.z)};
  }
  const double size = Distance(low, high), away = Distance(low, {0, 0, 0});
  return size > 0 ? size : away > 0 ? away : 1;
}

void AddAxes(const Transform& transform, double length, bool named, Rig* rig) {
  const Point3 origin = Apply(transform, {0, 0, 0});
  const Point3 tips[] = {{length, 0, 0}, {0, length, 0}, {0, 0, length}};
  const int colors[] = {kXColor, kYColor, kZColor};
  const char* const names[] = {"body x", "body y", "body z"};
  for (int i = 0; i < 3; ++i) {
    const Point3 tip = Apply(transform, tips[i]);
    // y is dashed, so that axes are told apart without color.
    rig->lines.push_back({{origin, tip}, named ? kBodyColor : colors[i], i == 1});
    if (named) rig->names.push_back({tip, names[i]});
  }
}

// Why the camera has no frustum; "" if it is added.
std::string AddFrustum(const RigCamera& camera, double depth, Rig* rig) {
  if (!camera.camera->has_intrinsics()) return "intrinsics are not set";
  const CameraIntrinsics& in = camera.camera->intrinsics();
  if (in.width() <= 0 || in.height() <= 0) return "width and height are not set";
  const double left = -in.cx() / in.fx(), right = (in.width() - in.cx()) / in.fx();
  const double top = -in.cy() / in.fy(), bottom = (in.height() - in.cy()) / in.fy();
  for (const double side : {left, right, top, bottom}) {
    if (!(std::abs(side) <= kWidestFrustum)) return "it would be too wide";
  }
  const auto at = [&](double x, double y) {
    return Apply(camera.body_from_camera, {x * depth, y * depth, depth});
  };
  const Point3 corners[] = {at(left, top), at(right, top), at(right, bottom), at(left, bottom)};
  const Point3 origin = PlaceOf(camera);
  for (int i = 0; i < 4; ++i) {
    rig->lines.push_back({{origin, corners[i], corners[(i + 1) % 4]}, kFrustumColor, false});
  }
  return "";
}

// The axis that the sum of directions is longest along, but for `other`.
void FindAxis(const std::array<double, 3>& sum, int other, int* axis, int* sign) {
  *axis = other == 0 ? 1 : 0;
  for (int i = 0; i < 3; ++i) {
    // Directions that cancel each other out leave rounding only.
    if (i != other &&
        std::abs(sum[static_cast<size_t>(i)]) > std::abs(sum[static_cast<size_t>(*axis)]) + 1e-6) {
      *axis = i;
    }
  }
  *sign = sum[static_cast<size_t>(*axis)] < -1e-6 ? -1 : 1;
}

void FindUpAndForward(const std::vector<RigCamera>& cameras, Rig* rig) {
  std::array<double, 3> up = {}, forward = {};
  for (const RigCamera& camera : cameras) {
    const std::array<double, 3> y = AxisOf(camera, 1), z = AxisOf(camera, 2);
    for (size_t i = 0; i < 3; ++i) {
      up[i] -= y[i];
      forward[i] += z[i];
    }
  }
  FindAxis(up, -1, &rig->up, &rig->up_sign);
  FindAxis(forward, rig->up, &rig->forward, &rig->forward_sign);
}

// Cameras of which something is not drawn, by the reason for it.
class LeftOut {
 public:
  void Add(const std::string& path, const std::string& reason) {
    const std::string name = path.empty() ? "the camera" : path;
    for (Group& group : groups_) {
      if (group.reason != reason) continue;
      if (++group.count <= kMostNamed) group.names.append(", ").append(name);
      return;
    }
    if (groups_.size() < kMostReasons) {
      groups_.push_back({reason, name, 1});
    } else {
      ++others_;
    }
  }

  // A line for each reason: the cameras, `what`, and the reason.
  std::vector<std::string> Notes(const std::string& what) const {
    std::vector<std::string> notes;
    for (const Group& group : groups_) {
      std::string note = group.names;
      if (group.count > kMostNamed) note += ", ... " + std::to_string(group.count) + " in all";
      notes.push_back(note.append(": ").append(what).append(": ").append(group.reason));
    }
    if (others_ > 0) {
      notes.push_back(std::to_string(others_) + " more cameras: " + what + ", for such reasons");
    }
    return notes;
  }

 private:
  struct Group {
    std::string reason, names;
    size_t count;
  };
  std::vector<Group> groups_;
  size_t others_ = 0;
};

void NoteReading(Extrinsics reading, Rig* rig) {
  const std::string assumed = reading == Extrinsics::kAssumed ? "Assumed: " : "";
  const bool to_body = reading == Extrinsics::kBodyFromCamera;
  rig->notes.push_back(assumed + "extrinsics.a maps from the " +
                       (to_body ? "camera to the body" : "body to the camera") +
                       (assumed.empty() ? ""
                                        : "; --extrinsics camera-from-body or body-from-camera "
                                          "says which"));
}

}  // namespace

Extrinsics ExtrinsicsByName(const std::string& name) {
  return name.empty()                 ? Extrinsics::kAssumed
         : name == "camera-from-body" ? Extrinsics::kCameraFromBody
                                      : Extrinsics::kBodyFromCamera;
}

std::vector<std::string> ExtrinsicsNames() { return {"camera-from-body", "body-from-camera"}; }

Rig RigOf(const std::vector<Part>& parts, Extrinsics reading) {
  Rig rig;
  std::vector<RigCamera> cameras;
  LeftOut not_drawn, no_frustum;
  bool any = false;
  for (size_t i = 0; i < parts.size(); ++i) {
    const Part& part = parts[i];
    const auto& camera = static_cast<const CameraCalibration&>(*part.message);
    any = any || camera.extrinsics().a_size() > 0;
    if (camera.extrinsics().a_size() == 0) {
      not_drawn.Add(part.path, "extrinsics are not set");
      continue;
    }
    Transform transform;
    const std::string reason = ReadTransform(camera.extrinsics(), &transform);
    if (!reason.empty()) {
      not_drawn.Add(part.path, reason);
      continue;
    }
    if (cameras.size() == kMostDrawn) {
      not_drawn.Add(part.path, "there are " + std::to_string(kMostDrawn) + " before it");
      continue;
    }
    cameras.push_back({i, &camera, part.path,
                       reading == Extrinsics::kBodyFromCamera ? transform : Invert(transform)});
  }
  if (!any) return rig;
  NoteReading(reading, &rig);
  for (const RigCamera& camera : cameras) {
    rig.poses.push_back({camera.index, camera.body_from_camera});
  }
  const auto note = [&](const std::vector<std::string>& notes) {
    rig.notes.insert(rig.notes.end(), notes.begin(), notes.end());
  };
  note(not_drawn.Notes("not drawn"));
  if (cameras.empty()) return rig;
  FindUpAndForward(cameras, &rig);
  const double size = SizeOf(cameras), depth = size * kFrustumOfRig;
  double nearest = Distance(PlaceOf(cameras[0]), {0, 0, 0});
  for (const RigCamera& camera : cameras) {
    nearest = std::min(nearest, Distance(PlaceOf(camera), {0, 0, 0}));
    const std::string reason = AddFrustum(camera, depth, &rig);
    if (!reason.empty()) no_frustum.Add(camera.path, reason);
    AddAxes(camera.body_from_camera, depth * 0.4, false, &rig);
    const std::string name = camera.camera->name();
    rig.names.push_back({PlaceOf(camera), name.empty() ? camera.path : name});
  }
  note(no_frustum.Notes("no view frustum"));
  if (nearest <= kFarBody * size) {
    AddAxes(Transform(), depth * 0.6, true, &rig);
  } else {
    rig.notes.push_back("the body's origin is far outside of the drawing");
  }
  return rig;
}

}  // namespace calib
