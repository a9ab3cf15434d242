// A chart of points over two axes that each bear a name, and what every drawing of it needs. Knows
// nothing of records; chart_svg.h and chart_text.h draw it.
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
  // An area from (0, 0) to this width and height, such as an image; none if either is 0.
  double area_width = 0, area_height = 0;
  std::string area_label;
  // A value of y that is marked, such as a threshold; none if the label is empty.
  double mark = 0;
  std::string mark_label;
  bool small = false;  // takes half of the width
};

// Whether the area of the chart is drawn.
bool HasArea(const Chart& chart);

// The two axes of a chart; they cover all that is drawn, with some room at the ends.
struct ChartAxes {
  Axis x, y;
};
ChartAxes AxesOf(const Chart& chart);

// The numbers at the ticks, with as many digits as it takes to tell them apart.
std::vector<std::string> TickTexts(const std::vector<double>& ticks);

}  // namespace calib

#endif  // CALIB_CHARTS_CHART_H_
