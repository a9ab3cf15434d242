#include "calib/tools/rig_geometry.h"

#include <algorithm>

#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/number_rows.h"
#include "calib/fields/rigid_numbers.h"

namespace calib {

using geometry::Transform;

namespace {

constexpr double kRounding = 1e-9;  // a defect that is not worth a word

std::string Told(const std::string& direction) {
  if (direction == "from-camera") return "from-camera, from each camera to the common frame";
  if (direction == "chain") return "chain, from the camera before to each camera";
  return "to-camera, from the common frame to each camera";
}

}  // namespace

void ExtrinsicsFlags::AddTo(Command* command) {
  AddChoice(
      command, "--extrinsics", &direction, {"to-camera", "from-camera", "chain"},
      "How the extrinsics map: from the common frame to the camera, as calib imports them, the "
      "other way, or from the camera before to the camera");
  command->AddFlag("--orthonormalize", orthonormalize,
                   "Take the nearest rotation where a matrix is none, instead of refusing it");
}

Transform TransformOf(const GivenCamera& camera, const ExtrinsicsFlags& flags) {
  const size_t dot = camera.place.rfind("intrinsics");
  const std::string place = camera.place.substr(0, dot) + "extrinsics.a";
  const auto& a = camera.extrinsics->a();
  if (a.size() != 16 && a.size() != 12) {
    throw Failure(place + " has " + std::to_string(a.size()) +
                      " numbers, expected 16 of a 4x4 matrix by rows, or 12 of its first three",
                  "Correct it in the record.");
  }
  Transform transform;
  std::copy(a.begin(), a.end(), transform.m);
  const double defect = geometry::RotationDefect(transform);
  if (defect <= kRotationTolerance && !flags.orthonormalize) return transform;
  if (!flags.orthonormalize) {
    throw Failure(place + " is no rotation and translation: R^T R differs from 1 by " +
                      ToDigits(defect, 3) + ", which is more than " +
                      ToDigits(kRotationTolerance, 3),
                  "--orthonormalize takes the nearest rotation.");
  }
  if (!geometry::Orthonormalize(&transform)) {
    throw Failure(
        place + " is no rotation, nor near one: it mirrors, or its last row is not 0 0 0 1",
        "Correct it in the record.");
  }
  if (defect > kRounding) {
    Note(place + ": R^T R differed from 1 by " + ToDigits(defect, 3) + ", made a rotation");
  }
  return transform;
}

std::vector<Transform> RigOf(const std::vector<GivenCamera>& cameras, const std::string& file,
                             const ExtrinsicsFlags& flags) {
  Note(file + ": extrinsics are read as " + Told(flags.direction) + " (--extrinsics)");
  std::vector<Transform> rig;
  for (const GivenCamera& camera : cameras) {
    Transform transform;
    if (camera.extrinsics != nullptr) transform = TransformOf(camera, flags);
    if (flags.direction == "from-camera") transform = geometry::Invert(transform);
    if (flags.direction == "chain" && !rig.empty())
      transform = geometry::Compose(transform, rig.back());
    rig.push_back(transform);
  }
  return rig;
}

void StoreTransform(const Transform& transform, zarvo::calibration::CameraExtrinsics* extrinsics) {
  extrinsics->clear_a();
  for (const double element : transform.m) extrinsics->add_a(element);
}

}  // namespace calib
