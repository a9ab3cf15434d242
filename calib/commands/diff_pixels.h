// calib diff --pixels: by how many pixels two calibrations of the same cameras differ.
#ifndef CALIB_COMMANDS_DIFF_PIXELS_H_
#define CALIB_COMMANDS_DIFF_PIXELS_H_

#include "calib/console/command_line.h"
#include "calib/fields/camera_match.h"
#include "calib/formats/record_reader.h"
#include "calib/tools/lens_flag.h"

namespace calib {

struct PixelFlags {
  bool pixels = false, no_fit = false;
  double distance = 0;
  LensFlag lens;

  void AddTo(Command* command);
};

// Prints a line for each camera; cameras are matched like those of fields. Returns the exit status:
// kFinding if one differs by more than `tolerance` pixels, or has intrinsics in one record only.
int DiffPixels(const Record& before, const Record& after, const PixelFlags& flags, MatchBy by,
               double tolerance);

}  // namespace calib

#endif  // CALIB_COMMANDS_DIFF_PIXELS_H_
