// A lens that a record is to hold as one of another model, and the flags by which the user says how
// well it must fit.
#ifndef CALIB_TOOLS_LENS_FITTING_H_
#define CALIB_TOOLS_LENS_FITTING_H_

#include <string>

#include "calib/console/command_line.h"
#include "calib/tools/camera_geometry.h"
#include "calib/tools/lens_models.h"

namespace calib {

struct FitFlags {
  std::string model;  // empty if it is not given
  double max_error = 0.5;
  double up_to = 180;

  // Adds `option`, which names the model, --max-error and --up-to.
  Option* AddTo(Command* command, const std::string& option, const std::string& description);

  // Fits a lens of the model to `camera`, stores it, and says how well it fits. Throws Failure if
  // it is worse than --max-error; `place` is what messages call the camera.
  void Store(const geometry::Camera& camera, const std::string& place,
             zarvo::calibration::CameraIntrinsics* intrinsics) const;
};

}  // namespace calib

#endif  // CALIB_TOOLS_LENS_FITTING_H_
