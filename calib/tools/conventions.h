// What the numbers in the files of each tool refer to, in one table: where the first pixel lies,
// how a camera's axes point, between which frames its transform maps and how that is written.
// Importers and exporters convert by it; docs/conventions.md shows the same table.
#ifndef CALIB_TOOLS_CONVENTIONS_H_
#define CALIB_TOOLS_CONVENTIONS_H_

#include <string>
#include <string_view>
#include <vector>

#include "calib/tools/rigid_transform.h"

namespace calib {

// A record says none of this. All that calib imports and exports has it as OpenCV does: the first
// pixel's centre at (0, 0), x to the right, y down, z forward, and extrinsics that map from the
// frame of reference (the rig, its IMU or its first camera) to the camera, 16 numbers by rows.
struct Conventions {
  enum class Axes {
    kOpenCv,  // x right, y down, z forward
    kOpenGl   // x right, y up, z backward
  };
  // What a camera's transform maps.
  enum class Direction {
    kToCamera,    // from the frame of reference to the camera
    kFromCamera,  // from the camera to the frame of reference
    kBetween      // from the camera before to this one, the first being the reference
  };
  enum class Rotation {
    kMatrix,
    kVector,
    kQuaternionWxyz,
    kQuaternionXyzw,
    kRollPitchYaw  // about fixed axes, x first
  };

  struct Transform {
    std::string key;  // where it stands in the file
    Direction direction;
    Rotation rotation;
  };

  std::string format;  // as options name it
  std::string files;   // as people do
  double first_pixel;  // both coordinates of its centre
  Axes axes;
  std::vector<Transform> transforms;  // none: a file of one camera alone
  double metres = 1;                  // a unit of length; 0 if the files leave it open

  // A coordinate of the principal point.
  double PixelToRecord(double file) const { return file - first_pixel; }
  double PixelFromRecord(double record) const { return record + first_pixel; }

  // The transform of a camera, but for kBetween, where that of the camera before belongs to it:
  // record = file * record of the camera before.
  RigidTransform ToRecord(Direction direction, const RigidTransform& file) const;
  RigidTransform FromRecord(Direction direction, const RigidTransform& record) const;
};

const std::vector<Conventions>& AllConventions();

// Those of a format that is in the table.
const Conventions& ConventionsOf(std::string_view format);

}  // namespace calib

#endif  // CALIB_TOOLS_CONVENTIONS_H_
