// The sample points of intrinsics as views of their target: which points were taken together, no
// record says.
#ifndef CALIB_FIELDS_SAMPLE_VIEWS_H_
#define CALIB_FIELDS_SAMPLE_VIEWS_H_

#include <optional>
#include <vector>

#include "calib/geometry/calibration_geometry.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

struct SampleView {
  int first;  // of the sample points
  std::vector<zarvo::calibration_geometry::TargetPoint> points;
};

// The point, unless it lacks a coordinate or has one that is not finite.
std::optional<zarvo::calibration_geometry::TargetPoint> TargetPointOf(
    const zarvo::calibration::CameraIntrinsicsSamplePoints& sample);

// All points, which must be whole: `count` views of one size or, if that is 0, views that end where
// the target's points start anew: where one comes that the view has already.
std::vector<SampleView> SampleViewsOf(const zarvo::calibration::CameraIntrinsics& intrinsics,
                                      int count);

// Whether a stored error_per_point and a root mean square of residuals are apart by more than a
// third of the larger one. Which norm the former is of, nothing says; a third is more than norms of
// errors differ.
bool ErrorsDisagree(double error_per_point, double rms);

}  // namespace calib

#endif  // CALIB_FIELDS_SAMPLE_VIEWS_H_
