#include "calib/tools/rigid_transform.h"

#include <algorithm>
#include <cmath>

#include "calib/console/number.h"

namespace calib {

namespace {

using Vector = std::array<double, 3>;
using Matrix = std::array<double, 9>;

constexpr double kTolerance = 1e-4;

Vector Times(const Matrix& m, const Vector& v) {
  return {m[0] * v[0] + m[1] * v[1] + m[2] * v[2],  //
          m[3] * v[0] + m[4] * v[1] + m[5] * v[2],  //
          m[6] * v[0] + m[7] * v[1] + m[8] * v[2]};
}

Matrix Times(const Matrix& a, const Matrix& b) {
  Matrix product{};
  for (size_t row = 0; row < 3; ++row) {
    for (size_t column = 0; column < 3; ++column) {
      for (size_t i = 0; i < 3; ++i)
        product[3 * row + column] += a[3 * row + i] * b[3 * i + column];
    }
  }
  return product;
}

Matrix Transposed(const Matrix& m) {
  return {m[0], m[3], m[6], m[1], m[4], m[7], m[2], m[5], m[8]};
}

// Transposed, which is the inverse times the determinant.
Matrix Cofactors(const Matrix& m) {
  return {m[4] * m[8] - m[5] * m[7], m[2] * m[7] - m[1] * m[8], m[1] * m[5] - m[2] * m[4],
          m[5] * m[6] - m[3] * m[8], m[0] * m[8] - m[2] * m[6], m[2] * m[3] - m[0] * m[5],
          m[3] * m[7] - m[4] * m[6], m[1] * m[6] - m[0] * m[7], m[0] * m[4] - m[1] * m[3]};
}

double Determinant(const Matrix& m) {
  const Matrix c = Cofactors(m);
  return m[0] * c[0] + m[1] * c[3] + m[2] * c[6];
}

bool AllFinite(const std::vector<double>& numbers) {
  return std::all_of(numbers.begin(), numbers.end(), [](double n) { return std::isfinite(n); });
}

}  // namespace

RigidTransform RigidTransform::FromRows(const std::vector<double>& rows) {
  return {{rows[0], rows[1], rows[2], rows[4], rows[5], rows[6], rows[8], rows[9], rows[10]},
          {rows[3], rows[7], rows[11]}};
}

RigidTransform RigidTransform::FromQuaternion(const Quaternion& q, const Vector& t) {
  const double s = 2 / (q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
  const double xx = s * q.x * q.x, yy = s * q.y * q.y, zz = s * q.z * q.z;
  const double xy = s * q.x * q.y, xz = s * q.x * q.z, yz = s * q.y * q.z;
  const double wx = s * q.w * q.x, wy = s * q.w * q.y, wz = s * q.w * q.z;
  return {{1 - (yy + zz), xy - wz, xz + wy,  //
           xy + wz, 1 - (xx + zz), yz - wx,  //
           xz - wy, yz + wx, 1 - (xx + yy)},
          t};
}

RigidTransform RigidTransform::FromRotationVector(const Vector& v, const Vector& t) {
  const double angle = std::hypot(v[0], v[1], v[2]);
  // sin(angle / 2) / angle, also where that is 0 / 0.
  const double s = angle < 1e-8 ? 0.5 : std::sin(angle / 2) / angle;
  return FromQuaternion({std::cos(angle / 2), s * v[0], s * v[1], s * v[2]}, t);
}

std::vector<double> RigidTransform::Rows() const {
  return {r[0], r[1], r[2], t[0], r[3], r[4], r[5], t[1], r[6], r[7], r[8], t[2], 0, 0, 0, 1};
}

// From the largest of the four, so that none is the difference of numbers that are nearly the same.
Quaternion RigidTransform::ToQuaternion() const {
  const double of[] = {r[0] + r[4] + r[8], r[0] - r[4] - r[8], r[4] - r[0] - r[8],
                       r[8] - r[0] - r[4]};
  Quaternion q{};
  switch (std::max_element(of, of + 4) - of) {
    case 0:
      q = {1 + of[0], r[7] - r[5], r[2] - r[6], r[3] - r[1]};
      break;
    case 1:
      q = {r[7] - r[5], 1 + of[1], r[1] + r[3], r[2] + r[6]};
      break;
    case 2:
      q = {r[2] - r[6], r[1] + r[3], 1 + of[2], r[5] + r[7]};
      break;
    default:
      q = {r[3] - r[1], r[2] + r[6], r[5] + r[7], 1 + of[3]};
  }
  const double length = std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
  const double by = q.w < 0 ? -length : length;
  return {q.w / by, q.x / by, q.y / by, q.z / by};
}

Vector RigidTransform::ToRotationVector() const {
  const Quaternion q = ToQuaternion();
  const double sine = std::hypot(q.x, q.y, q.z);
  const double s = sine < 1e-8 ? 2 : 2 * std::atan2(sine, q.w) / sine;
  return {s * q.x, s * q.y, s * q.z};
}

RigidTransform RigidTransform::Inverse() const {
  RigidTransform inverse{Cofactors(r), {}};
  const double determinant = Determinant(r);
  for (double& element : inverse.r) element = element / determinant + 0;  // no -0
  inverse.t = Times(inverse.r, t);
  for (double& element : inverse.t) element = 0 - element;
  return inverse;
}

bool RigidTransform::IsIdentity() const {
  const RigidTransform identity;
  return r == identity.r && t == identity.t;
}

RigidTransform operator*(const RigidTransform& a, const RigidTransform& b) {
  RigidTransform product{Times(a.r, b.r), Times(a.r, b.t)};
  for (size_t i = 0; i < 3; ++i) product.t[i] += a.t[i];
  return product;
}

std::string WhyNotRigid(const std::vector<double>& rows) {
  if (rows.size() != 16) return "has " + std::to_string(rows.size()) + " numbers, not 16";
  if (!AllFinite(rows)) return "has numbers that are not finite";
  if (rows[12] != 0 || rows[13] != 0 || rows[14] != 0 || rows[15] != 1) {
    return "has a last row other than 0, 0, 0, 1";
  }
  const Matrix r = RigidTransform::FromRows(rows).r;
  const Matrix product = Times(r, Transposed(r));
  for (size_t i = 0; i < 9; ++i) {
    const double off = std::abs(product[i] - (i % 4 == 0 ? 1 : 0));
    if (!(off <= kTolerance)) {
      return "has no rotation: its rows are off by " + Shortest(static_cast<float>(off)) +
             " from being of length 1 and at right angles";
    }
  }
  return Determinant(r) > 0 ? "" : "has a reflection, no rotation";
}

}  // namespace calib
