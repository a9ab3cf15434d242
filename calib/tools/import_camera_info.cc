// ROS camera_info: the files of the camera calibrator and of camera_info_manager, and messages as
// rostopic and ros2 topic print them, which have other keys and lists in place of matrices. For the
// .ini form see import_camera_info_ini.cc.
#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/importers.h"

namespace calib {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

namespace {

// The numbers of a file's matrix or of a message's list.
std::vector<double> Elements(const Foreign& value, bool message, int32_t rows, int32_t columns) {
  return message ? value.Numbers() : MatrixData(value, rows, columns, 1);
}

void StoreDistortion(const Foreign& file, bool message, const LensModel* chosen,
                     CameraIntrinsics* intrinsics) {
  const LensImport lens({file}, chosen);
  if (const auto list = message ? file.Find({"D", "d"}) : file.Find({"distortion_coefficients"})) {
    lens.Store(*list, Elements(*list, message, 0, 0), intrinsics);
  } else {
    lens.StoreNone();
  }
  lens.LoseParameters();
  lens.LoseUnread();
}

void StoreRegion(const Foreign& file, CameraIntrinsics* intrinsics) {
  if (const auto binning = file.Find({"binning_x"})) intrinsics->set_x_bin(binning->Text());
  const std::optional<Foreign> roi = file.Find({"roi"});
  if (!roi) return;
  if (const auto x = roi->Find({"x_offset"})) {
    intrinsics->set_offset_x(static_cast<float>(x->Count()));
  }
  if (const auto y = roi->Find({"y_offset"})) {
    intrinsics->set_offset_y(static_cast<float>(y->Count()));
  }
}

}  // namespace

bool IsCameraInfo(const Foreign& file) {
  if (IsCameraInfoIni(file)) return true;
  if (file.Has({"K", "k"})) return file.At({"K", "k"}).IsList() && file.Has({"width"});
  if (!file.Has({"camera_matrix"})) return false;
  const Foreign matrix = file.At({"camera_matrix"});
  return matrix.Has({"data"}) &&
         (!matrix.Has({"dt"}) || file.Has({"projection_matrix", "rectification_matrix"}));
}

void ImportCameraInfo(const Foreign& file, const LensModel* lens,
                      zarvo::calibration::RobotCalibration* robot) {
  if (IsCameraInfoIni(file)) return ImportCameraInfoIni(file, lens, robot);
  const bool message = file.Find({"K", "k"}).has_value();
  CameraCalibration* camera = robot->add_camera();
  CameraIntrinsics* intrinsics = camera->mutable_intrinsics();
  const Foreign matrix = message ? file.At({"K", "k"}) : file.At({"camera_matrix"});
  StoreCameraMatrix(matrix, Elements(matrix, message, 3, 3), intrinsics);
  StoreDistortion(file, message, lens, intrinsics);
  intrinsics->set_width(file.At({message ? "width" : "image_width"}).Count());
  intrinsics->set_height(file.At({message ? "height" : "image_height"}).Count());
  StoreRegion(file, intrinsics);
  if (const auto name = file.Find({"camera_name"})) camera->set_name(name->Text());
}

}  // namespace calib
