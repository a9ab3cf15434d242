// The cells of the opponent: the classes that a user would have a schema compiler make. They are
// made while building, from the same schema in a package of its own.
#include "benchmarks/typed_cells.h"
#include "opponent/calibration.pb.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

struct Opponent {
  using Robot = ::opponent::calibration::RobotCalibration;
  using Base = ::opponent::calibration::BaseCalibrationProto;
  using Intrinsics = ::opponent::calibration::CameraIntrinsics;
  using PtzSystem = ::opponent::calibration::PTZSystemCalibration;
  using FocusSet = ::opponent::calibration::FocusInfo;
  using Image = ::opponent::calibration::CalibrationImage;
};

}  // namespace

void AddOpponent(Catalogue* catalogue) { AddTypedCells<Opponent>("opponent", catalogue); }

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
