// Parts of a camera that several tools write alike, checked and stored in the record.
#ifndef CALIB_TOOLS_IMPORT_COMMON_H_
#define CALIB_TOOLS_IMPORT_COMMON_H_

#include <cstdint>
#include <string>
#include <vector>

#include "calib/tools/foreign.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// The numbers of a matrix as OpenCV and ROS write it: a map of rows, cols, data, and dt with
// OpenCV. `channels` numbers make one element; rows and columns of 0 stand for any. Throws Failure
// if the matrix is of another size.
std::vector<double> MatrixData(const Foreign& matrix, int32_t rows, int32_t columns,
                               int32_t channels);

// Stores fx, fy, skew, cx and cy of a camera matrix, by rows, that was read from `origin`. Throws
// Failure if it is none.
void StoreCameraMatrix(const Foreign& origin, const std::vector<double>& matrix,
                       zarvo::calibration::CameraIntrinsics* intrinsics);

// Stores a transform of four rows and columns that was read from `origin`, and remarks on the
// frames that it maps between, which the record does not tell.
void StoreTransform(const Foreign& origin, const std::vector<double>& matrix,
                    const std::string& frames, zarvo::calibration::CameraExtrinsics* extrinsics);

}  // namespace calib

#endif  // CALIB_TOOLS_IMPORT_COMMON_H_
