#include "calib/views/chart_points.h"

#include <cmath>

namespace calib {

bool IsDrawable(double value) { return std::abs(value) < 1e300; }

void PointAdder::Add(size_t index, bool set, double x, double y) {
  if (!set || !IsDrawable(x) || !IsDrawable(y)) {
    ++left_out_;
    gap_ = true;
    return;
  }
  series_->points.push_back({x, y, index, gap_ && !series_->points.empty()});
  gap_ = false;
}

void NoteCounts(size_t count, size_t left_out, const std::string& what, Chart* chart) {
  chart->notes.push_back(std::to_string(count) + " " + what + (count == 1 ? "" : "s"));
  if (left_out == 0) return;
  chart->notes.push_back(std::to_string(left_out) +
                         " of them not drawn: a value is not set, not finite, or too large");
}

}  // namespace calib
