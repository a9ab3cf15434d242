#include "calib/geometry/polynomial.h"

#include <algorithm>
#include <limits>

namespace zarvo {
namespace calibration_geometry {

namespace {

// All sign changes in (from, to], in order: between two extrema there is one at most.
std::vector<double> SignChanges(const Polynomial& polynomial, double from, double to) {
  std::vector<double> changes;
  if (polynomial.size() < 2) return changes;
  std::vector<double> ends = SignChanges(Derivative(polynomial), from, to);
  ends.push_back(to);
  double low = from;
  for (const double end : ends) {
    double high = end;
    const bool rises = ValueAt(polynomial, low) < 0;
    if ((ValueAt(polynomial, high) < 0) != rises) {
      while (true) {
        const double middle = low + (high - low) / 2;
        if (middle <= low || middle >= high) break;
        ((ValueAt(polynomial, middle) < 0) == rises ? low : high) = middle;
      }
      changes.push_back(high);
    }
    low = end;
  }
  return changes;
}

}  // namespace

double ValueAt(const Polynomial& polynomial, double x) {
  double value = 0;
  for (size_t i = polynomial.size(); i > 0; --i) value = value * x + polynomial[i - 1];
  return value;
}

Polynomial Derivative(const Polynomial& polynomial) {
  Polynomial derivative;
  for (size_t i = 1; i < polynomial.size(); ++i) {
    derivative.push_back(static_cast<double>(i) * polynomial[i]);
  }
  return derivative;
}

Polynomial Product(const Polynomial& a, const Polynomial& b) {
  Polynomial product(a.size() + b.size() - 1);
  for (size_t i = 0; i < a.size(); ++i) {
    for (size_t j = 0; j < b.size(); ++j) product[i + j] += a[i] * b[j];
  }
  return product;
}

Polynomial Sum(const Polynomial& a, const Polynomial& b) {
  Polynomial sum(std::max(a.size(), b.size()));
  for (size_t i = 0; i < a.size(); ++i) sum[i] += a[i];
  for (size_t i = 0; i < b.size(); ++i) sum[i] += b[i];
  return sum;
}

double FirstSignChange(const Polynomial& polynomial, double from, double to) {
  const std::vector<double> changes = SignChanges(polynomial, from, to);
  return changes.empty() ? std::numeric_limits<double>::infinity() : changes.front();
}

}  // namespace calibration_geometry
}  // namespace zarvo
