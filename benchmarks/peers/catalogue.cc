// All peers, and their cells as the sides of the programs that benchmarks have in common.
#include "benchmarks/peers/peer_cells.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

// What every peer must read back: the values themselves.
template <class R>
void AddContents(const std::string& payload, const R& (*values)(), Catalogue* catalogue) {
  const auto contents = [values] { return Contents(values()); };
  catalogue->payloads.push_back({"values", payload, contents, contents});
}

}  // namespace

PeerCatalogue EveryPeer() {
  PeerCatalogue catalogue;
  AddContents("A", PayloadA, &catalogue.cells);
  AddContents("C", PayloadC, &catalogue.cells);
  AddContents("E", PayloadE, &catalogue.cells);
  AddContents("I", PayloadI, &catalogue.cells);
  AddOurRecords(&catalogue);
#ifdef CALIBRATION_BENCHMARKS_OPPONENT
  AddOpponentRecords(&catalogue);
#endif
  AddFlatBuffers(&catalogue);
  AddCapnProto(&catalogue);
  AddProtozero(&catalogue);
  AddRapidJson(&catalogue);
  AddYamlCpp(&catalogue);
  return catalogue;
}

Catalogue EverySide() { return EveryPeer().cells; }

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
