// Charts below one another as one SVG; small ones stand in pairs.
#ifndef CALIB_CHARTS_CHART_SVG_H_
#define CALIB_CHARTS_CHART_SVG_H_

#include <string>
#include <vector>

#include "calib/charts/chart.h"

namespace calib {

std::string ChartsAsSvg(const std::string& title, const std::vector<Chart>& charts);

}  // namespace calib

#endif  // CALIB_CHARTS_CHART_SVG_H_
