// The extrinsics of a record's cameras as rigid transforms. A record does not tell which way they
// map: the user does, with --extrinsics.
#ifndef CALIB_TOOLS_RIG_GEOMETRY_H_
#define CALIB_TOOLS_RIG_GEOMETRY_H_

#include <string>
#include <vector>

#include "calib/console/command_line.h"
#include "calib/geometry/calibration_geometry.h"
#include "calib/tools/camera_geometry.h"

namespace calib {

// --extrinsics and --orthonormalize.
struct ExtrinsicsFlags {
  std::string direction = "to-camera";
  bool orthonormalize = false;

  void AddTo(Command* command);
};

// The transform of one camera's extrinsics as the record has it, 4x4 by rows or 3x4. Throws Failure
// unless it is a rotation within 1e-4, or is made one by --orthonormalize, which is told.
geometry::Transform TransformOf(const GivenCamera& camera, const ExtrinsicsFlags& flags);

// For each camera, the transform from the reference frame to it, by what the flags say, or what
// auto takes, which is told. A camera without extrinsics is the reference.
std::vector<geometry::Transform> RigOf(const std::vector<GivenCamera>& cameras,
                                       const std::string& file, const ExtrinsicsFlags& flags);

// Stores 4x4 by rows.
void StoreTransform(const geometry::Transform& transform,
                    zarvo::calibration::CameraExtrinsics* extrinsics);

}  // namespace calib

#endif  // CALIB_TOOLS_RIG_GEOMETRY_H_
