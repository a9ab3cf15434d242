// The parts of the importer of OpenCV files.
#ifndef CALIB_TOOLS_IMPORT_OPENCV_H_
#define CALIB_TOOLS_IMPORT_OPENCV_H_

#include <vector>

#include "calib/tools/importers.h"

namespace calib {

// The numbers of a matrix, by rows; rows and columns of 0 stand for any. Throws Failure if they or
// the channels are others.
std::vector<double> OpenCvMatrix(const Foreign& matrix, int32_t rows, int32_t columns,
                                 int32_t channels);

void PlaceOpenCvDistortion(const Foreign& list, bool fisheye,
                           zarvo::calibration::CameraIntrinsics* intrinsics);

// Returns whether the files hold what stereo calibration writes; if not, nothing was read.
bool ImportOpenCvStereo(const std::vector<Foreign>& files,
                        zarvo::calibration::RobotCalibration* robot);

}  // namespace calib

#endif  // CALIB_TOOLS_IMPORT_OPENCV_H_
