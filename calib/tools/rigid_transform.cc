#include "calib/tools/rigid_transform.h"

#include <algorithm>
#include <cmath>

#include "calib/console/number.h"
#include "calib/geometry/calibration_geometry.h"

namespace calib {

namespace geometry = zarvo::calibration_geometry;

namespace {

using Vector = std::array<double, 3>;
using Matrix = std::array<double, 9>;

Vector Times(const Matrix& m, const Vector& v) {
  return {m[0] * v[0] + m[1] * v[1] + m[2] * v[2],  //
          m[3] * v[0] + m[4] * v[1] + m[5] * v[2],  //
          m[6] * v[0] + m[7] * v[1] + m[8] * v[2]};
}

geometry::Transform ToGeometry(const std::vector<double>& rows) {
  geometry::Transform transform;
  std::copy(rows.begin(), rows.end(), transform.m);
  return transform;
}

RigidTransform FromGeometry(const geometry::Transform& transform) {
  return RigidTransform::FromRows({transform.m, transform.m + 12});
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

}  // namespace

RigidTransform RigidTransform::FromRows(const std::vector<double>& rows) {
  return {{rows[0], rows[1], rows[2], rows[4], rows[5], rows[6], rows[8], rows[9], rows[10]},
          {rows[3], rows[7], rows[11]}};
}

RigidTransform RigidTransform::FromQuaternion(const Quaternion& q, const Vector& t) {
  return FromGeometry(geometry::FromQuaternion({q.w, q.x, q.y, q.z}, {t[0], t[1], t[2]}));
}

RigidTransform RigidTransform::FromRotationVector(const Vector& v, const Vector& t) {
  return FromGeometry(geometry::FromRotationVector({v[0], v[1], v[2]}, {t[0], t[1], t[2]}));
}

std::vector<double> RigidTransform::Rows() const {
  return {r[0], r[1], r[2], t[0], r[3], r[4], r[5], t[1], r[6], r[7], r[8], t[2], 0, 0, 0, 1};
}

Quaternion RigidTransform::ToQuaternion() const {
  const geometry::Quaternion q = geometry::QuaternionOf(ToGeometry(Rows()));
  return {q.w, q.x, q.y, q.z};
}

Vector RigidTransform::ToRotationVector() const {
  const geometry::Point v = geometry::RotationVectorOf(ToGeometry(Rows()));
  return {v.x, v.y, v.z};
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
  return FromGeometry(geometry::Compose(ToGeometry(a.Rows()), ToGeometry(b.Rows())));
}

std::string WhyNotRigid(const std::vector<double>& rows, double tolerance) {
  if (rows.size() != 16) return "has " + std::to_string(rows.size()) + " numbers, not 16";
  if (!std::all_of(rows.begin(), rows.end(), [](double n) { return std::isfinite(n); })) {
    return "has numbers that are not finite";
  }
  if (rows[12] != 0 || rows[13] != 0 || rows[14] != 0 || rows[15] != 1) {
    return "has a last row other than 0, 0, 0, 1";
  }
  const double defect = geometry::RotationDefect(ToGeometry(rows));
  if (defect <= tolerance) return "";
  if (std::isinf(defect)) return "has a reflection, or no rotation";
  return "has no rotation: its columns are off by " + Shortest(static_cast<float>(defect)) +
         " from being of length 1 and at right angles";
}

}  // namespace calib
