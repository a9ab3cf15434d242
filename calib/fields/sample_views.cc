#include "calib/fields/sample_views.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace calib {

namespace geometry = zarvo::calibration_geometry;

std::optional<geometry::TargetPoint> TargetPointOf(
    const zarvo::calibration::CameraIntrinsicsSamplePoints& sample) {
  const bool whole =
      sample.has_img_x() && sample.has_img_y() && sample.has_tgt_x() && sample.has_tgt_y();
  const double sum = 0.0 + sample.img_x() + sample.img_y() + sample.tgt_x() + sample.tgt_y();
  if (!whole || !std::isfinite(sum)) return std::nullopt;
  return geometry::TargetPoint{sample.tgt_x(), sample.tgt_y(), {sample.img_x(), sample.img_y()}};
}

std::vector<SampleView> SampleViewsOf(const zarvo::calibration::CameraIntrinsics& intrinsics,
                                      int count) {
  std::vector<SampleView> views;
  const int samples = intrinsics.sample_points_size();
  std::set<std::pair<double, double>> seen;
  for (int i = 0; i < samples; ++i) {
    const geometry::TargetPoint point = *TargetPointOf(intrinsics.sample_points(i));
    const bool anew = !seen.insert({point.x, point.y}).second;
    if (i == 0 || (count > 0 ? i % (samples / count) == 0 : anew)) {
      views.push_back({i, {}});
      seen = {{point.x, point.y}};
    }
    views.back().points.push_back(point);
  }
  return views;
}

bool ErrorsDisagree(double error_per_point, double rms) {
  return !(std::abs(error_per_point - rms) <= std::max(error_per_point, rms) / 3);
}

}  // namespace calib
