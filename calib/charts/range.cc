#include "calib/charts/range.h"

#include <algorithm>

namespace calib {
namespace {

constexpr size_t kLeastValues = 5;  // of fewer, none can be said to be off
constexpr double kFar = 5;

double Quantile(std::vector<double>* values, double share) {
  const size_t rank = static_cast<size_t>(share * static_cast<double>(values->size() - 1));
  const auto place = values->begin() + static_cast<std::ptrdiff_t>(rank);
  std::nth_element(values->begin(), place, values->end());
  return *place;
}

Range RangeOf(const std::vector<double>& values) {
  const auto ends = std::minmax_element(values.begin(), values.end());
  return {*ends.first, *ends.second};
}

}  // namespace

Range RangeToDraw(std::vector<double> values, double most_out) {
  const Range all = RangeOf(values);
  const size_t count = values.size();
  if (count < kLeastValues) return all;
  const double lower = Quantile(&values, 0.25), upper = Quantile(&values, 0.75);
  const double far = (upper - lower) * kFar;
  const auto is_out = [&](double value) { return value < lower - far || value > upper + far; };
  values.erase(std::remove_if(values.begin(), values.end(), is_out), values.end());
  const double out = static_cast<double>(count - values.size());
  if (out == 0 || out > std::max(1.0, most_out * static_cast<double>(count))) return all;
  const Range range = RangeOf(values);
  // Of equal values but one, that one is what there is to see.
  const bool helps = range.high > range.low && (all.high - all.low) > 2 * (range.high - range.low);
  return helps ? range : all;
}

}  // namespace calib
