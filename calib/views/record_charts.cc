#include "calib/views/record_charts.h"

#include <iterator>
#include <utility>

#include "calib/views/curve_charts.h"
#include "calib/views/sample_charts.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::Message;
using namespace zarvo::calibration;  // NOLINT: the types that are drawn

namespace {

void Append(std::vector<Chart> more, std::vector<Chart>* charts) {
  charts->insert(charts->end(), std::make_move_iterator(more.begin()),
                 std::make_move_iterator(more.end()));
}

std::vector<Part> PartsOf(const std::vector<Part>& parts, const Descriptor* type) {
  std::vector<Part> of_type;
  for (const Part& part : parts) {
    if (part.message->GetDescriptor() == type) of_type.push_back(part);
  }
  return of_type;
}

}  // namespace

std::vector<const Descriptor*> DrawableTypes() {
  return {CameraIntrinsics::descriptor(), FocusInfoItem::descriptor(),
          FocusCheckProto::descriptor(), PTZIntrinsics::descriptor()};
}

std::vector<Chart> ChartsOf(const Message& /*record*/, const std::vector<Part>& parts,
                            const ChartOptions& options) {
  std::vector<Chart> charts;
  for (const Part& part : PartsOf(parts, PTZIntrinsics::descriptor())) {
    Append(ZoomCharts(static_cast<const PTZIntrinsics&>(*part.message), part.path), &charts);
  }
  for (const Part& part : PartsOf(parts, CameraIntrinsics::descriptor())) {
    Append(SampleCharts(static_cast<const CameraIntrinsics&>(*part.message), part.path), &charts);
  }
  Append(TransferFunctionCharts(PartsOf(parts, FocusInfoItem::descriptor())), &charts);
  Append(FocusCheckCharts(PartsOf(parts, FocusCheckProto::descriptor())), &charts);
  for (Chart& chart : charts) chart.full_range = options.full_range;
  return charts;
}

}  // namespace calib
