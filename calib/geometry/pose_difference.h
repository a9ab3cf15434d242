// How far apart two poses are, and what angles are counted in.
#ifndef CALIB_GEOMETRY_POSE_DIFFERENCE_H_
#define CALIB_GEOMETRY_POSE_DIFFERENCE_H_

#include "calib/geometry/calibration_geometry.h"

namespace zarvo {
namespace calibration_geometry {

// Half a turn and one degree, in radians.
constexpr double kPi = 3.14159265358979323846, kDegree = kPi / 180;

// By how much one has to be turned to be the other, in radians, from 0 to pi.
double AngleBetween(const Transform& a, const Transform& b) noexcept;
// How far apart their translations are, in the transforms' own unit of length.
double DistanceBetween(const Transform& a, const Transform& b) noexcept;

}  // namespace calibration_geometry
}  // namespace zarvo

#endif  // CALIB_GEOMETRY_POSE_DIFFERENCE_H_
