#include "calib/geometry/brown.h"

#include <cmath>

#include "calib/geometry/polynomial.h"

namespace zarvo {
namespace calibration_geometry {

namespace {

// A radius that no camera sees: 89.9999 degrees.
constexpr double kFarthest = 1e6;
constexpr double kTolerance = 1e-12;  // of a focal length, and of the distance from the axis
constexpr int kMostSteps = 40;

// The radius is N(s) / D(s) times what it was, s being its square. Its derivative has the sign of
// (N + 2 s N') D - 2 s N D'; the first zero of that or of D ends what is one to one.
double Limit(const Polynomial& n, const Polynomial& d) {
  const Polynomial twice = {0, 2};
  const Polynomial rise = Sum(Product(Sum(n, Product(twice, Derivative(n))), d),
                              Product({-1}, Product(twice, Product(n, Derivative(d)))));
  const double end = kFarthest * kFarthest;
  return std::sqrt(std::fmin(FirstSignChange(rise, 0, end), FirstSignChange(d, 0, end)));
}

void Multiply(const double* a, const double* b, double* product) {
  for (int i = 0; i < 9; ++i) {
    product[i] = 0;
    for (int j = 0; j < 3; ++j) product[i] += a[i / 3 * 3 + j] * b[j * 3 + i % 3];
  }
}

}  // namespace

Brown::Brown(const double* distortion, bool rational)
    : k1_(distortion[0]),
      k2_(distortion[1]),
      k3_(distortion[4]),
      quartic_(rational ? 0 : distortion[5]),
      k4_(rational ? distortion[5] : 0),
      k5_(rational ? distortion[6] : 0),
      k6_(rational ? distortion[7] : 0),
      p1_(distortion[2]),
      p2_(distortion[3]),
      s1_(distortion[8]),
      s2_(distortion[9]),
      s3_(distortion[10]),
      s4_(distortion[11]),
      tilted_(distortion[12] != 0 || distortion[13] != 0),
      limit_(Limit({1, k1_, k2_, k3_, quartic_}, {1, k4_, k5_, k6_})) {
  // The sensor is turned about x, then about y, and what falls on it seen from the lens again.
  const double cx = std::cos(distortion[12]), sx = std::sin(distortion[12]);
  const double cy = std::cos(distortion[13]), sy = std::sin(distortion[13]);
  const double about_x[] = {1, 0, 0, 0, cx, sx, 0, -sx, cx};
  const double about_y[] = {cy, 0, -sy, 0, 1, 0, sy, 0, cy};
  double turn[9];
  Multiply(about_y, about_x, turn);
  const double depth = turn[8];
  const double onto[] = {depth, 0, -turn[2], 0, depth, -turn[5], 0, 0, 1};
  const double off[] = {1 / depth, 0, turn[2] / depth, 0, 1 / depth, turn[5] / depth, 0, 0, 1};
  const double back[] = {turn[0], turn[3], turn[6], turn[1], turn[4],
                         turn[7], turn[2], turn[5], turn[8]};
  Multiply(onto, turn, tilt_);
  Multiply(back, off, untilt_);
}

Brown::Step Brown::Bend(const Flat& point) const {
  const double x = point.x, y = point.y;
  const double s = x * x + y * y;
  const double n = 1 + s * (k1_ + s * (k2_ + s * (k3_ + s * quartic_)));
  const double dn = k1_ + s * (2 * k2_ + s * (3 * k3_ + s * 4 * quartic_));
  const double d = 1 + s * (k4_ + s * (k5_ + s * k6_)), dd = k4_ + s * (2 * k5_ + s * 3 * k6_);
  const double radial = n / d, rise = 2 * (dn - radial * dd) / d;
  const double prism_x = 2 * (s1_ + 2 * s2_ * s), prism_y = 2 * (s3_ + 2 * s4_ * s);
  Step step;
  step.value.x = x * radial + 2 * p1_ * x * y + p2_ * (s + 2 * x * x) + s * (s1_ + s * s2_);
  step.value.y = y * radial + p1_ * (s + 2 * y * y) + 2 * p2_ * x * y + s * (s3_ + s * s4_);
  step.xx = radial + x * x * rise + 2 * p1_ * y + 6 * p2_ * x + x * prism_x;
  step.xy = x * y * rise + 2 * p1_ * x + 2 * p2_ * y + y * prism_x;
  step.yx = x * y * rise + 2 * p1_ * x + 2 * p2_ * y + x * prism_y;
  step.yy = radial + y * y * rise + 6 * p1_ * y + 2 * p2_ * x + y * prism_y;
  return step;
}

double Brown::Radial(double radius) const {
  const double s = radius * radius;
  const double n = 1 + s * (k1_ + s * (k2_ + s * (k3_ + s * quartic_)));
  return radius * n / (1 + s * (k4_ + s * (k5_ + s * k6_)));
}

Flat Brown::Tilt(const Flat& point, const double* matrix) const {
  if (!tilted_) return point;
  const double z = matrix[6] * point.x + matrix[7] * point.y + matrix[8];
  return {(matrix[0] * point.x + matrix[1] * point.y + matrix[2]) / z,
          (matrix[3] * point.x + matrix[4] * point.y + matrix[5]) / z};
}

bool Brown::IsOneToOne(const Flat& point) const {
  constexpr int kSteps = 16;
  if (std::hypot(point.x, point.y) > limit_) return false;
  for (int i = kSteps; i > 0; --i) {
    const double share = static_cast<double>(i) / kSteps;
    // Not above 0, where the lens folds, or not a number.
    if (!(Bend({share * point.x, share * point.y}).determinant() > 0)) return false;
  }
  return true;
}

Status Brown::Distort(const Flat& point, Flat* distorted) const {
  if (!IsOneToOne(point)) return Status::kBeyondLens;
  *distorted = Tilt(Bend(point).value, tilt_);
  return Status::kOk;
}

Flat Brown::Start(const Flat& bent) const {
  const double distance = std::hypot(bent.x, bent.y);
  if (distance == 0) return bent;
  double low = 0, high = std::fmin(std::fmax(distance, 1), limit_);
  while (Radial(high) < distance && high < limit_ && high < kFarthest) {
    high = std::fmin(2 * high, limit_);
  }
  for (int i = 0; i < 60; ++i) {
    const double middle = (low + high) / 2;
    (Radial(middle) < distance ? low : high) = middle;
  }
  return {bent.x * (low / distance), bent.y * (low / distance)};
}

// With steps that are halved until they lead closer.
bool Brown::Approach(const Flat& bent, Flat* at) const {
  const double enough = kTolerance * (1 + std::hypot(bent.x, bent.y));
  const auto miss = [&](const Step& step) {
    return std::hypot(step.value.x - bent.x, step.value.y - bent.y);
  };
  Step step = Bend(*at);
  for (int i = 0; i < kMostSteps && miss(step) > enough * 1e-4; ++i) {
    const double determinant = step.determinant();
    const double ex = bent.x - step.value.x, ey = bent.y - step.value.y;
    const double dx = (step.yy * ex - step.xy * ey) / determinant;
    const double dy = (step.xx * ey - step.yx * ex) / determinant;
    bool closer = false;
    for (double share = 1; share > 1e-6 && !closer; share /= 2) {
      const Flat next = {at->x + share * dx, at->y + share * dy};
      const Step there = Bend(next);
      closer = miss(there) < miss(step);
      if (!closer) continue;
      *at = next;
      step = there;
    }
    if (!closer) break;
  }
  return miss(step) <= enough;
}

// Where the radial coefficients alone lead astray, the way goes from the axis outwards.
Status Brown::Undistort(const Flat& distorted, Flat* point) const {
  constexpr int kWaypoints = 32;
  const Flat bent = Tilt(distorted, untilt_);
  *point = Start(bent);
  if (Approach(bent, point) && IsOneToOne(*point)) return Status::kOk;
  *point = {0, 0};
  for (int i = 1; i <= kWaypoints; ++i) {
    const double share = static_cast<double>(i) / kWaypoints;
    if (!Approach({share * bent.x, share * bent.y}, point)) {
      return std::isfinite(limit_) ? Status::kBeyondLens : Status::kNotConverged;
    }
  }
  return IsOneToOne(*point) ? Status::kOk : Status::kBeyondLens;
}

}  // namespace calibration_geometry
}  // namespace zarvo
