// The classes that a schema compiler makes of the same schema, as a peer.
#include "benchmarks/peers/peer_cells.h"
#include "benchmarks/peers/records.h"
#include "opponent/calibration.pb.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

struct Opponent {
  static ::opponent::calibration::RobotCalibration Class(const Robot*);
  static ::opponent::calibration::BaseCalibrationProto Class(const Base*);
  static ::opponent::calibration::PTZSystemCalibration Class(const PtzSystem*);
  static ::opponent::calibration::CalibrationImage Class(const Image*);

  template <class R>
  using Store = RecordStore<Opponent, R>;
};

}  // namespace

void AddOpponentRecords(PeerCatalogue* catalogue) { AddPeer<Opponent>("opponent", catalogue); }

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
