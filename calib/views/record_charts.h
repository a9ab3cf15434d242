// A record as people want to look at it: the charts of what can be drawn of it. Each kind of chart
// has a file beside this one: rig_charts.h, sample_charts.h, lens_charts.h,
// curve_charts.h.
//
// Axes are named by fields and scaled in what the fields hold: where the format records no unit,
// spacing or meaning, the charts have none either, and lists are drawn over the index.
#ifndef CALIB_VIEWS_RECORD_CHARTS_H_
#define CALIB_VIEWS_RECORD_CHARTS_H_

#include <google/protobuf/message.h>

#include <functional>
#include <string>
#include <vector>

#include "calib/charts/chart.h"
#include "calib/fields/parts.h"
#include "calib/views/rig.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// What a camera's coefficients mean, which a record does not say: the camera of the arithmetic, and
// what its lens is called; or the reason why there is none.
struct LensReading {
  zarvo::calibration_geometry::Camera camera;
  std::string model;  // "" if there is none
  std::string reason;
};
using LensReader =
    std::function<LensReading(const zarvo::calibration::CameraIntrinsics& intrinsics)>;

struct ChartOptions {
  bool full_range = false;  // draw to scale what lies far off, too
  Extrinsics extrinsics = Extrinsics::kAssumed;
  LensReader lens;  // none: lenses are not drawn
};

// The message types that charts are drawn of.
std::vector<const google::protobuf::Descriptor*> DrawableTypes();

// The charts of parts of a record that are of DrawableTypes(); none if what they show is not set.
std::vector<Chart> ChartsOf(const std::vector<Part>& parts, const ChartOptions& options);

}  // namespace calib

#endif  // CALIB_VIEWS_RECORD_CHARTS_H_
