// OpenCV's stereo calibration program writes two files: in the one are the matrices and the
// coefficients of both cameras (M1, D1, M2, D2), in the other how they sit to each other (R, T) and
// the rectification that follows from both. Other programs have all in one, with keys of their own.
#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/import_opencv.h"
#include "calib/tools/opencv_keys.h"

namespace calib {

using zarvo::calibration::CameraExtrinsics;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::RobotCalibration;

namespace {

using Part = OpenCvPart;

// The part of the camera in any of the files. Throws Failure if two have it, and not alike.
std::optional<Foreign> FindIn(const std::vector<Foreign>& files, Part part, int camera) {
  std::optional<Foreign> found;
  for (const Foreign& file : files) {
    const std::optional<Foreign> value = FindOpenCvPart(file, part, camera);
    if (!value) continue;
    if (!found) {
      found = value;
    } else if (OpenCvMatrix(*value, 0, 0, 1) != OpenCvMatrix(*found, 0, 0, 1)) {
      value->Refuse("is in both files, with other numbers", "Name the files of one calibration.");
    }
  }
  return found;
}

// What to call two parts that belong to each other: as OpenCV's own program does, or otherwise.
struct PairNames {
  std::string own[2], other[2];
};

// Throws Failure if there is only one of the two.
void CheckPair(const std::optional<Foreign>& first, const std::optional<Foreign>& second,
               const PairNames& names) {
  if (first.has_value() == second.has_value()) return;
  const Foreign& there = first ? *first : *second;
  const bool own = there.path() == names.own[first ? 0 : 1];
  const std::string& missing = (own ? names.own : names.other)[first ? 1 : 0];
  there.Refuse("is there, but not " + missing + ", which belongs to it",
               "Take the files as they were written: " + there.path() + " and " + missing +
                   " are in the same one.");
}

void StoreCamera(const std::vector<Foreign>& files, int number, const LensImport& lens,
                 zarvo::calibration::CameraCalibration* camera) {
  CameraIntrinsics* intrinsics = camera->mutable_intrinsics();
  const auto matrix = FindIn(files, Part::kMatrix, number);
  StoreCameraMatrix(*matrix, OpenCvMatrix(*matrix, 3, 3, 1), intrinsics);
  if (const auto list = FindIn(files, Part::kCoefficients, number)) {
    lens.Store(*list, OpenCvMatrix(*list, 0, 0, 1), intrinsics);
  } else {
    lens.StoreNone();
  }
  for (const Foreign& file : files) StoreImageSize(file, intrinsics);
  if (FindOpenCvKey(matrix->path())->sided) camera->set_name(number == 1 ? "left" : "right");
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
  const auto left = FindIn(files, Part::kMatrix, 1), right = FindIn(files, Part::kMatrix, 2);
  const auto rotation = FindIn(files, Part::kRotation, 2);
  const auto translation = FindIn(files, Part::kTranslation, 2);
  CheckPair(left, right, {{"M1", "M2"}, {"that of the left camera", "that of the right camera"}});
  CheckPair(rotation, translation, {{"R", "T"}, {"rotation_matrix", "translation_vector"}});
  if (!left && !(rotation && rotation->path() == "R")) return false;
  const LensImport lens(files, chosen);
  for (const int number : {1, 2}) {
    auto* camera = robot->add_camera();
    if (left) StoreCamera(files, number, lens, camera);
  }
  lens.LoseParameters();
  lens.LoseUnread();
  for (const Foreign& file : files) LoseOtherCameras(file);
  if (rotation) StorePose(*rotation, *translation, robot->mutable_camera(1)->mutable_extrinsics());
  return true;
}

}  // namespace calib
