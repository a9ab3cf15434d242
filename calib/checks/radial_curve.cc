// With s for the square of `in`, the slope of in * N(s) / D(s) has the sign of
// (N + 2 s N') D - 2 s N D', whose first root is looked for; a root of D before it, where the curve
// goes beyond all bounds, ends the search.
#include "calib/checks/radial_curve.h"

#include <cmath>

#include "calib/geometry/polynomial.h"

namespace calib {

namespace geometry = zarvo::calibration_geometry;
using geometry::Polynomial;

namespace {

Polynomial WithLeadingOne(const std::vector<double>& coefficients) {
  Polynomial result = {1};
  result.insert(result.end(), coefficients.begin(), coefficients.end());
  return result;
}

// (N + 2 s N') D - 2 s N D'
Polynomial Slope(const Polynomial& n, const Polynomial& d) {
  Polynomial rise = n, fall = d;  // N + 2 s N', -2 s D'
  for (size_t i = 0; i < rise.size(); ++i) rise[i] *= 1 + 2 * static_cast<double>(i);
  for (size_t i = 0; i < fall.size(); ++i) fall[i] *= -2 * static_cast<double>(i);
  return geometry::Sum(geometry::Product(rise, d), geometry::Product(n, fall));
}

}  // namespace

std::optional<double> HighestLanding(const RadialCurve& curve) {
  const Polynomial n = WithLeadingOne(curve.numerator), d = WithLeadingOne(curve.denominator);
  const double end = curve.largest * curve.largest;
  const double top = geometry::FirstSignChange(Slope(n, d), 0, end);
  if (std::isinf(top) || geometry::FirstSignChange(d, 0, end) < top) return std::nullopt;
  return std::sqrt(top) * geometry::ValueAt(n, top) / geometry::ValueAt(d, top);
}

}  // namespace calib
