// Charts below one another as text in UTF-8, for a terminal. What SVG labels within the drawing is
// told below it.
#ifndef CALIB_CHARTS_CHART_TEXT_H_
#define CALIB_CHARTS_CHART_TEXT_H_

#include <string>
#include <vector>

#include "calib/charts/chart.h"

namespace calib {

// `width` is the number of columns.
std::string ChartsAsText(const std::string& title, const std::vector<Chart>& charts, int width);

}  // namespace calib

#endif  // CALIB_CHARTS_CHART_TEXT_H_
