// The sides of the table of all operations. The peers' programs have a catalogue of their own.
#include "benchmarks/cells.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {

Catalogue EverySide() {
  Catalogue catalogue;
  AddOurs(&catalogue);
#ifdef CALIBRATION_BENCHMARKS_OPPONENT
  AddOpponent(&catalogue);
#endif
  AddDynamic(&catalogue);
  AddLimits(&catalogue);
  return catalogue;
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
