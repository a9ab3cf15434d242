// Charts below one another as one SVG; half ones stand in pairs, small ones in rows.
#ifndef CALIB_CHARTS_CHART_SVG_H_
#define CALIB_CHARTS_CHART_SVG_H_

#include <string>
#include <vector>

#include "calib/charts/chart.h"

namespace calib {

// A file of at most 2 MB, but for the pictures in it: of more points than a few thousand only what
// is seen of them is drawn, and of very many charts the first, with a line that counts the others.
std::string ChartsAsSvg(const std::string& title, const std::vector<Chart>& charts);

// The same as an element of a page that has ChartStyle() (chart_style.h); in at most so many bytes.
std::string ChartsAsElement(const std::vector<Chart>& charts, size_t most_bytes);

// One small chart, as wide as that, of which no point tells its numbers.
std::string SmallChartAsElement(const Chart& chart, double width);

}  // namespace calib

#endif  // CALIB_CHARTS_CHART_SVG_H_
