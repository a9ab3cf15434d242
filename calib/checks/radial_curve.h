// The curve of a lens from the angle at which light comes in to the distance from the principal
// point at which it lands, both for a focal length of 1. Where it falls, two directions share a
// pixel, and no lens does that.
#ifndef CALIB_CHECKS_RADIAL_CURVE_H_
#define CALIB_CHECKS_RADIAL_CURVE_H_

#include <optional>
#include <vector>

namespace calib {

// The coefficients of even powers behind a leading 1, as lens models have them:
//
//   landing = in * numerator(in^2) / denominator(in^2),   in at most `largest`
//
// where `in` is the tangent of the angle, or, of a fisheye, the angle itself.
struct RadialCurve {
  std::vector<double> numerator, denominator;
  double largest;
};

// Where the light lands at the point from which on the curve falls; nothing if it rises as long as
// it is defined.
std::optional<double> HighestLanding(const RadialCurve& curve);

}  // namespace calib

#endif  // CALIB_CHECKS_RADIAL_CURVE_H_
