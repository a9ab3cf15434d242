#include "calib/views/drift_charts.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "calib/views/chart_points.h"

namespace calib {
namespace {

std::vector<std::string> QuantitiesOf(const std::vector<DriftRow>& rows) {
  std::vector<std::string> quantities;
  for (const DriftRow& row : rows) {
    if (std::find(quantities.begin(), quantities.end(), row.quantity) == quantities.end()) {
      quantities.push_back(row.quantity);
    }
  }
  return quantities;
}

bool Changes(const std::vector<DriftRow>& rows, const std::string& quantity) {
  return std::any_of(rows.begin(), rows.end(), [&](const DriftRow& row) {
    return row.quantity == quantity && row.since_first.value_or(0) != 0;
  });
}

std::string NameOf(const std::string& quantity) {
  if (quantity == "rotation") return "degrees";
  if (quantity == "position") return "distance";
  return quantity == "pixels" ? quantity : "change of " + quantity;
}

// REQUIRES: there are rows of the quantity.
Chart ChartOf(const std::vector<DriftRow>& rows, const std::string& quantity) {
  Chart chart;
  chart.title = quantity;
  chart.x_name = "record";
  chart.y_name = NameOf(quantity);
  chart.x_counts = true;
  chart.size = ChartSize::kHalf;
  bool gap = false;
  for (const DriftRow& row : rows) {
    if (row.quantity != quantity) continue;
    const bool first = chart.series.empty() || chart.series.back().name != row.camera;
    if (first) {
      ChartSeries series;
      series.name = row.camera;
      series.element = "records";
      series.connected = true;
      series.color = static_cast<int>(chart.series.size());
      chart.series.push_back(std::move(series));
    }
    const std::optional<double> change = first ? 0 : row.since_first;
    gap = (gap && !first) || !change || !IsDrawable(*change);
    if (!change || !IsDrawable(*change)) continue;
    chart.series.back().points.push_back({static_cast<double>(row.order), *change, row.order, gap});
    gap = false;
  }
  if (LegendOf(chart).empty() && chart.series.size() > 1) {
    chart.notes.push_back(std::to_string(chart.series.size()) +
                          " cameras: a point tells which when pointed at; --camera draws one");
  }
  return chart;
}

}  // namespace

std::vector<Chart> DriftCharts(const std::vector<DriftRow>& rows) {
  std::vector<Chart> charts;
  std::string unchanged;
  for (const std::string& quantity : QuantitiesOf(rows)) {
    if (Changes(rows, quantity)) {
      charts.push_back(ChartOf(rows, quantity));
    } else {
      unchanged += (unchanged.empty() ? "No change of " : ", ") + quantity;
    }
  }
  if (charts.empty()) return charts;
  charts.front().heading = "Changes since the first record";
  charts.front().heading_note = unchanged;
  return charts;
}

}  // namespace calib
