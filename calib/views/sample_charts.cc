#include "calib/views/sample_charts.h"

#include <algorithm>
#include <cmath>

#include "calib/console/failure.h"
#include "calib/fields/field_path.h"
#include "calib/images/calibration_image.h"
#include "calib/views/chart_points.h"
#include "calib/views/coverage.h"

namespace calib {

using zarvo::calibration::CalibrationImage;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::CameraIntrinsicsSamplePoints;

namespace {

constexpr size_t kMostViews = 60;   // that colors tell apart
constexpr double kFaintest = 0.15;  // of a cell that is hit

bool HasImageArea(const CameraIntrinsics& intrinsics) {
  return intrinsics.width() > 0 && intrinsics.height() > 0;
}

void SetImageAxes(const CameraIntrinsics& intrinsics, Chart* chart) {
  chart->x_name = "img_x";
  chart->y_name = "img_y";
  chart->same_scale = chart->y_down = true;
  if (!HasImageArea(intrinsics)) return;
  chart->area_width = intrinsics.width();
  chart->area_height = intrinsics.height();
}

// The principal point of an image, as a cross; a note, if that would be far outside.
void AddPrincipalPoint(const CameraIntrinsics& intrinsics, Chart* chart) {
  const double x = intrinsics.cx(), y = intrinsics.cy();
  if (!(std::abs(x) <= 2.0 * intrinsics.width() && std::abs(y) <= 2.0 * intrinsics.height())) {
    chart->notes.push_back("cx, cy is not drawn: it is at " + RoundedText(x) + ", " +
                           RoundedText(y));
    return;
  }
  const double arm = 0.02 * std::max(intrinsics.width(), intrinsics.height());
  const double across = std::min(arm, 0.1 * intrinsics.width());
  const double down = std::min(arm, 0.1 * intrinsics.height());
  ChartLine cross{{{x - across, y}, {x + across, y}, {x, y - down, 0, true}, {x, y + down}}, 1};
  cross.over = true;
  chart->lines.push_back(cross);
  chart->labels.push_back({x, y, "cx, cy", 1});
}

Chart PointsChart(const CameraIntrinsics& intrinsics, const std::string& path) {
  Chart chart;
  chart.title = JoinPath(path, "sample_points");
  chart.floats = true;
  SetImageAxes(intrinsics, &chart);
  std::vector<int> views = ViewsOf(intrinsics);
  const size_t view_count = views.size();
  if (view_count > kMostViews) views = {0};
  size_t left_out = 0;
  for (size_t view = 0; view < views.size(); ++view) {
    ChartSeries series;
    if (views.size() > 1) series.name = "view " + std::to_string(view);
    series.element = "sample_points";
    series.color = static_cast<int>(view);
    PointAdder adder(&series);
    const int end = view + 1 < views.size() ? views[view + 1] : intrinsics.sample_points_size();
    for (int i = views[view]; i < end; ++i) {
      const CameraIntrinsicsSamplePoints& sample = intrinsics.sample_points(i);
      adder.Add(static_cast<size_t>(i), sample.has_img_x() && sample.has_img_y(), sample.img_x(),
                sample.img_y());
    }
    left_out += adder.left_out();
    chart.series.push_back(std::move(series));
  }
  NoteCounts(static_cast<size_t>(intrinsics.sample_points_size()), left_out, "sample_point",
             &chart);
  if (view_count > 1) {
    chart.notes[0] += " in " + std::to_string(view_count) + " views, by their order";
  }
  if (HasImageArea(intrinsics)) {
    const size_t outside = CoverageOf(intrinsics).outside;
    chart.notes.push_back(
        "width " + std::to_string(intrinsics.width()) + ", height " +
        std::to_string(intrinsics.height()) +
        (outside == 0 ? "" : "; " + std::to_string(outside) + " outside of the image"));
    AddPrincipalPoint(intrinsics, &chart);
  } else {
    chart.notes.push_back("width and height are not set: the image area is not known");
  }
  return chart;
}

// An image of another size than the intrinsics' is taken to be the same one binned.
void AddImage(const CalibrationImage& image, Chart* chart) {
  try {
    chart->area_picture = ImageUrl(image, "intrinsics_image");
  } catch (const Failure& failure) {
    chart->notes.push_back(std::string("the image is not shown: ") + failure.what());
  }
}

Chart CoverageChart(const CameraIntrinsics& intrinsics, const std::string& path) {
  const Coverage coverage = CoverageOf(intrinsics);
  Chart chart;
  chart.title = JoinPath(path, "sample_points") + ": coverage";
  chart.notes.push_back(coverage.Text());
  SetImageAxes(intrinsics, &chart);
  const double most = static_cast<double>(
      std::max<size_t>(*std::max_element(coverage.hits.begin(), coverage.hits.end()), 1));
  const double width = chart.area_width / coverage.across,
               height = chart.area_height / coverage.down;
  for (int row = 0; row < coverage.down; ++row) {
    for (int column = 0; column < coverage.across; ++column) {
      const size_t hits = coverage.At(column, row);
      // By the root, so that few points differ from none where others are many.
      const double share =
          hits == 0 ? 0 : kFaintest + (1 - kFaintest) * std::sqrt(static_cast<double>(hits) / most);
      chart.cells.push_back({column * width, row * height, (column + 1) * width, (row + 1) * height,
                             share, std::to_string(hits)});
    }
  }
  return chart;
}

}  // namespace

std::vector<Chart> SampleCharts(const CameraIntrinsics& intrinsics, const std::string& path,
                                const CalibrationImage* image) {
  std::vector<Chart> charts;
  if (intrinsics.sample_points_size() == 0) return charts;
  charts.push_back(PointsChart(intrinsics, path));
  if (image != nullptr && HasImageArea(intrinsics)) AddImage(*image, &charts[0]);
  if (HasImageArea(intrinsics)) charts.push_back(CoverageChart(intrinsics, path));
  return charts;
}

}  // namespace calib
