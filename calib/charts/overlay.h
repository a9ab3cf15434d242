// Two sets of charts in one drawing: what has become of what was.
#ifndef CALIB_CHARTS_OVERLAY_H_
#define CALIB_CHARTS_OVERLAY_H_

#include <string>
#include <vector>

#include "calib/charts/chart.h"

namespace calib {

// Charts of the same title become one, with the series and lines of `before` dashed; below it
// stands their difference, `after` minus `before`: of curves where both have a value of x, of
// points where both have a point of that index; of poses, how far each has moved and turned. Charts
// of cells, and those whose axes are others, stand side by side, and what only one of them has says
// so. The names are those of the two in the legend.
std::vector<Chart> Overlay(const std::vector<Chart>& after, const std::string& after_name,
                           const std::vector<Chart>& before, const std::string& before_name);

}  // namespace calib

#endif  // CALIB_CHARTS_OVERLAY_H_
