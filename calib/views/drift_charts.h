// How cameras change, as charts: one for each quantity, with a curve for each camera.
#ifndef CALIB_VIEWS_DRIFT_CHARTS_H_
#define CALIB_VIEWS_DRIFT_CHARTS_H_

#include <vector>

#include "calib/charts/chart.h"
#include "calib/views/camera_drift.h"

namespace calib {

// Over the records in their order, the change since the camera's first one. What does not change is
// named, and not drawn; there is no chart if nothing does.
std::vector<Chart> DriftCharts(const std::vector<DriftRow>& rows);

}  // namespace calib

#endif  // CALIB_VIEWS_DRIFT_CHARTS_H_
