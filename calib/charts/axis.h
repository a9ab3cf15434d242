// One axis of a chart: which values it covers, where they lie, and its ticks.
#ifndef CALIB_CHARTS_AXIS_H_
#define CALIB_CHARTS_AXIS_H_

#include <vector>

namespace calib {

class Axis {
 public:
  // Grows to cover the value.
  void Cover(double value);
  // Leaves some room at the ends; an axis of a single value gets some around it.
  void Pad();

  double low() const { return low_; }
  double high() const { return high_; }
  double length() const { return high_ - low_; }
  bool Contains(double value) const { return value >= low_ && value <= high_; }
  double Nearest(double value) const;  // to the value, on the axis

  // Where a value lies if the axis is drawn from `start` to `end`.
  double Position(double value, double start, double end) const;

  // Round values on the axis, about as many as asked for, and no closer than `least_step`.
  std::vector<double> Ticks(int about, double least_step) const;

 private:
  bool empty_ = true;
  double low_ = 0, high_ = 1;
};

}  // namespace calib

#endif  // CALIB_CHARTS_AXIS_H_
