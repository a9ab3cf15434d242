// Cameras of Kalibr whose lens a record cannot hold, as cameras of one that it can (--fit).
#ifndef CALIB_TOOLS_IMPORT_FIT_H_
#define CALIB_TOOLS_IMPORT_FIT_H_

#include "calib/tools/foreign.h"
#include "calib/tools/lens_fitting.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// Fits a lens of the model to each camera of the camchain whose own is omni, ds, eucm or fov,
// stores it in place of what ImportCamchain() could store, and takes back what that said to be
// lost. Throws Failure if a lens is none that can be fitted, or the fit is not good enough.
void FitCamchain(const Foreign& file, const FitFlags& fit,
                 zarvo::calibration::RobotCalibration* robot);

}  // namespace calib

#endif  // CALIB_TOOLS_IMPORT_FIT_H_
