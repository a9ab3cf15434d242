#include "calib/views/curve_charts.h"

#include <algorithm>
#include <utility>

#include "calib/console/number.h"
#include "calib/fields/field_path.h"
#include "calib/views/chart_points.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Reflection;
using namespace zarvo::calibration;  // NOLINT: the types that are drawn

namespace {

constexpr size_t kMostHalf = 6;
constexpr size_t kMostFailedNamed = 12;

ChartSize SizeOf(size_t count) {
  return count == 1 ? ChartSize::kWide : count <= kMostHalf ? ChartSize::kHalf : ChartSize::kSmall;
}

// The chart of a list of numbers over their index.
Chart ListChart(const google::protobuf::RepeatedField<float>& list, const std::string& path,
                const std::string& field, size_t siblings) {
  Chart chart;
  chart.size = SizeOf(siblings);
  const bool small = chart.size == ChartSize::kSmall;
  chart.title = small ? path : JoinPath(path, field);
  chart.x_name = "index in " + field;
  chart.y_name = field;
  chart.x_counts = chart.floats = true;
  chart.group = siblings > 1 ? field : "";
  ChartSeries series;
  series.element = field;
  series.connected = true;
  PointAdder adder(&series);
  for (int i = 0; i < list.size(); ++i) {
    adder.Add(static_cast<size_t>(i), true, i, list.Get(i));
  }
  NoteCounts(static_cast<size_t>(list.size()), adder.left_out(), "value", &chart);
  if (small && adder.left_out() > 0)
    chart.notes[1] = std::to_string(adder.left_out()) + " not drawn";
  chart.series.push_back(std::move(series));
  return chart;
}

void AddMark(const std::string& name, bool set, float value, Chart* chart) {
  if (set && IsDrawable(value)) chart->marks.push_back({value, name + " " + Shortest(value)});
}

Chart TransferFunctionChart(const Part& part, size_t siblings) {
  const auto& item = static_cast<const FocusInfoItem&>(*part.message);
  Chart chart = ListChart(item.transfer_function(), part.path, "transfer_function", siblings);
  if (item.has_target_id()) chart.notes[0] += ", target_id " + std::to_string(item.target_id());
  if (item.has_cutoff_cycles_per_pix() && chart.size != ChartSize::kSmall) {
    chart.notes.push_back("cutoff_cycles_per_pix " + Shortest(item.cutoff_cycles_per_pix()));
  }
  AddMark(chart.size == ChartSize::kSmall ? "cutoff" : "cutoff_threshold",
          item.has_cutoff_threshold(), item.cutoff_threshold(), &chart);
  return chart;
}

Chart FocusCheckChart(const Part& part, size_t siblings) {
  const auto& check = static_cast<const FocusCheckProto&>(*part.message);
  Chart chart = ListChart(check.bins(), part.path, "bins", siblings);
  const bool small = chart.size == ChartSize::kSmall;
  if (check.has_name()) {
    const std::string name = "name \"" + check.name() + "\"";
    chart.notes[0] = small ? name : chart.notes[0] + ", " + name;
  }
  if (check.has_ok()) chart.verdict = check.ok() ? Verdict::kPassed : Verdict::kFailed;
  if (check.has_cutoff()) chart.notes.push_back("cutoff " + Shortest(check.cutoff()));
  AddMark(small ? "at cutoff:" : "value_at_cutoff", check.has_value_at_cutoff(),
          check.value_at_cutoff(), &chart);
  return chart;
}

// What small charts have no room for.
std::string AxesText(const Chart& chart) {
  return chart.size == ChartSize::kSmall
             ? "across: " + chart.x_name + ", up: " + chart.y_name + ", all to one scale"
             : "";
}

template <Chart (*draw)(const Part&, size_t)>
std::vector<Chart> ChartsOfEach(const std::vector<Part>& parts) {
  std::vector<Chart> charts;
  charts.reserve(parts.size());
  for (const Part& part : parts) charts.push_back(draw(part, parts.size()));
  return charts;
}

// The chart of one field of the samples over their zoom, or over their index if no sample has a
// zoom.
Chart ZoomChart(const PTZIntrinsics& intrinsics, const std::string& path, bool by_zoom,
                const FieldDescriptor* field) {
  Chart chart;
  chart.title = field->name();
  chart.x_name = by_zoom ? "zoom" : "index in samples";
  chart.y_name = field->name();
  chart.size = ChartSize::kHalf;
  chart.x_counts = !by_zoom;
  std::vector<std::pair<double, int>> order;
  for (int i = 0; i < intrinsics.samples_size(); ++i) {
    const double zoom = intrinsics.samples(i).zoom();
    if (!by_zoom) order.emplace_back(i, i);
    if (by_zoom && intrinsics.samples(i).has_zoom() && IsDrawable(zoom))
      order.emplace_back(zoom, i);
  }
  std::stable_sort(order.begin(), order.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  ChartSeries series;
  series.element = "samples";
  series.connected = true;
  PointAdder adder(&series);
  for (const auto& place : order) {
    const PTZIntrinsicsItem& sample = intrinsics.samples(place.second);
    const Reflection* reflection = sample.GetReflection();
    adder.Add(static_cast<size_t>(place.second), reflection->HasField(sample, field), place.first,
              reflection->GetDouble(sample, field));
  }
  const size_t count = static_cast<size_t>(intrinsics.samples_size());
  NoteCounts(count, count - series.points.size(), JoinPath(path, "sample"), &chart);
  chart.series.push_back(std::move(series));
  return chart;
}

}  // namespace

std::vector<Chart> TransferFunctionCharts(const std::vector<Part>& items) {
  std::vector<Chart> charts = ChartsOfEach<TransferFunctionChart>(items);
  if (charts.size() > 1) {
    charts[0].heading = std::to_string(charts.size()) + " transfer functions";
    charts[0].heading_note = AxesText(charts[0]);
  }
  return charts;
}

std::vector<Chart> FocusCheckCharts(const std::vector<Part>& checks) {
  std::vector<Chart> charts = ChartsOfEach<FocusCheckChart>(checks);
  if (charts.size() < 2) return charts;
  size_t passed = 0, count = 0;
  std::string failed;
  for (size_t i = 0; i < charts.size(); ++i) {
    if (charts[i].verdict == Verdict::kPassed) ++passed;
    if (charts[i].verdict != Verdict::kFailed) continue;
    if (++count <= kMostFailedNamed) failed += (count == 1 ? "; failed: " : ", ") + checks[i].path;
  }
  if (count > kMostFailedNamed) failed += ", ... " + std::to_string(count) + " in all";
  charts[0].heading =
      std::to_string(passed) + " of " + std::to_string(charts.size()) + " focus checks ok" + failed;
  charts[0].heading_note = AxesText(charts[0]);
  return charts;
}

std::vector<Chart> ZoomCharts(const PTZIntrinsics& intrinsics, const std::string& path) {
  std::vector<Chart> charts;
  const auto& samples = intrinsics.samples();
  const bool by_zoom = std::any_of(samples.begin(), samples.end(),
                                   [](const PTZIntrinsicsItem& item) { return item.has_zoom(); });
  const Descriptor* type = PTZIntrinsicsItem::descriptor();
  for (int i = 0; i < type->field_count(); ++i) {
    const FieldDescriptor* field = type->field(i);
    if (field->number() == PTZIntrinsicsItem::kZoomFieldNumber ||
        field->cpp_type() != FieldDescriptor::CPPTYPE_DOUBLE || field->is_repeated()) {
      continue;
    }
    Chart chart = ZoomChart(intrinsics, path, by_zoom, field);
    if (CountPoints(chart) > 0) charts.push_back(std::move(chart));
  }
  return charts;
}

}  // namespace calib
