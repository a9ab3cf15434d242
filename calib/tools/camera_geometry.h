// Cameras of records as those that calib/geometry reckons with, and back.
#ifndef CALIB_TOOLS_CAMERA_GEOMETRY_H_
#define CALIB_TOOLS_CAMERA_GEOMETRY_H_

#include <google/protobuf/message.h>

#include <string>
#include <vector>

#include "calib/fields/parts.h"
#include "calib/geometry/calibration_geometry.h"
#include "calib/tools/lens_models.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

namespace geometry = zarvo::calibration_geometry;

// One camera of a record.
struct GivenCamera {
  const zarvo::calibration::CameraCalibration* camera;     // nullptr of a CameraIntrinsics
  const zarvo::calibration::CameraIntrinsics* intrinsics;  // empty ones if it has none
  const zarvo::calibration::CameraExtrinsics* extrinsics;  // nullptr if it has none
  std::string place;  // of the intrinsics, such as "rig.json: camera[0].intrinsics"
  std::string name;   // such as "cam0" or "camera[0]"; "the camera" where nothing tells it apart
};

// All cameras of a record. `file` is what messages call it.
std::vector<GivenCamera> CamerasOf(const google::protobuf::Message& record,
                                   const std::string& file);

// The same cameras, to be changed; of a CameraIntrinsics there are none.
std::vector<zarvo::calibration::CameraCalibration*> MutableCameras(
    google::protobuf::Message* record);

// Those that the flag chooses, all of which have intrinsics. Throws Failure if there are none.
std::vector<GivenCamera> ChosenCameras(const google::protobuf::Message& record,
                                       const std::string& file, const CameraFlag& flag);

// The one that the flag chooses. Throws Failure if there are several or none.
GivenCamera OnlyCamera(const google::protobuf::Message& record, const std::string& file,
                       const CameraFlag& flag);

// The one whose name, or number from 0, is `which`. Throws Failure if there is none, or several.
GivenCamera CameraCalled(const google::protobuf::Message& record, const std::string& file,
                         const std::string& which);

// Its lens by `chosen` or, if that is nullptr, by the one that the numbers of k and p tell, which
// is said on standard error. Throws Failure if the intrinsics are not whole, or no camera's.
geometry::Camera GeometryOf(const GivenCamera& camera, const LensModel* chosen);

// The same without a word; `model` becomes the lens model that was taken.
geometry::Camera GeometryOf(const GivenCamera& camera, const LensModel* chosen,
                            const LensModel** model);

// Throws Failure if its image has no size.
void RequireSize(const GivenCamera& camera);

// Stores fx, fy, skew, cx, cy, k, p, and the size where there is one. Coefficients are as many as
// `model` has.
void StoreGeometry(const geometry::Camera& camera, const LensModel& model,
                   zarvo::calibration::CameraIntrinsics* intrinsics);

}  // namespace calib

#endif  // CALIB_TOOLS_CAMERA_GEOMETRY_H_
