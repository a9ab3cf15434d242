// mrcal: a .cameramodel, of which a record holds the lens models that are OpenCV's.
#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/importers.h"

namespace calib {

using zarvo::calibration::CameraCalibration;

namespace {

const std::vector<std::string> kModelKeys = {"lensmodel", "lens_model", "distortion_model"};

// How many coefficients the name of one of OpenCV's models announces; -1 of any other.
int Announced(const std::string& name) {
  const size_t digits = name.find("OPENCV");
  if (digits != std::string::npos) return std::atoi(name.c_str() + digits + 6);
  return name.find("PINHOLE") == std::string::npos ? -1 : 0;
}

}  // namespace

bool IsMrcal(const Foreign& file) {
  return file.Has({"imagersize"}) && file.Has({"intrinsics"}) && file.Has(kModelKeys);
}

void ImportMrcal(const Foreign& file, const LensModel* chosen,
                 zarvo::calibration::RobotCalibration* robot) {
  CameraCalibration* camera = robot->add_camera();
  auto* intrinsics = camera->mutable_intrinsics();
  const Foreign name = file.At(kModelKeys), list = file.At({"intrinsics"});
  const std::vector<double> numbers = list.Numbers();
  const int announced = Announced(name.Peek());
  if (numbers.size() < 4 || (announced >= 0 && numbers.size() != 4U + announced)) {
    list.Refuse("has " + std::to_string(numbers.size()) + " numbers, but " + name.Spell() +
                    " takes " + std::to_string(4 + std::max(announced, 0)),
                "Check which of the two is wrong, and correct it.");
  }
  StorePinhole(list, {numbers.begin(), numbers.begin() + 4}, intrinsics);
  const LensImport lens({file}, chosen);
  lens.Store(list, {numbers.begin() + 4, numbers.end()}, intrinsics);
  StoreSize(file.At({"imagersize"}), intrinsics);
  if (const auto pose = file.Find({"extrinsics", "rt_cam_ref"})) {
    const std::vector<double> rt = pose->Numbers();
    if (rt.size() != 6) {
      pose->Refuse("has " + std::to_string(rt.size()) + " numbers, expected 6",
                   "Correct it there.");
    }
    StorePose("mrcal", *pose,
              RigidTransform::FromRotationVector({rt[0], rt[1], rt[2]}, {rt[3], rt[4], rt[5]}),
              "the reference", camera->mutable_extrinsics());
  }
  lens.LoseUnread();
}

}  // namespace calib
