// Charts of a camera's sample points: where they lie in the image, and how they cover it.
#ifndef CALIB_VIEWS_SAMPLE_CHARTS_H_
#define CALIB_VIEWS_SAMPLE_CHARTS_H_

#include <string>
#include <vector>

#include "calib/charts/chart.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// None without sample points. `path` is that of the intrinsics; the points lie over the image, if
// there is one (else null) that can be shown.
std::vector<Chart> SampleCharts(const zarvo::calibration::CameraIntrinsics& intrinsics,
                                const std::string& path,
                                const zarvo::calibration::CalibrationImage* image);

}  // namespace calib

#endif  // CALIB_VIEWS_SAMPLE_CHARTS_H_
