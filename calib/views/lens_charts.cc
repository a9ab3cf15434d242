#include "calib/views/lens_charts.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "calib/fields/field_path.h"
#include "calib/geometry/pose_difference.h"
#include "calib/views/chart_points.h"

namespace calib {

using namespace zarvo::calibration_geometry;  // NOLINT: all of this is its arithmetic

namespace {

constexpr int kAcross = 17, kLeastSteps = 100, kHundredths = 100;  // of a degree
constexpr double kWidest = 85 * kDegree;  // a pinhole's image goes to infinity at 90 degrees
constexpr double kLongest = 1.2;          // of an arrow, in distances of the grid

// Where a pinhole of the same focal lengths has what the lens has at a pixel.
struct Moved {
  Pixel from, to;
  double length;
};

bool PinholePixel(const Camera& camera, const Pixel& pixel, Moved* moved) {
  const Direction direction = Unproject(camera, pixel);
  if (direction.status != Status::kOk || direction.ray.z <= std::cos(kWidest)) return false;
  Camera pinhole = camera;
  pinhole.lens = Lens::kPinhole;
  const Projected from = Project(pinhole, direction.ray);
  if (from.status != Status::kOk || !IsDrawable(from.pixel.u + from.pixel.v)) return false;
  *moved = {from.pixel, pixel, std::hypot(pixel.u - from.pixel.u, pixel.v - from.pixel.v)};
  return true;
}

// 1, 2, 5, 10, ...: the largest that makes the longest no longer than that.
double Enlargement(double longest, double at_most) {
  double factor = 1;
  for (const double power : {1.0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6}) {
    for (const double step : {1.0, 2.0, 5.0}) {
      if (longest * step * power <= at_most) factor = step * power;
    }
  }
  return factor;
}

Chart FieldChart(const Camera& camera, const std::string& model, const std::string& path) {
  Chart chart;
  chart.title = JoinPath(path, "lens") + ": displacement";
  chart.x_name = "u";
  chart.y_name = "v";
  chart.same_scale = chart.y_down = true;
  chart.area_width = camera.width;
  chart.area_height = camera.height;
  const double step = std::max(camera.width, camera.height) / static_cast<double>(kAcross);
  const double first_u = std::min(step, static_cast<double>(camera.width)) / 2;
  const double first_v = std::min(step, static_cast<double>(camera.height)) / 2;
  std::vector<Moved> field;
  size_t none = 0;
  double longest = 0;
  Pixel where{0, 0};
  for (int row = 0; first_v + row * step < camera.height; ++row) {
    for (int column = 0; first_u + column * step < camera.width; ++column) {
      Moved moved;
      if (!PinholePixel(camera, {first_u + column * step, first_v + row * step}, &moved)) {
        ++none;
        continue;
      }
      // Of those that only rounding tells apart, the first.
      if (field.empty() || moved.length > longest * (1 + 1e-9)) {
        longest = moved.length;
        where = moved.to;
      }
      field.push_back(moved);
    }
  }
  const double factor = Enlargement(longest, step);
  bool cut = false;
  for (const Moved& moved : field) {
    double share = factor;
    if (moved.length * share > kLongest * step) {
      share = kLongest * step / moved.length;
      cut = true;
    }
    ChartLine line;
    line.arrow = true;
    line.points = {{moved.to.u - (moved.to.u - moved.from.u) * share,
                    moved.to.v - (moved.to.v - moved.from.v) * share},
                   {moved.to.u, moved.to.v}};
    chart.lines.push_back(line);
  }
  chart.notes.push_back(
      "As " + model + ": arrows lead from where a pinhole would have a pixel to " +
      "where the lens has it" +
      (factor > 1 && !field.empty() ? ", " + RoundedText(factor) + " times as long" : "") +
      (cut ? "; long ones are cut" : ""));
  if (!field.empty()) {
    chart.notes.push_back("largest displacement on this grid " + RoundedText(longest) +
                          " pixels, at " + RoundedText(where.u) + ", " + RoundedText(where.v));
  }
  if (none > 0) {
    chart.notes.push_back(std::to_string(none) + " places without an arrow: no direction, or one " +
                          "beyond 85 degrees, lands there");
  }
  return chart;
}

// The distance from the principal point, in pixels, of what is seen at an angle; below 0 if nothing
// is.
double Radius(const Camera& camera, double angle) {
  const Projected at = Project(camera, {std::sin(angle), 0, std::cos(angle)});
  return at.status == Status::kOk ? at.pixel.u - camera.cx : -1;
}

// Up to which angle the lens is drawn: where its image reaches the corner, or its curve turns.
double AngleOfCorner(const Camera& camera, double largest, double corner) {
  double low = 0, high = largest;
  for (int i = 0; i < 60; ++i) {
    const double middle = (low + high) / 2, radius = Radius(camera, middle);
    (radius >= 0 && radius < corner ? low : high) = middle;
  }
  return low;
}

// In hundredths of a degree: steps of lenses that are compared are multiples of each other.
int StepUpTo(double angle) {
  int step = 1;
  for (const int wider : {2, 4, 20, 40, 80}) {
    if (angle / kDegree * kHundredths >= wider * kLeastSteps) step = wider;
  }
  return step;
}

Chart RadialChart(const Camera& camera, const std::string& model, const std::string& path) {
  Chart chart;
  chart.title = JoinPath(path, "lens") + ": radial curve";
  chart.x_name = "angle to the optical axis, in degrees";
  chart.y_name = "pixels from the principal point";
  Camera radial = camera;
  radial.skew = 0;
  if (camera.lens == Lens::kBrown) {
    for (const int tangential : {2, 3, 8, 9, 10, 11, 12, 13}) radial.distortion[tangential] = 0;
  }
  Camera pinhole = radial;
  pinhole.lens = Lens::kPinhole;
  const double corner =
      std::hypot(std::max(camera.cx, camera.width - camera.cx),
                 std::max(camera.cy, camera.height - camera.cy) * camera.fx / camera.fy);
  // Just below the angle at which nothing is projected any more.
  const double largest = std::min(LargestAngle(radial), kPi) * (1 - 1e-9);
  const double end = AngleOfCorner(radial, largest, corner);
  ChartSeries lens, straight;
  lens.name = model;
  straight.name = "pinhole";
  straight.color = 1;
  straight.second = true;
  lens.connected = straight.connected = lens.smooth = straight.smooth = true;
  lens.element = straight.element = "curve";
  const auto add = [&](double degrees) {
    const double angle = degrees * kDegree, radius = Radius(radial, angle);
    if (radius < 0 || !IsDrawable(radius)) return;
    const size_t index = lens.points.size();
    lens.points.push_back({degrees, radius, index});
    const double flat = angle < kWidest ? Radius(pinhole, angle) : -1;
    if (flat >= 0 && flat <= 1.5 * corner) straight.points.push_back({degrees, flat, index});
  };
  const int step = StepUpTo(end);
  for (int i = 0; i < end / kDegree * kHundredths; i += step) {
    add(static_cast<double>(i) / kHundredths);
  }
  add(end / kDegree);
  const double reached = lens.points.empty() ? 0 : lens.points.back().y;
  chart.marks.push_back({corner, "farthest corner of the image"});
  chart.notes.push_back(
      reached < corner * (1 - 1e-6)
          ? "not monotonic inside the image: the curve turns at " + RoundedText(largest / kDegree) +
                " degrees, " + RoundedText(reached) +
                " pixels from the principal point; the farthest corner is at " + RoundedText(corner)
          : "monotonic up to the farthest corner, " + RoundedText(corner) +
                " pixels from the principal point");
  chart.series = {std::move(lens), std::move(straight)};
  return chart;
}

}  // namespace

std::vector<Chart> LensCharts(const Camera& camera, const std::string& model,
                              const std::string& path) {
  return {FieldChart(camera, model, path), RadialChart(camera, model, path)};
}

}  // namespace calib
