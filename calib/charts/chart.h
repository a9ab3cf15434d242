// A chart of points over two axes that each bear a field's name, and charts below one another as
// one SVG or as text. Knows nothing of records.
#ifndef CALIB_CHARTS_CHART_H_
#define CALIB_CHARTS_CHART_H_

#include <string>
#include <vector>

#include "calib/charts/axis.h"

namespace calib {

struct ChartPoint {
  double x, y;
  std::string label;  // shown when pointed at
};

struct Chart {
  std::string title;
  std::vector<std::string> notes;  // lines below the title
  std::string x_name, y_name;
  std::vector<ChartPoint> points;
  bool x_counts = false;   // x is an index: no ticks between whole numbers
  bool connected = false;  // a curve, in the order of the points
  bool image = false;      // y goes down, and both axes have one scale
  // The area from (0, 0) to here, such as an image; none if either is 0.
  double area_width = 0, area_height = 0;
  std::string area_label;
  // A value of y that is marked, such as a threshold; none if the label is empty.
  double mark = 0;
  std::string mark_label;
  bool small = false;  // takes half of the width
};

std::string ChartsAsSvg(const std::string& title, const std::vector<Chart>& charts);
// In UTF-8, for a terminal of so many columns.
std::string ChartsAsText(const std::string& title, const std::vector<Chart>& charts, int width);

// What both share.

bool HasArea(const Chart& chart);

// Both cover all that is drawn, with some room at the ends.
struct ChartAxes {
  Axis x, y;
};
ChartAxes AxesOf(const Chart& chart);

// With as many digits as it takes to tell them apart.
std::vector<std::string> TickTexts(const std::vector<double>& ticks);

}  // namespace calib

#endif  // CALIB_CHARTS_CHART_H_
