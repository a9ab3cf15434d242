#include "calib/charts/chart.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

#include "calib/charts/range.h"
#include "calib/console/number.h"

namespace calib {
namespace {

constexpr size_t kMostInLegend = 6;
// Points of a plane may be wild; of a curve a larger part belongs to its course.
constexpr double kMostOutOfPlane = 0.1, kMostOutOfCurve = 0.02;
constexpr double kNarrowest = 0.4;  // of two axes with one scale, the shorter to the longer
constexpr double kMarkReach = 2;    // a mark is covered up to so many lengths of the axis away

std::string Number(double value, bool is_float) {
  return is_float ? Shortest(static_cast<float>(value)) : Shortest(value);
}

void Cover(const std::vector<double>& values, bool full, double most_out, Axis* axis) {
  if (values.empty()) return;
  if (full) {
    for (const double value : values) axis->Cover(value);
    return;
  }
  const Range range = RangeToDraw(values, most_out);
  axis->Cover(range.low);
  axis->Cover(range.high);
}

// Values that are not points, such as the corners of the area, are part of the range in any case.
void CoverFixed(const Chart& chart, ChartAxes* axes) {
  const auto cover = [&](double x, double y) {
    axes->x.Cover(x);
    axes->y.Cover(y);
  };
  if (HasArea(chart)) {
    cover(0, 0);
    cover(chart.area_width, chart.area_height);
  }
  for (const ChartLine& line : chart.lines) {
    for (const ChartPoint& point : line.points) cover(point.x, point.y);
  }
  for (const ChartCell& cell : chart.cells) {
    cover(cell.x1, cell.y1);
    cover(cell.x2, cell.y2);
  }
  for (const ChartLabel& label : chart.labels) cover(label.x, label.y);
}

// What is long and narrow leaves no room for labels.
void Widen(double other, Axis* axis) {
  const double missing = other * kNarrowest - axis->length();
  if (missing <= 0) return;
  axis->Cover(axis->low() - missing / 2);
  axis->Cover(axis->high() + missing / 2);
}

ChartAxes SharedAxes(const std::vector<const Chart*>& charts) {
  ChartAxes axes;
  std::vector<double> x, y;
  bool full = false, curve = false;
  for (const Chart* chart : charts) {
    full = full || chart->full_range;
    for (const ChartSeries& series : chart->series) {
      curve = curve || series.connected;
      for (const ChartPoint& point : series.points) {
        x.push_back(point.x);
        y.push_back(point.y);
      }
    }
  }
  const double most_out = curve ? kMostOutOfCurve : kMostOutOfPlane;
  Cover(x, full || curve, most_out, &axes.x);
  Cover(y, full, most_out, &axes.y);
  const bool has_points = !y.empty();
  for (const Chart* chart : charts) CoverFixed(*chart, &axes);
  const double reach = has_points ? std::max(axes.y.length(), std::abs(axes.y.high())) : 0;
  const double low = axes.y.low() - kMarkReach * reach, high = axes.y.high() + kMarkReach * reach;
  for (const Chart* chart : charts) {
    for (const ChartMark& mark : chart->marks) {
      if (full || !has_points || (mark.y >= low && mark.y <= high)) axes.y.Cover(mark.y);
    }
  }
  if (charts[0]->same_scale && !HasArea(*charts[0])) {
    Widen(axes.y.length(), &axes.x);
    Widen(axes.x.length(), &axes.y);
  }
  axes.x.Pad();
  axes.y.Pad();
  return axes;
}

// "y from -3 to 1e+09", of the points that are beyond an axis.
std::string Extent(const std::string& name, double low, double high, bool is_float) {
  if (low == high) return name + " " + Number(low, is_float);
  return name + " from " + Number(low, is_float) + " to " + Number(high, is_float);
}

}  // namespace

bool HasArea(const Chart& chart) { return chart.area_width > 0 && chart.area_height > 0; }

size_t CountPoints(const Chart& chart) {
  size_t count = 0;
  for (const ChartSeries& series : chart.series) count += series.points.size();
  return count;
}

std::string PointText(const Chart& chart, const ChartSeries& series, const ChartPoint& point) {
  return (series.name.empty() ? "" : series.name + ", ") + series.element + "[" +
         std::to_string(point.index) + "]: " + chart.x_name + " " + Number(point.x, chart.floats) +
         ", " + chart.y_name + " " + Number(point.y, chart.floats);
}

bool ChartAxes::Hold(const ChartPoint& point) const {
  return x.Contains(point.x) && y.Contains(point.y);
}

std::vector<ChartAxes> AxesOf(const std::vector<Chart>& charts) {
  std::map<std::string, std::vector<const Chart*>> groups;
  for (const Chart& chart : charts) groups[chart.group].push_back(&chart);
  std::map<std::string, ChartAxes> shared;
  for (const auto& group : groups) {
    if (!group.first.empty()) shared[group.first] = SharedAxes(group.second);
  }
  std::vector<ChartAxes> axes;
  axes.reserve(charts.size());
  for (const Chart& chart : charts) {
    axes.push_back(chart.group.empty() ? SharedAxes({&chart}) : shared[chart.group]);
  }
  return axes;
}

std::vector<std::string> NotesOf(const Chart& chart, const ChartAxes& axes) {
  std::vector<std::string> notes = chart.notes;
  Axis x, y;
  size_t count = 0;
  for (const ChartSeries& series : chart.series) {
    for (const ChartPoint& point : series.points) {
      if (axes.Hold(point)) continue;
      ++count;
      x.Cover(point.x);
      y.Cover(point.y);
    }
  }
  if (count > 0) {
    notes.push_back(
        std::to_string(count) + (count == 1 ? " lies" : " lie") +
        " far off, shown at the edge: " + Extent(chart.x_name, x.low(), x.high(), chart.floats) +
        ", " + Extent(chart.y_name, y.low(), y.high(), chart.floats) +
        "; --full-range draws them to scale");
  }
  const double shape = axes.x.length() / axes.y.length();
  if (chart.same_scale && std::max(shape, 1 / shape) > kLongestAxis) {
    notes.push_back("not to scale: drawn less narrow than it is");
  }
  for (const ChartMark& mark : chart.marks) {
    if (!axes.y.Contains(mark.y)) notes.push_back(mark.label + " lies outside of the drawing");
  }
  return notes;
}

std::vector<const ChartSeries*> LegendOf(const Chart& chart) {
  std::vector<const ChartSeries*> named;
  for (const ChartSeries& series : chart.series) {
    if (!series.name.empty()) named.push_back(&series);
  }
  if (named.size() > kMostInLegend) named.clear();
  return named;
}

std::vector<std::string> TickTexts(const std::vector<double>& ticks) {
  std::vector<std::string> texts;
  for (int digits = 7; digits <= 15; ++digits) {
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

std::string RoundedText(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.4g", value);
  return text;
}

}  // namespace calib
