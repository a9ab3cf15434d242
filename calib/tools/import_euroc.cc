// EuRoC: the sensor.yaml of a camera, which datasets and the programs that read them have taken
// over.
#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/importers.h"

namespace calib {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

namespace {

void StoreDistortion(const Foreign& file, const LensModel* chosen, CameraIntrinsics* intrinsics) {
  const LensImport lens({file}, chosen);
  if (const auto list = file.Find({"distortion_coefficients", "distortion_coeffs"})) {
    lens.Store(*list, list->IsMap() ? MatrixData(*list, 0, 0, 1) : list->Numbers(), intrinsics);
  } else {
    lens.StoreNone();
  }
  lens.LoseUnread();
}

void StoreImageSize(const Foreign& size, CameraIntrinsics* intrinsics) {
  if (!size.IsMap()) return StoreSize(size, intrinsics);
  intrinsics->set_width(size.At({"width"}).Count());
  intrinsics->set_height(size.At({"height"}).Count());
}

}  // namespace

bool IsEuroc(const Foreign& file) {
  return file.Has({"T_BS"}) && file.Has({"intrinsics"}) && file.Has({"camera_model"});
}

void ImportEuroc(const Foreign& file, const LensModel* lens,
                 zarvo::calibration::RobotCalibration* robot) {
  CameraCalibration* camera = robot->add_camera();
  CameraIntrinsics* intrinsics = camera->mutable_intrinsics();
  StoreProjection(file.At({"camera_model"}), file.At({"intrinsics"}), intrinsics);
  StoreDistortion(file, lens, intrinsics);
  StoreImageSize(file.At({"resolution"}), intrinsics);
  if (const auto pose = file.Find({"T_BS"})) {
    StorePose("euroc", *pose, ReadTransform(*pose), "the body", camera->mutable_extrinsics());
  }
  if (const auto name = file.Find({"camera_id"})) camera->set_name(name->Text());
}

}  // namespace calib
