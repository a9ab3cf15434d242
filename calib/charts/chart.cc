#include "calib/charts/chart.h"

#include <algorithm>
#include <cstdio>

namespace calib {

bool HasArea(const Chart& chart) { return chart.area_width > 0 && chart.area_height > 0; }

ChartAxes AxesOf(const Chart& chart) {
  ChartAxes axes;
  for (const ChartPoint& point : chart.points) {
    axes.x.Cover(point.x);
    axes.y.Cover(point.y);
  }
  if (HasArea(chart)) {
    for (const double x : {0.0, chart.area_width}) axes.x.Cover(x);
    for (const double y : {0.0, chart.area_height}) axes.y.Cover(y);
  }
  if (!chart.mark_label.empty()) axes.y.Cover(chart.mark);
  axes.x.Pad();
  axes.y.Pad();
  return axes;
}

std::vector<std::string> TickTexts(const std::vector<double>& ticks) {
  std::vector<std::string> texts;
  for (int digits = 6; digits <= 15; ++digits) {
    texts.clear();
    for (const double tick : ticks) {
      char text[32];
      std::snprintf(text, sizeof text, "%.*g", digits, tick);
      texts.emplace_back(text);
    }
    // Ticks are in order, so that equal texts are neighbors.
    if (std::adjacent_find(texts.begin(), texts.end()) == texts.end()) break;
  }
  return texts;
}

}  // namespace calib
