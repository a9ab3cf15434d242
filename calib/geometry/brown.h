// The radial, tangential, thin prism and tilt distortion of the plane z = 1, after Brown (1966) and
// OpenCV's documentation of the camera model, and its inverse. A fisheye may have it in the plane
// of angles.
#ifndef CALIB_GEOMETRY_BROWN_H_
#define CALIB_GEOMETRY_BROWN_H_

#include "calib/geometry/calibration_geometry.h"

namespace zarvo {
namespace calibration_geometry {

// A point of the plane z = 1, or what the distortion makes of it.
struct Flat {
  double x, y;
};

class Brown {
 public:
  // `distortion` is that of a Camera. Unless it is rational, the radial polynomial has four
  // coefficients, and there is nothing to divide it by.
  explicit Brown(const double* distortion, bool rational = true);

  Status Distort(const Flat& point, Flat* distorted) const;
  Status Undistort(const Flat& distorted, Flat* point) const;

  // As Distort(), but of points that the lens does not see, too.
  Flat Unchecked(const Flat& point) const { return Tilt(Bend(point).value, tilt_); }
  // What falls on a tilted sensor as it would on one that is not.
  Flat Untilt(const Flat& distorted) const { return Tilt(distorted, untilt_); }

  // The radius up to which a lens without tangential distortion is one to one; may be infinite.
  double limit() const { return limit_; }

 private:
  // What the coefficients but tilt make of a point, and the derivatives of it.
  struct Step {
    Flat value;
    double xx, xy, yx, yy;
    double determinant() const { return xx * yy - xy * yx; }
  };
  Step Bend(const Flat& point) const;
  // Whether nothing folds between the axis and the point, as far as a few points tell.
  bool IsOneToOne(const Flat& point) const;
  // Newton's method from `at` on. Returns whether it came to `bent`.
  bool Approach(const Flat& bent, Flat* at) const;
  // The distance from the axis of what the radial coefficients make of a point at `radius`.
  double Radial(double radius) const;
  Flat Tilt(const Flat& point, const double* matrix) const;
  // The point on the line from the axis through `bent` that the radial coefficients alone would
  // bend to it, or the last one of which that holds.
  Flat Start(const Flat& bent) const;

  double k1_, k2_, k3_, quartic_, k4_, k5_, k6_, p1_, p2_, s1_, s2_, s3_, s4_;
  bool tilted_;
  double tilt_[9], untilt_[9];
  double limit_;
};

}  // namespace calibration_geometry
}  // namespace zarvo

#endif  // CALIB_GEOMETRY_BROWN_H_
