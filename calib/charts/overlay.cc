#include "calib/charts/overlay.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "calib/geometry/pose_difference.h"

namespace calib {

using zarvo::calibration_geometry::AngleBetween;
using zarvo::calibration_geometry::DistanceBetween;
using zarvo::calibration_geometry::kDegree;
using zarvo::calibration_geometry::Transform;

namespace {

struct Names {
  const std::string& after;
  const std::string& before;
};

const Chart* FindChart(const std::vector<Chart>& charts, const std::string& title) {
  const auto is = [&](const Chart& chart) { return chart.title == title; };
  const auto found = std::find_if(charts.begin(), charts.end(), is);
  return found == charts.end() ? nullptr : &*found;
}

// All points of a chart as one series, but for what it compares its own with.
ChartSeries Joined(const Chart& chart, const std::string& name, bool second) {
  ChartSeries joined;
  joined.name = name;
  joined.color = second ? 1 : 0;
  joined.second = second;
  for (const ChartSeries& series : chart.series) {
    if (series.second) continue;
    joined.element = series.element;
    joined.connected = series.connected;
    joined.smooth = series.smooth;
    const size_t begin = joined.points.size();
    joined.points.insert(joined.points.end(), series.points.begin(), series.points.end());
    if (begin > 0 && begin < joined.points.size()) joined.points[begin].after_gap = true;
  }
  return joined;
}

bool IsCurve(const Chart& chart) { return !chart.series.empty() && chart.series[0].connected; }

std::string VerdictWord(Verdict verdict) {
  return verdict == Verdict::kPassed ? "ok" : verdict == Verdict::kFailed ? "failed" : "no verdict";
}

void JoinNotes(const Chart& before, const Names& names, Chart* chart) {
  if (chart->verdict != before.verdict) {
    chart->notes.push_back("in " + names.before + ": " + VerdictWord(before.verdict));
  }
  for (const std::string& note : before.notes) {
    const bool same =
        std::find(chart->notes.begin(), chart->notes.end(), note) != chart->notes.end();
    if (!same) chart->notes.push_back("in " + names.before + ": " + note);
  }
}

void JoinMarks(const Chart& before, const Names& names, Chart* chart) {
  if (chart->size == ChartSize::kSmall) return;  // which has no room for both labels
  for (const ChartMark& mark : before.marks) {
    const auto same = [&](const ChartMark& other) {
      return other.y == mark.y && other.label == mark.label;
    };
    if (std::none_of(chart->marks.begin(), chart->marks.end(), same)) {
      chart->marks.push_back({mark.y, mark.label + " in " + names.before});
    }
  }
}

void JoinLines(const Chart& before, const Names& names, Chart* chart) {
  if (!before.lines.empty() && chart->series.empty()) {
    chart->notes.push_back("dashed and in another color: " + names.before);
  }
  for (ChartLine& line : chart->lines) line.color = 0;
  for (ChartLine line : before.lines) {
    line.color = 1;
    line.dashed = true;
    chart->lines.push_back(std::move(line));
  }
  for (const ChartLabel& label : before.labels) {
    const auto same = [&](const ChartLabel& other) { return other.text == label.text; };
    if (std::none_of(chart->labels.begin(), chart->labels.end(), same)) {
      chart->labels.push_back(label);
    }
  }
}

Chart Both(const Chart& after, const Chart& before, const Names& names) {
  Chart chart = after;
  chart.series.clear();
  if (!after.series.empty() || !before.series.empty()) {
    chart.series.push_back(Joined(after, names.after, false));
    chart.series.push_back(Joined(before, names.before, true));
    if (chart.size == ChartSize::kSmall) {
      for (ChartSeries& series : chart.series) series.name.clear();  // the heading tells
    }
  }
  JoinNotes(before, names, &chart);
  JoinMarks(before, names, &chart);
  JoinLines(before, names, &chart);
  chart.area_width = std::max(after.area_width, before.area_width);
  chart.area_height = std::max(after.area_height, before.area_height);
  return chart;
}

// Both are in the order of x.
ChartSeries CurveDifference(const ChartSeries& after, const ChartSeries& before) {
  ChartSeries difference;
  difference.element = after.element;
  difference.connected = true;
  difference.smooth = after.smooth;
  bool gap = false;
  size_t i = 0, j = 0;
  while (i < after.points.size() && j < before.points.size()) {
    const ChartPoint &now = after.points[i], &then = before.points[j];
    if (now.x != then.x) {
      now.x < then.x ? ++i : ++j;
      gap = true;
      continue;
    }
    const bool first = difference.points.empty();
    gap = gap || now.after_gap || then.after_gap;
    difference.points.push_back({now.x, now.y - then.y, now.index, gap && !first});
    gap = false;
    ++i;
    ++j;
  }
  return difference;
}

ChartSeries PointDifference(const ChartSeries& after, const ChartSeries& before) {
  ChartSeries difference;
  difference.element = after.element;
  size_t j = 0;
  for (const ChartPoint& now : after.points) {
    while (j < before.points.size() && before.points[j].index < now.index) ++j;
    if (j == before.points.size()) break;
    const ChartPoint& then = before.points[j];
    if (then.index != now.index) continue;
    difference.points.push_back({now.x - then.x, now.y - then.y, now.index});
  }
  return difference;
}

void NoteLargest(const ChartSeries& series, bool curve, Chart* chart) {
  if (series.points.empty()) {
    chart->notes.push_back("nothing that both have");
    return;
  }
  const auto size = [&](const ChartPoint& point) {
    return curve ? std::abs(point.y) : std::hypot(point.x, point.y);
  };
  const auto largest =
      std::max_element(series.points.begin(), series.points.end(),
                       [&](const ChartPoint& a, const ChartPoint& b) { return size(a) < size(b); });
  chart->notes.push_back(
      size(*largest) == 0
          ? "no difference"
          : "largest " + RoundedText(curve ? largest->y : size(*largest)) + " at " +
                (series.smooth ? RoundedText(largest->x)
                               : series.element + "[" + std::to_string(largest->index) + "]"));
}

Chart Difference(const Chart& after, const Chart& before) {
  const bool curve = IsCurve(after) || IsCurve(before);
  const ChartSeries now = Joined(after, "", false), then = Joined(before, "", true);
  Chart chart;
  chart.title = after.title + ": difference";
  chart.x_name = curve ? after.x_name : "difference of " + after.x_name;
  chart.y_name = curve ? "difference" : "difference of " + after.y_name;
  chart.size = curve ? after.size : ChartSize::kHalf;
  chart.x_counts = after.x_counts;
  chart.full_range = after.full_range;
  chart.same_scale = chart.y_down = !curve;
  if (!after.group.empty()) chart.group = after.group + " difference";
  chart.series.push_back(curve ? CurveDifference(now, then) : PointDifference(now, then));
  NoteLargest(chart.series[0], curve, &chart);
  return chart;
}

double DegreesBetween(const Transform& a, const Transform& b) {
  return AngleBetween(a, b) / kDegree;
}

Chart PoseDifference(const ChartPoses& after, const ChartPoses& before, const std::string& what,
                     const std::string& y_name,
                     double (*between)(const Transform& a, const Transform& b)) {
  Chart chart;
  chart.title = after.whole + ": " + what;
  chart.x_name = after.element;
  chart.y_name = y_name;
  chart.x_counts = true;
  chart.size = ChartSize::kHalf;
  chart.series.emplace_back();
  chart.series[0].element = after.element;
  for (const ChartPose& now : after.poses) {
    for (const ChartPose& then : before.poses) {
      if (then.index != now.index) continue;
      chart.series[0].points.push_back(
          {static_cast<double>(now.index), between(then.from_thing, now.from_thing), now.index});
    }
  }
  NoteLargest(chart.series[0], true, &chart);
  return chart;
}

// What has room in a row of its own with all its differences below.
size_t Columns(const Chart& chart) {
  return chart.size == ChartSize::kWide ? 1 : chart.size == ChartSize::kHalf ? 2 : 4;
}

}  // namespace

std::vector<Chart> Overlay(const std::vector<Chart>& after, const std::string& after_name,
                           const std::vector<Chart>& before, const std::string& before_name) {
  const Names names{after_name, before_name};
  std::vector<Chart> charts, differences;
  const auto end_row = [&] {
    for (Chart& chart : differences) charts.push_back(std::move(chart));
    differences.clear();
  };
  for (const Chart& chart : after) {
    if (!differences.empty() && (differences.size() == Columns(chart) ||
                                 differences[0].size != chart.size || !chart.heading.empty())) {
      end_row();
    }
    const Chart* other = FindChart(before, chart.title);
    if (other == nullptr) {
      end_row();
      charts.push_back(chart);
      charts.back().notes.push_back("only in " + after_name);
      continue;
    }
    const bool unlike = chart.x_name != other->x_name || chart.y_name != other->y_name;
    if (!chart.cells.empty() || unlike) {
      end_row();
      for (const Chart* one : {&chart, other}) {
        charts.push_back(*one);
        charts.back().size = ChartSize::kHalf;
        charts.back().title = one == other ? before_name : after_name;
        charts.back().heading = one == other ? "" : chart.title;
      }
      continue;
    }
    charts.push_back(Both(chart, *other, names));
    if (!chart.heading.empty()) {
      charts.back().heading = after_name + ": " + chart.heading;
      if (!other->heading.empty()) {
        charts.back().heading += "; dashed, " + before_name + ": " + other->heading;
      }
    }
    if (CountPoints(chart) + CountPoints(*other) > 0)
      differences.push_back(Difference(chart, *other));
    if (chart.poses.poses.empty() || other->poses.poses.empty()) continue;
    end_row();
    charts.push_back(
        PoseDifference(chart.poses, other->poses, "moved", "distance", DistanceBetween));
    charts.push_back(
        PoseDifference(chart.poses, other->poses, "turned", "degrees", DegreesBetween));
  }
  end_row();
  for (const Chart& chart : before) {
    if (FindChart(after, chart.title) != nullptr) continue;
    charts.push_back(chart);
    charts.back().notes.push_back("only in " + before_name);
  }
  return charts;
}

}  // namespace calib
