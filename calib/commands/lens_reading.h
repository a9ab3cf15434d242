// What the coefficients of a camera are taken for where a lens is drawn.
#ifndef CALIB_COMMANDS_LENS_READING_H_
#define CALIB_COMMANDS_LENS_READING_H_

#include "calib/tools/lens_flag.h"
#include "calib/views/record_charts.h"

namespace calib {

// Reads lenses as the model that is chosen, or by the numbers of coefficients, and then says so.
LensReader ReaderOf(const LensFlag& flag);

}  // namespace calib

#endif  // CALIB_COMMANDS_LENS_READING_H_
