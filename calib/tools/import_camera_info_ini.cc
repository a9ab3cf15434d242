// The .ini form of ROS camera_info: a section of the image, one of the camera that is called as it
// is, and perhaps one of where it sits, which ROS itself does not read.
#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/importers.h"

namespace calib {

using zarvo::calibration::CameraCalibration;

bool IsCameraInfoIni(const Foreign& file) {
  return file.Has({"image"}) && file.At({"image"}).Has({"width"}) && !file.Has({"camera_matrix"});
}

void ImportCameraInfoIni(const Foreign& file, const LensModel* chosen,
                         zarvo::calibration::RobotCalibration* robot) {
  CameraCalibration* camera = robot->add_camera();
  auto* intrinsics = camera->mutable_intrinsics();
  file.ForEachEntry([&](const std::string& name, const Foreign& section) {
    if (name == "image" || name == "externals") return;
    if (camera->has_name()) {
      section.Refuse("is a second camera, beside " + camera->name(),
                     "Make a file of each, with the section [image] in both.");
    }
    camera->set_name(name);
    const Foreign matrix = section.At({"camera matrix"}), list = section.At({"distortion"});
    StoreCameraMatrix(matrix, matrix.Numbers(), intrinsics);
    LensImport({section}, chosen).Store(list, list.Numbers(), intrinsics);
  });
  if (!camera->has_name()) {
    file.Refuse("has no section of a camera",
                "Add it: [NAME], with camera matrix and distortion below it.");
  }
  const Foreign image = file.At({"image"});
  intrinsics->set_width(image.At({"width"}).Count());
  intrinsics->set_height(image.At({"height"}).Count());
}

}  // namespace calib
