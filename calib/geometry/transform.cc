// Rigid transforms, and rotations as they are written elsewhere.
#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>

#include "calib/geometry/calibration_geometry.h"
#include "calib/geometry/pose_difference.h"

namespace zarvo {
namespace calibration_geometry {

namespace {

using Matrix3 = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;

Matrix3 RotationOf(const Transform& transform) {
  const double* m = transform.m;
  Matrix3 rotation;
  rotation << m[0], m[1], m[2], m[4], m[5], m[6], m[8], m[9], m[10];
  return rotation;
}

Transform Assembled(const Matrix3& rotation, const Point& translation) {
  const double t[] = {translation.x, translation.y, translation.z};
  Transform transform;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column)
      transform.m[4 * row + column] = rotation(row, column);
    transform.m[4 * row + 3] = t[row];
  }
  return transform;
}

bool IsAffine(const Transform& transform) {
  const double* m = transform.m;
  return std::all_of(m, m + 16, [](double number) { return std::isfinite(number); }) &&
         m[12] == 0 && m[13] == 0 && m[14] == 0 && m[15] == 1;
}

}  // namespace

Transform Invert(const Transform& transform) noexcept {
  const double* m = transform.m;
  Transform inverse;
  for (int row = 0; row < 3; ++row) {
    inverse.m[4 * row + 3] = 0;
    for (int column = 0; column < 3; ++column) {
      inverse.m[4 * row + column] = m[4 * column + row];
      inverse.m[4 * row + 3] -= m[4 * column + row] * m[4 * column + 3];
    }
  }
  return inverse;
}

Transform Compose(const Transform& second, const Transform& first) noexcept {
  Transform product;
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) {
      double sum = 0;
      for (int i = 0; i < 4; ++i) sum += second.m[4 * row + i] * first.m[4 * i + column];
      product.m[4 * row + column] = sum;
    }
  }
  return product;
}

Point Apply(const Transform& transform, const Point& point) noexcept {
  const double* m = transform.m;
  return {m[0] * point.x + m[1] * point.y + m[2] * point.z + m[3],
          m[4] * point.x + m[5] * point.y + m[6] * point.z + m[7],
          m[8] * point.x + m[9] * point.y + m[10] * point.z + m[11]};
}

double RotationDefect(const Transform& transform) noexcept {
  const Matrix3 rotation = RotationOf(transform);
  if (!IsAffine(transform) || !(rotation.determinant() > 0)) {
    return std::numeric_limits<double>::infinity();
  }
  return (rotation.transpose() * rotation - Matrix3::Identity()).cwiseAbs().maxCoeff();
}

bool Orthonormalize(Transform* transform) noexcept {
  if (!std::isfinite(RotationDefect(*transform))) return false;
  const Eigen::JacobiSVD<Eigen::Matrix3d> svd(RotationOf(*transform),
                                              Eigen::ComputeFullU | Eigen::ComputeFullV);
  const double* m = transform->m;
  *transform = Assembled(svd.matrixU() * svd.matrixV().transpose(), {m[3], m[7], m[11]});
  return true;
}

Quaternion QuaternionOf(const Transform& transform) noexcept {
  Eigen::Quaterniond q(Eigen::Matrix3d(RotationOf(transform)));
  q.normalize();
  const double sign = q.w() < 0 ? -1 : 1;
  return {sign * q.w(), sign * q.x(), sign * q.y(), sign * q.z()};
}

RollPitchYaw RollPitchYawOf(const Transform& transform) noexcept {
  const double* m = transform.m;
  const double level = std::hypot(m[0], m[4]);
  const double pitch = std::atan2(-m[8], level);
  // Looking straight along the z axis, roll and yaw are one rotation: it is all told as roll.
  if (level < 1e-12) return {std::atan2(-m[6], m[5]), pitch, 0};
  return {std::atan2(m[9], m[10]), pitch, std::atan2(m[4], m[0])};
}

Point RotationVectorOf(const Transform& transform) noexcept {
  const Quaternion q = QuaternionOf(transform);
  const double sine = std::hypot(std::hypot(q.x, q.y), q.z);
  // The angle over its sine is 2 where both vanish.
  const double scale = sine == 0 ? 2 : 2 * std::atan2(sine, q.w) / sine;
  return {q.x * scale, q.y * scale, q.z * scale};
}

double AngleBetween(const Transform& a, const Transform& b) noexcept {
  const Point turn = RotationVectorOf(Compose(Invert(a), b));
  return std::hypot(std::hypot(turn.x, turn.y), turn.z);
}

double DistanceBetween(const Transform& a, const Transform& b) noexcept {
  return std::hypot(std::hypot(a.m[3] - b.m[3], a.m[7] - b.m[7]), a.m[11] - b.m[11]);
}

Transform FromQuaternion(const Quaternion& rotation, const Point& translation) noexcept {
  const Eigen::Quaterniond q(rotation.w, rotation.x, rotation.y, rotation.z);
  return Assembled(q.normalized().toRotationMatrix(), translation);
}

Transform FromRollPitchYaw(const RollPitchYaw& rotation, const Point& translation) noexcept {
  const Eigen::Matrix3d matrix = (Eigen::AngleAxisd(rotation.yaw, Eigen::Vector3d::UnitZ()) *
                                  Eigen::AngleAxisd(rotation.pitch, Eigen::Vector3d::UnitY()) *
                                  Eigen::AngleAxisd(rotation.roll, Eigen::Vector3d::UnitX()))
                                     .toRotationMatrix();
  return Assembled(matrix, translation);
}

Transform FromRotationVector(const Point& rotation, const Point& translation) noexcept {
  const Eigen::Vector3d axis(rotation.x, rotation.y, rotation.z);
  const double angle = axis.norm();
  if (angle == 0) return Assembled(Matrix3::Identity(), translation);
  return Assembled(Eigen::AngleAxisd(angle, axis / angle).toRotationMatrix(), translation);
}

}  // namespace calibration_geometry
}  // namespace zarvo
