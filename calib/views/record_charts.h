// A record as people want to look at it: the charts of what can be drawn of it. Each kind of chart
// has a file beside this one: rig_charts.h, sample_charts.h, curve_charts.h.
//
// Axes are named by fields and scaled in what the fields hold: where the format records no unit,
// spacing or meaning, the charts have none either, and lists are drawn over the index.
#ifndef CALIB_VIEWS_RECORD_CHARTS_H_
#define CALIB_VIEWS_RECORD_CHARTS_H_

#include <google/protobuf/message.h>

#include <string>
#include <vector>

#include "calib/charts/chart.h"
#include "calib/fields/parts.h"
#include "calib/views/rig.h"

namespace calib {

struct ChartOptions {
  bool full_range = false;  // draw to scale what lies far off, too
  Extrinsics extrinsics = Extrinsics::kAssumed;
};

// The message types that charts are drawn of.
std::vector<const google::protobuf::Descriptor*> DrawableTypes();

// The charts of parts of a record that are of DrawableTypes(); none if what they show is not set.
std::vector<Chart> ChartsOf(const std::vector<Part>& parts, const ChartOptions& options);

}  // namespace calib

#endif  // CALIB_VIEWS_RECORD_CHARTS_H_
