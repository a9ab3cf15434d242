// Cameras whose lens a record cannot hold, as cameras of one that it can (--fit).
#ifndef CALIB_TOOLS_IMPORT_FIT_H_
#define CALIB_TOOLS_IMPORT_FIT_H_

#include <string>
#include <vector>

#include "calib/tools/foreign.h"
#include "calib/tools/lens_fitting.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// Whether imported files of the format may have such lenses: omni (camodocal's MEI), ds, eucm, ucm,
// fov, COLMAP's thin prism fisheye and division; of any format, Brown's with a thin prism or tilt.
bool MayBeFitted(const std::string& format, const std::vector<Foreign>& files);

// Fits a lens of the model to each camera of imported files whose own is one of them, stores it
// in place of what the importer could store, and takes back what that said to be lost. Throws
// Failure if a lens is none that can be fitted, or the fit is not good enough.
void FitCameras(const std::string& format, const std::vector<Foreign>& files, const FitFlags& fit,
                zarvo::calibration::RobotCalibration* robot);

}  // namespace calib

#endif  // CALIB_TOOLS_IMPORT_FIT_H_
