// The rule for the error that a calibration says it has: what is left when each view's pose is
// fitted to the sample points is about that.
#include <cmath>

#include "calib/checks/rules.h"
#include "calib/console/number.h"
#include "calib/console/number_rows.h"
#include "calib/fields/camera_numbers.h"
#include "calib/fields/field_path.h"
#include "calib/fields/sample_views.h"

namespace calib {

namespace geometry = zarvo::calibration_geometry;
using zarvo::calibration::CameraIntrinsics;

namespace {

// No target has more; a fit of a view would take seconds.
constexpr size_t kMostPoints = 5000;

// The lens is told by the numbers of coefficients, as in intrinsics_rules.cc.
std::optional<geometry::Camera> CameraOf(const CameraIntrinsics& in) {
  if (in.k_size() > 6 || in.p_size() > 2) return std::nullopt;
  return AsCamera(in, in.k_size() == 4 && in.p_size() == 0);
}

// Of all views; nothing if one of them cannot be fitted, so that the sample points do not tell.
std::optional<double> RefittedRms(const CameraIntrinsics& in, const geometry::Camera& camera) {
  double sum = 0;
  for (const SampleView& view : SampleViewsOf(in, 0)) {
    if (view.points.size() > kMostPoints) return std::nullopt;
    const geometry::Pose pose = geometry::FitPose(camera, in.tgt_z(), view.points);
    if (pose.status != geometry::Status::kOk) return std::nullopt;
    sum += pose.rms * pose.rms * static_cast<double>(view.points.size());
  }
  return std::sqrt(sum / in.sample_points_size());
}

}  // namespace

void CheckResiduals(const CameraIntrinsics& in, const std::string& path, Findings* findings) {
  if (!in.IsInitialized() || !in.has_error_per_point() || in.sample_points_size() == 0) return;
  for (const auto& sample : in.sample_points()) {
    if (!TargetPointOf(sample)) return;
  }
  const std::optional<geometry::Camera> camera = CameraOf(in);
  const std::optional<double> rms = camera ? RefittedRms(in, *camera) : std::nullopt;
  if (!rms || !ErrorsDisagree(in.error_per_point(), *rms)) return;
  AddWrong("residual", JoinPath(path, "error_per_point"), Shortest(in.error_per_point()),
           "within a third of the " + ToDigits(*rms, 4) +
               " pixels that sample_points have with their views' poses refitted",
           findings);
}

}  // namespace calib
