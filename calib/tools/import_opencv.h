// The parts of the importer of OpenCV files.
#ifndef CALIB_TOOLS_IMPORT_OPENCV_H_
#define CALIB_TOOLS_IMPORT_OPENCV_H_

#include <cstdint>
#include <vector>

#include "calib/tools/foreign.h"
#include "calib/tools/lens_models.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// The numbers of a matrix, by rows, or of a list in its place; rows and columns of 0 stand for any.
// Throws Failure if the matrix has another size or other channels, unless it is empty.
std::vector<double> OpenCvMatrix(const Foreign& matrix, int32_t rows, int32_t columns,
                                 int32_t channels);

// Stores the size of the images, if the file tells it.
void StoreImageSize(const Foreign& file, zarvo::calibration::CameraIntrinsics* intrinsics);

// Marks as lost what belongs to a camera that was not read.
void LoseOtherCameras(const Foreign& file);

// Returns whether the files hold what stereo calibration writes; if not, nothing was read.
bool ImportOpenCvStereo(const std::vector<Foreign>& files, const LensModel* lens,
                        zarvo::calibration::RobotCalibration* robot);

}  // namespace calib

#endif  // CALIB_TOOLS_IMPORT_OPENCV_H_
