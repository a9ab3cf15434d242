// The cameras of a rig seen from above and from the side.
#ifndef CALIB_VIEWS_RIG_CHARTS_H_
#define CALIB_VIEWS_RIG_CHARTS_H_

#include <vector>

#include "calib/charts/chart.h"
#include "calib/views/rig.h"

namespace calib {

// None if no camera has extrinsics.
std::vector<Chart> RigCharts(const Rig& rig);

}  // namespace calib

#endif  // CALIB_VIEWS_RIG_CHARTS_H_
