// A record as people want to look at it: the charts of what can be drawn of it.
#ifndef CALIB_VIEWS_RECORD_CHARTS_H_
#define CALIB_VIEWS_RECORD_CHARTS_H_

#include <google/protobuf/message.h>

#include <string>
#include <vector>

#include "calib/charts/chart.h"
#include "calib/fields/parts.h"

namespace calib {

// The message types that charts are drawn of.
std::vector<const google::protobuf::Descriptor*> DrawableTypes();

// The charts of a message of one of DrawableTypes(); none if what they show is not set.
std::vector<Chart> ChartsOf(const Part& part);

}  // namespace calib

#endif  // CALIB_VIEWS_RECORD_CHARTS_H_
