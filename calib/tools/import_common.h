// Parts of a camera that several tools write alike, checked and stored in the record.
#ifndef CALIB_TOOLS_IMPORT_COMMON_H_
#define CALIB_TOOLS_IMPORT_COMMON_H_

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "calib/tools/foreign.h"
#include "calib/tools/lens_models.h"
#include "calib/tools/rigid_transform.h"
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

// Stores fx, fy, cx and cy that were read from `origin`, without skew. Throws Failure if the focal
// lengths are 0.
void StorePinhole(const Foreign& origin, const std::vector<double>& numbers,
                  zarvo::calibration::CameraIntrinsics* intrinsics);

// Stores them out of a list that the camera model `name` explains: behind its own parameters, which
// are marked as lost unless they are 0.
void StoreProjection(const Foreign& name, const Foreign& list,
                     zarvo::calibration::CameraIntrinsics* intrinsics);

// Stores [width, height].
void StoreSize(const Foreign& list, zarvo::calibration::CameraIntrinsics* intrinsics);

// A width or a height, which may be written as 640.0.
int32_t PixelCount(const Foreign& value);

// A transform: a list of 16 numbers or of four rows, or a matrix with rows, cols and data. Throws
// Failure if its last row is not [0, 0, 0, 1].
RigidTransform ReadTransform(const Foreign& value);

// The numbers under these keys of a map.
std::vector<double> NumbersOf(const Foreign& value, const std::vector<std::string>& keys);
std::array<double, 3> Three(const Foreign& list);

// Throws Failure if the quaternion, which was read from `origin`, is none of a rotation.
RigidTransform FromQuaternion(const Foreign& origin, const Quaternion& q,
                              const std::array<double, 3>& t);

// Says so if the rotation of a transform, which was read from `origin`, is none but nearly one.
// Throws Failure if it is further off, since it is to be inverted.
void CheckRigid(const Foreign& origin, const RigidTransform& transform);

// Stores where a camera sits relative to `frame` by the conventions of the format, and says if they
// are not those of a record.
void StorePose(const std::string& format, const Foreign& origin, const RigidTransform& file,
               const std::string& frame, zarvo::calibration::CameraExtrinsics* extrinsics);

// Stores a transform of four rows and columns that was read from `origin`, and remarks on the
// frames that it maps between, which the record does not tell.
void StoreTransform(const Foreign& origin, const std::vector<double>& matrix,
                    const std::string& frames, zarvo::calibration::CameraExtrinsics* extrinsics);

}  // namespace calib

#endif  // CALIB_TOOLS_IMPORT_COMMON_H_
