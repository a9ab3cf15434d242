#include "calib/commands/diff_pixels.h"

#include <algorithm>
#include <cmath>

#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/number_rows.h"
#include "calib/geometry/pose_difference.h"
#include "calib/tools/camera_geometry.h"
#include "calib/tools/export_lens.h"

namespace calib {

namespace {

constexpr double kRounding = 1e-9;  // pixels

// What was taken out, such as "turned by 0.2 degrees about 0 1 0".
std::string TakenOut(const geometry::Difference& difference, const PixelFlags& flags) {
  if (flags.no_fit) return "";
  const geometry::Point turn = geometry::RotationVectorOf(difference.after_from_before);
  const double angle = std::hypot(turn.x, turn.y, turn.z);
  std::string text = "; a rotation of " + ToDigits(angle / geometry::kDegree, 4) + " degrees";
  if (angle > 0) {
    text += " about " + ToDigits(turn.x / angle, 3) + " " + ToDigits(turn.y / angle, 3) + " " +
            ToDigits(turn.z / angle, 3);
  }
  if (flags.distance > 0) {
    const double* m = difference.after_from_before.m;
    text += " and a translation of " + ToDigits(m[3], 4) + " " + ToDigits(m[7], 4) + " " +
            ToDigits(m[11], 4);
  }
  return text + " is taken out";
}

int DiffCamera(const GivenCamera& before, const GivenCamera& after, const PixelFlags& flags,
               double tolerance) {
  for (const GivenCamera* camera : {&before, &after}) RequireSize(*camera);
  geometry::DifferenceOptions options;
  options.fit = !flags.no_fit;
  options.distance = flags.distance;
  const geometry::Camera old_camera = GeometryOf(before, flags.lens.model());
  const geometry::Camera new_camera = GeometryOf(after, flags.lens.model());
  const geometry::Difference difference = geometry::Compare(old_camera, new_camera, options);
  if (difference.status == geometry::Status::kNotACamera) {
    throw Failure(WithColon(after.place) + " is of images of another size than " + before.place,
                  "Scale one of them ('calib scale'), then compare.");
  }
  if (difference.status != geometry::Status::kOk) {
    throw Failure(before.place + " and " + after.place + ": see no three pixels alike",
                  "Check --distortion-model.");
  }
  // What is left of two cameras that are the same is rounding.
  if (difference.largest < kRounding && difference.compared == difference.pixels.size()) {
    Print(before.name + ": no difference\n");
    return kFine;
  }
  const size_t unseen = difference.pixels.size() - difference.compared;
  Print(before.name + ": " + ToDigits(difference.mean, 4) + " pixels on average, " +
        ToDigits(difference.largest, 4) + " at most, at " +
        std::to_string(std::lround(difference.where.u)) + " " +
        std::to_string(std::lround(difference.where.v)) + TakenOut(difference, flags) +
        (unseen == 0
             ? ""
             : "; " + std::to_string(unseen) + " of " + std::to_string(difference.pixels.size()) +
                   " pixels are beyond one of the lenses") +
        "\n");
  return difference.largest > tolerance || unseen > 0 ? kFinding : kFine;
}

// Where nothing but their order says which camera is which.
void CheckSameCameras(const std::string& before, const std::vector<GivenCamera>& old_cameras,
                      const std::string& after, const std::vector<GivenCamera>& new_cameras) {
  if (old_cameras.size() != new_cameras.size()) {
    throw Failure(after + ": has " + std::to_string(new_cameras.size()) + " cameras, " + before +
                      " has " + std::to_string(old_cameras.size()),
                  "Compare records of the same cameras.");
  }
  size_t i = 0;
  while (i < old_cameras.size() && old_cameras[i].name == new_cameras[i].name) ++i;
  if (i == old_cameras.size()) return;
  throw Failure(after + ": camera " + std::to_string(i) + " is called " + new_cameras[i].name +
                    ", in " + before + " it is " + old_cameras[i].name,
                "Compare records of the same cameras in the same order.");
}

// Of those that are left, the one that is the same camera: the first, where nothing was matched.
std::vector<GivenCamera>::iterator PartnerOf(const GivenCamera& camera, const CameraMatch& match,
                                             std::vector<GivenCamera>* left) {
  if (!match.matches()) return left->begin();
  const google::protobuf::Message* partner = match.AfterOf(*camera.camera);
  return std::find_if(left->begin(), left->end(),
                      [&](const GivenCamera& other) { return other.camera == partner; });
}

}  // namespace

void PixelFlags::AddTo(Command* command) {
  command->AddFlag("--pixels", pixels,
                   "Tell by how many pixels cameras differ over their images, for points at "
                   "infinity; --tolerance then is in pixels");
  command
      ->AddOption("--distance", distance,
                  "With --pixels: for points at that distance, in the unit of the extrinsics")
      ->Check(NumberAboveZero())
      ->ValueName("D");
  command->AddFlag("--no-fit", no_fit,
                   "With --pixels: do not take out the rotation (with --distance, the rigid "
                   "transform) that explains most of the difference");
  lens.AddTo(command, "With --pixels: what k and p mean; auto goes by their numbers");
}

int DiffPixels(const Record& before, const Record& after, const PixelFlags& flags, MatchBy by,
               double tolerance) {
  const std::vector<GivenCamera> old_cameras =
      ChosenCameras(*before.message, before.name, CameraFlag());
  std::vector<GivenCamera> new_cameras = ChosenCameras(*after.message, after.name, CameraFlag());
  const CameraMatch match(*before.message, *after.message, by);
  if (!match.matches()) CheckSameCameras(before.name, old_cameras, after.name, new_cameras);
  if (match.moved() && by != MatchBy::kIndex) Note(match.Told());
  int status = kFine;
  for (const GivenCamera& camera : old_cameras) {
    const auto partner = PartnerOf(camera, match, &new_cameras);
    if (partner == new_cameras.end()) {
      Print(camera.name + ": has intrinsics in " + before.name + " only\n");
      status = kFinding;
      continue;
    }
    if (DiffCamera(camera, *partner, flags, tolerance) != kFine) status = kFinding;
    new_cameras.erase(partner);
  }
  for (const GivenCamera& camera : new_cameras) {
    Print(camera.name + ": has intrinsics in " + after.name + " only\n");
    status = kFinding;
  }
  return status;
}

}  // namespace calib
