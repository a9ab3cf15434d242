// OpenCV's stereo calibration program writes two files: in the one are the matrices and the
// coefficients of both cameras (M1, D1, M2, D2), in the other how they sit to each other (R, T) and
// the rectification that follows from both.
#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/import_opencv.h"

namespace calib {

using zarvo::calibration::CameraExtrinsics;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::RobotCalibration;

namespace {

// The value under that key in any of the files. Throws Failure if two have it.
std::optional<Foreign> FindIn(const std::vector<Foreign>& files, const std::string& key) {
  std::optional<Foreign> found;
  for (const Foreign& file : files) {
    const std::optional<Foreign> value = file.Find({key});
    if (!value) continue;
    if (found) value->Refuse("is in both files", "Name the files of one calibration.");
    found = value;
  }
  return found;
}

// Throws Failure if there is only one of the two.
void CheckPair(const std::vector<Foreign>& files, const std::string& a, const std::string& b) {
  const auto first = FindIn(files, a), second = FindIn(files, b);
  if (first.has_value() == second.has_value()) return;
  const std::string& there = first ? a : b;
  const std::string& missing = first ? b : a;
  (first ? first : second)
      ->Refuse("is there, but not " + missing + ", which belongs to it",
               "Take the files as they were written: " + there + " and " + missing +
                   " are in the same one.");
}

void StoreCamera(const std::vector<Foreign>& files, const std::string& number,
                 const LensImport& lens, CameraIntrinsics* intrinsics) {
  const auto matrix = FindIn(files, "M" + number);
  StoreCameraMatrix(*matrix, OpenCvMatrix(*matrix, 3, 3, 1), intrinsics);
  if (const auto list = FindIn(files, "D" + number)) {
    lens.Store(*list, OpenCvMatrix(*list, 0, 0, 1), intrinsics);
  } else {
    lens.StoreNone();
  }
}

void StorePose(const Foreign& rotation, const Foreign& translation, CameraExtrinsics* extrinsics) {
  const std::vector<double> r = OpenCvMatrix(rotation, 0, 0, 1);
  const std::vector<double> t = OpenCvMatrix(translation, 0, 0, 1);
  if (t.size() != 3) {
    translation.Refuse("has " + std::to_string(t.size()) + " numbers, expected 3",
                       "Correct it there.");
  }
  RigidTransform pose;
  if (r.size() == 9) {
    pose = RigidTransform::FromRows(
        {r[0], r[1], r[2], t[0], r[3], r[4], r[5], t[1], r[6], r[7], r[8], t[2]});
  } else if (r.size() == 3) {
    pose = RigidTransform::FromRotationVector({r[0], r[1], r[2]}, {t[0], t[1], t[2]});
    rotation.Convert("is a rotation vector, kept as a matrix");
  } else {
    rotation.Refuse("has " + std::to_string(r.size()) +
                        " numbers, expected the 9 of a matrix or the 3 of a rotation vector",
                    "Correct it there.");
  }
  StoreTransform(rotation, pose.Rows(), "from the first camera to the second", extrinsics);
}

}  // namespace

bool ImportOpenCvStereo(const std::vector<Foreign>& files, const LensModel* chosen,
                        RobotCalibration* robot) {
  CheckPair(files, "M1", "M2");
  CheckPair(files, "R", "T");
  const bool intrinsics = FindIn(files, "M1").has_value(), pose = FindIn(files, "R").has_value();
  if (!intrinsics && !pose) return false;
  const LensImport lens(files, chosen);
  for (const char* number : {"1", "2"}) {
    auto* camera = robot->add_camera();
    if (intrinsics) StoreCamera(files, number, lens, camera->mutable_intrinsics());
  }
  lens.LoseParameters();
  lens.LoseUnread();
  if (pose) {
    StorePose(*FindIn(files, "R"), *FindIn(files, "T"),
              robot->mutable_camera(1)->mutable_extrinsics());
  }
  return true;
}

}  // namespace calib
