// Rigid transforms as files and records write them: a matrix of four rows and columns, a quaternion
// or a rotation vector with a translation. A point p becomes r p + t.
#ifndef CALIB_TOOLS_RIGID_TRANSFORM_H_
#define CALIB_TOOLS_RIGID_TRANSFORM_H_

#include <array>
#include <string>
#include <vector>

#include "calib/fields/rigid_numbers.h"

namespace calib {

struct Quaternion {
  double w, x, y, z;
};

struct RigidTransform {
  std::array<double, 9> r = {1, 0, 0, 0, 1, 0, 0, 0, 1};  // by rows
  std::array<double, 3> t = {0, 0, 0};

  // The first twelve of a matrix of four columns, by rows.
  static RigidTransform FromRows(const std::vector<double>& rows);
  // Of any length but 0.
  static RigidTransform FromQuaternion(const Quaternion& q, const std::array<double, 3>& t);
  // Along the axis, as long as the angle in radians (as Rodrigues has it).
  static RigidTransform FromRotationVector(const std::array<double, 3>& v,
                                           const std::array<double, 3>& t);

  // All sixteen numbers.
  std::vector<double> Rows() const;
  // Of length 1, with w from 0; that of the nearest rotation if r is rounded.
  Quaternion ToQuaternion() const;
  std::array<double, 3> ToRotationVector() const;

  // That of the matrix as it stands: digits that were rounded make no other transform of it.
  RigidTransform Inverse() const;
  bool IsIdentity() const;
};

// First b, then a.
RigidTransform operator*(const RigidTransform& a, const RigidTransform& b);

// Further off are digits that files do not have.
constexpr double kNearlyRotation = 0.01;

// Why a matrix, by rows, is no rigid transform: "" if it is one, of four rows and columns, with a
// rotation within `tolerance`.
std::string WhyNotRigid(const std::vector<double>& rows, double tolerance = kRotationTolerance);

// The cure where it is nearly a rotation.
constexpr char kTakeNearest[] = "'calib transform --orthonormalize' takes the nearest rotation";

}  // namespace calib

#endif  // CALIB_TOOLS_RIGID_TRANSFORM_H_
