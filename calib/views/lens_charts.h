// What a lens does to an image: how far it moves each pixel, and its radial curve.
#ifndef CALIB_VIEWS_LENS_CHARTS_H_
#define CALIB_VIEWS_LENS_CHARTS_H_

#include <string>
#include <vector>

#include "calib/charts/chart.h"
#include "calib/geometry/calibration_geometry.h"

namespace calib {

// `path` is that of the intrinsics, `model` what the lens is called; the camera's size must be
// known.
std::vector<Chart> LensCharts(const zarvo::calibration_geometry::Camera& camera,
                              const std::string& model, const std::string& path);

}  // namespace calib

#endif  // CALIB_VIEWS_LENS_CHARTS_H_
