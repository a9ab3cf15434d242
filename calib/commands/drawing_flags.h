// The flags by which a user says what the numbers of a camera mean where cameras are drawn.
#ifndef CALIB_COMMANDS_DRAWING_FLAGS_H_
#define CALIB_COMMANDS_DRAWING_FLAGS_H_

#include <string>

#include "calib/console/command_line.h"
#include "calib/tools/lens_flag.h"
#include "calib/views/record_charts.h"

namespace calib {

// Reads lenses as the flag says or, without it, by the numbers of their coefficients.
LensReader LensReaderOf(const LensFlag& lens);

// --extrinsics and --distortion-model.
struct DrawingFlags {
  std::string extrinsics;
  LensFlag lens;

  void AddTo(Command* command);
  // Sets what the flags are about. Without --distortion-model, lenses are read by the numbers of
  // their coefficients, which the drawing says.
  void Apply(ChartOptions* options) const;
};

}  // namespace calib

#endif  // CALIB_COMMANDS_DRAWING_FLAGS_H_
