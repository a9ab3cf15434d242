// This library's classes beside their peers.
#include "benchmarks/peers/peer_cells.h"
#include "benchmarks/peers/records.h"
#include "calibration_common/calibration.pb.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

struct Ours {
  static RobotCalibration Class(const Robot*);
  static BaseCalibrationProto Class(const Base*);
  static PTZSystemCalibration Class(const PtzSystem*);
  static CalibrationImage Class(const Image*);

  template <class R>
  using Store = RecordStore<Ours, R>;
};

}  // namespace

void AddOurRecords(PeerCatalogue* catalogue) { AddPeer<Ours>("ours", catalogue); }

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
