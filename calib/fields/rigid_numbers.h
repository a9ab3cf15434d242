// The rigid transform that numbers such as those of CameraExtrinsics.a are, if they are one: a
// record tells neither how they are laid out nor how many there are.
#ifndef CALIB_FIELDS_RIGID_NUMBERS_H_
#define CALIB_FIELDS_RIGID_NUMBERS_H_

#include <google/protobuf/repeated_field.h>

#include <optional>

#include "calib/geometry/calibration_geometry.h"

namespace calib {

// How far the product of a rotation with its transpose may be off the identity, in any element, for
// numbers to be taken for one.
constexpr double kRotationTolerance = 1e-4;

struct RigidNumbers {
  zarvo::calibration_geometry::Transform transform;
  // How far it is off one: by the largest difference between an element of the product of the
  // rotation with its transpose and that of the identity, or between an element of the last row of
  // a matrix of 4 by 4 and 0, or 1 for the last; 2 if it is a reflection.
  double off;
  bool has_translation;
};

// Takes 9 numbers for a rotation alone, 12 for a matrix of 3 by 4 and 16 for one of 4 by 4, all of
// them row by row or column by column, whichever is less off. Nothing if there are others, or if
// one is not finite.
std::optional<RigidNumbers> AsRigidNumbers(const google::protobuf::RepeatedField<double>& a);

}  // namespace calib

#endif  // CALIB_FIELDS_RIGID_NUMBERS_H_
