// What the importers have in common. Each reads the files of another tool into cameras, says on
// standard error what it did not keep, and throws Failure where the file is not what that tool
// writes. docs/calib-import.md has the mapping.
#ifndef CALIB_TOOLS_IMPORTERS_H_
#define CALIB_TOOLS_IMPORTERS_H_

#include <string>
#include <vector>

#include "calib/tools/foreign.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

void ImportCameraInfo(const Foreign& file, zarvo::calibration::RobotCalibration* robot);
void ImportCamchain(const Foreign& file, zarvo::calibration::RobotCalibration* robot);
// One file, or those of a stereo calibration.
void ImportOpenCv(const std::vector<Foreign>& files, zarvo::calibration::RobotCalibration* robot);

// The cameras that were read from the file `name`, or the only one of them, as a record of that
// type. Says on standard error what that type does not hold.
const google::protobuf::Message& ImportedRecord(const std::string& name,
                                                const google::protobuf::Descriptor* type,
                                                const zarvo::calibration::RobotCalibration& robot);

// A matrix as OpenCV and ROS write them: a map of rows, cols, data, and dt with OpenCV. `channels`
// numbers make one element; rows and columns of 0 stand for any.
std::vector<double> MatrixData(const Foreign& matrix, int32_t rows, int32_t columns,
                               int32_t channels);

// fx, fy, skew, cx and cy of a camera matrix, by rows, that was read from `place`.
void PlaceCameraMatrix(const Foreign& place, const std::vector<double>& matrix,
                       zarvo::calibration::CameraIntrinsics* intrinsics);

// A transform of four rows and columns that was read from `place`, and the frames that it maps
// between, which the record does not tell.
void PlaceTransform(const Foreign& place, const std::vector<double>& matrix,
                    const std::string& frames, zarvo::calibration::CameraExtrinsics* extrinsics);

// The two orders that distortion coefficients are listed in.
enum class Lens {
  kBrown,   // k1 k2 p1 p2 [k3 [k4 k5 k6 [s1 s2 s3 s4 [tx ty]]]]; only k and p have a field
  kFisheye  // k1 k2 k3 k4
};

// k and p of a list that was read from `place`. Throws Failure if its length is none of `sizes`.
void PlaceDistortion(const Foreign& place, const std::vector<double>& list, Lens lens,
                     const std::vector<size_t>& sizes,
                     zarvo::calibration::CameraIntrinsics* intrinsics);

}  // namespace calib

#endif  // CALIB_TOOLS_IMPORTERS_H_
