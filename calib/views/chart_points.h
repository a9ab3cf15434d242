// Points of charts from fields that may not be set or hold what no axis can.
#ifndef CALIB_VIEWS_CHART_POINTS_H_
#define CALIB_VIEWS_CHART_POINTS_H_

#include <cstddef>
#include <string>

#include "calib/charts/chart.h"

namespace calib {

// Whether an axis can hold the number.
bool IsDrawable(double value);

// Adds points to a series one after another; those that cannot be drawn leave a gap.
class PointAdder {
 public:
  explicit PointAdder(ChartSeries* series) : series_(series) {}

  void Add(size_t index, bool set, double x, double y);
  size_t left_out() const { return left_out_; }

 private:
  ChartSeries* series_;
  size_t left_out_ = 0;
  bool gap_ = false;
};

// Notes how many there are of what is drawn, and how many of them are not.
void NoteCounts(size_t count, size_t left_out, const std::string& what, Chart* chart);

}  // namespace calib

#endif  // CALIB_VIEWS_CHART_POINTS_H_
