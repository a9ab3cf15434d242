// The cells of this library's classes.
#include "benchmarks/typed_cells.h"
#include "calibration_common/calibration.pb.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

struct Ours {
  using Robot = RobotCalibration;
  using Base = BaseCalibrationProto;
  using Intrinsics = CameraIntrinsics;
  using PtzSystem = PTZSystemCalibration;
  using FocusSet = FocusInfo;
  using Image = CalibrationImage;
};

}  // namespace

void AddOurs(Catalogue* catalogue) { AddTypedCells<Ours>("ours", catalogue); }

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
