#include "calib/charts/axis.h"

#include <algorithm>
#include <cmath>

namespace calib {

namespace {

constexpr double kShortest = 1e-290;

}  // namespace

void Axis::Cover(double value) {
  low_ = empty_ ? value : std::min(low_, value);
  high_ = empty_ ? value : std::max(high_, value);
  empty_ = false;
}

void Axis::Pad() {
  // Values that differ by rounding only count as a single one.
  const double largest = std::max(std::abs(low_), std::abs(high_));
  const bool single = length() <= largest * 1e-12;
  const double room = !single ? length() * 0.04 : largest > 0 ? largest * 0.1 : 1;
  // Steps of a shorter axis would underflow.
  const double at_least = length() + 2 * room < kShortest ? kShortest : room;
  low_ -= at_least;
  high_ += at_least;
}

double Axis::Nearest(double value) const { return std::min(std::max(value, low_), high_); }

double Axis::Position(double value, double start, double end) const {
  return start + (value - low_) / length() * (end - start);
}

std::vector<double> Axis::Ticks(int about, double least_step) const {
  const double rough = std::max(length() / about, least_step);
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  const double factor = rough / power;
  const double step = power * (factor < 1.5 ? 1 : factor < 3.5 ? 2 : factor < 7.5 ? 5 : 10);
  std::vector<double> ticks;
  // Counted, since a step may vanish next to the values it is added to.
  const double first = std::ceil(low_ / step);
  for (int i = 0; i <= 2 * about; ++i) {
    const double tick = (first + i) * step;
    if (tick > high_) break;
    ticks.push_back(tick == 0 ? 0 : tick);
  }
  return ticks;
}

}  // namespace calib
