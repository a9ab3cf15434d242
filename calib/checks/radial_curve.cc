// With s for the square of `in`, the slope of in * N(s) / D(s) has the sign of
// (N + 2 s N') D - 2 s N D', whose first root is looked for; a root of D before it, where the curve
// goes beyond all bounds, ends the search.
#include "calib/checks/radial_curve.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace calib {

namespace {

using Polynomial = std::vector<double>;  // the coefficient of s^i at i

Polynomial WithLeadingOne(const std::vector<double>& coefficients) {
  Polynomial result = {1};
  result.insert(result.end(), coefficients.begin(), coefficients.end());
  return result;
}

double At(const Polynomial& polynomial, double s) {
  double value = 0;
  for (size_t i = polynomial.size(); i-- > 0;) value = value * s + polynomial[i];
  return value;
}

Polynomial Product(const Polynomial& a, const Polynomial& b) {
  Polynomial product(a.size() + b.size() - 1, 0);
  for (size_t i = 0; i < a.size(); ++i) {
    for (size_t j = 0; j < b.size(); ++j) product[i + j] += a[i] * b[j];
  }
  return product;
}

Polynomial Derivative(const Polynomial& polynomial) {
  Polynomial derivative;
  for (size_t i = 1; i < polynomial.size(); ++i) {
    derivative.push_back(static_cast<double>(i) * polynomial[i]);
  }
  return derivative;
}

// (N + 2 s N') D - 2 s N D'
Polynomial Slope(const Polynomial& n, const Polynomial& d) {
  Polynomial rise = n, fall = d;  // N + 2 s N', 2 s D'
  for (size_t i = 0; i < rise.size(); ++i) rise[i] *= 1 + 2 * static_cast<double>(i);
  for (size_t i = 0; i < fall.size(); ++i) fall[i] *= 2 * static_cast<double>(i);
  Polynomial slope = Product(rise, d);
  const Polynomial subtracted = Product(n, fall);
  for (size_t i = 0; i < slope.size(); ++i) slope[i] -= subtracted[i];
  return slope;
}

// No root lies beyond (Cauchy).
double RootBound(const Polynomial& polynomial) {
  double largest = 0;
  for (const double c : polynomial) largest = std::max(largest, std::abs(c));
  return 1 + largest / std::abs(polynomial.back());
}

// Where the polynomial changes its sign between 0 and `end`, in ascending order. Between two roots
// of its derivative it does so once at most.
std::vector<double> SignChanges(Polynomial polynomial, double end) {
  while (!polynomial.empty() && polynomial.back() == 0) polynomial.pop_back();
  std::vector<double> changes;
  if (polynomial.size() < 2) return changes;
  std::vector<double> turns = SignChanges(Derivative(polynomial), end);
  turns.push_back(std::min(end, RootBound(polynomial)));
  double low = 0;
  for (const double turn : turns) {
    double from = low, to = turn;
    const bool negative = At(polynomial, from) < 0;
    low = turn;
    if (to <= from || (At(polynomial, to) < 0) == negative) continue;
    for (int halvings = 0; halvings < 200; ++halvings) {
      const double middle = from + (to - from) / 2;
      ((At(polynomial, middle) < 0) == negative ? from : to) = middle;
    }
    changes.push_back(to);
  }
  return changes;
}

// The first of them; infinity if there is none.
double FirstOf(const std::vector<double>& changes) {
  return changes.empty() ? std::numeric_limits<double>::infinity() : changes.front();
}

}  // namespace

std::optional<double> HighestLanding(const RadialCurve& curve) {
  const Polynomial n = WithLeadingOne(curve.numerator), d = WithLeadingOne(curve.denominator);
  const double end = curve.largest * curve.largest;
  const double top = FirstOf(SignChanges(Slope(n, d), end));
  if (std::isinf(top) || FirstOf(SignChanges(d, end)) < top) return std::nullopt;
  return std::sqrt(top) * At(n, top) / At(d, top);
}

}  // namespace calib
