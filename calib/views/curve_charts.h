// Charts of lists and of samples over a range: transfer functions, focus checks, zoom curves.
#ifndef CALIB_VIEWS_CURVE_CHARTS_H_
#define CALIB_VIEWS_CURVE_CHARTS_H_

#include <string>
#include <vector>

#include "calib/charts/chart.h"
#include "calib/fields/parts.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// Of all measurements, or all spots, of a record: a chart for each, small if they are many, all to
// one scale; below a heading that tells how many there are, and which failed.
std::vector<Chart> TransferFunctionCharts(const std::vector<Part>& items);
std::vector<Chart> FocusCheckCharts(const std::vector<Part>& checks);

// Each number of a pan-tilt-zoom camera's samples over their zoom.
std::vector<Chart> ZoomCharts(const zarvo::calibration::PTZIntrinsics& intrinsics,
                              const std::string& path);

}  // namespace calib

#endif  // CALIB_VIEWS_CURVE_CHARTS_H_
