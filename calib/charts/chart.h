// A chart over two axes that each bear a name, and what every drawing of it needs: series of
// points, and lines, cells and labels in the numbers of the axes. Knows nothing of records;
// chart_svg.h and chart_text.h draw it.
#ifndef CALIB_CHARTS_CHART_H_
#define CALIB_CHARTS_CHART_H_

#include <cstddef>
#include <string>
#include <vector>

#include "calib/charts/axis.h"
#include "calib/geometry/calibration_geometry.h"

namespace calib {

// Colors are numbers from 0; chart_style.cc has the palette, and a higher number starts over.
struct ChartPoint {
  double x, y;
  size_t index = 0;        // in the list that it comes from
  bool after_gap = false;  // nothing is known between it and the point before
};

struct ChartSeries {
  std::string name;     // told in the legend, if there are few with a name
  std::string element;  // what the list is called that the points come from
  std::vector<ChartPoint> points;
  bool connected = false;  // a curve, in the order of the points; x does not fall
  int color = 0;
  bool second = false;  // drawn dashed and hollow
  bool smooth = false;  // computed: only the curve is drawn, not its points
};

struct ChartLine {
  std::vector<ChartPoint> points;
  int color = 0;
  bool dashed = false;
  bool arrow = false;  // has a head at its end
  bool over = false;   // stands out from the points that it lies over
};

// A rectangle that is the darker the larger its share, from 0 to 1, with a text in it.
struct ChartCell {
  double x1, y1, x2, y2;
  double share;
  std::string text;
};

struct ChartLabel {
  double x, y;
  std::string text;
  int color = 0;
};

// A value of y that is marked, such as a threshold.
struct ChartMark {
  double y;
  std::string label;
};

// Where things are in space and how they are turned, which a chart shows from one side only.
struct ChartPose {
  size_t index;  // in the list that it comes from
  zarvo::calibration_geometry::Transform from_thing;
};
struct ChartPoses {
  std::string whole;    // what they make together, such as "rig"
  std::string element;  // what the list is called that they come from
  std::vector<ChartPose> poses;
};

enum class ChartSize { kWide, kHalf, kSmall };
enum class Verdict { kNone, kPassed, kFailed };

struct Chart {
  // Above this chart and those that follow it, and what holds for all of them; begins a new row.
  std::string heading, heading_note;
  std::string title;
  std::vector<std::string> notes;  // lines below the title
  Verdict verdict = Verdict::kNone;
  bool plot = true;  // else there are title and notes only
  std::string x_name, y_name;
  std::vector<ChartSeries> series;
  std::vector<ChartLine> lines;
  std::vector<ChartCell> cells;
  std::vector<ChartLabel> labels;
  std::vector<ChartMark> marks;
  ChartPoses poses;         // not drawn; what has become of them, overlay.h shows
  bool x_counts = false;    // x is an index: no ticks between whole numbers
  bool floats = false;      // the points' numbers were of single precision
  bool same_scale = false;  // of both axes
  bool y_down = false;
  bool full_range = false;  // covers values that lie far off, too
  // An area from (0, 0) to this width and height, such as an image; none if either is 0.
  double area_width = 0, area_height = 0;
  // A picture of the area, as a data: URL, from half a unit before its corner on.
  std::string area_picture;
  ChartSize size = ChartSize::kWide;
  // Charts of one group, unless it is "", have the same axes.
  std::string group;
};

// Whether the area of the chart is drawn.
bool HasArea(const Chart& chart);

// How many points there are in all series.
size_t CountPoints(const Chart& chart);

// What a point is called when pointed at.
std::string PointText(const Chart& chart, const ChartSeries& series, const ChartPoint& point);

// The two axes of a chart.
struct ChartAxes {
  Axis x, y;

  bool Hold(const ChartPoint& point) const;
};

// Of axes of one scale, how many times as long as the other one may be drawn; a longer one gets a
// scale of its own.
constexpr double kLongestAxis = 10;

// The axes of all the charts. They cover what is drawn, with some room at the ends, but for points
// that lie far off (range.h), and marks far from all points.
std::vector<ChartAxes> AxesOf(const std::vector<Chart>& charts);

// The notes of the chart, and more if not all of its points are within the axes, or if these have
// not the scale that they should have.
std::vector<std::string> NotesOf(const Chart& chart, const ChartAxes& axes);

// The series that the legend tells; none if there is nothing to tell apart, or too many.
std::vector<const ChartSeries*> LegendOf(const Chart& chart);

// The numbers at the ticks, with as many digits as it takes to tell them apart.
std::vector<std::string> TickTexts(const std::vector<double>& ticks);

// A number for people to read: four digits.
std::string RoundedText(double value);

}  // namespace calib

#endif  // CALIB_CHARTS_CHART_H_
