#include "calib/views/record_charts.h"

#include <cmath>
#include <iterator>
#include <map>
#include <utility>

#include "calib/fields/field_path.h"
#include "calib/views/curve_charts.h"
#include "calib/views/lens_charts.h"
#include "calib/views/rig_charts.h"
#include "calib/views/sample_charts.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::Message;
using namespace zarvo::calibration;  // NOLINT: the types that are drawn

namespace {

constexpr double kLargestNumber = 1e9;  // in pixels, of a camera whose lens is drawn

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

// The images that intrinsics were computed from.
std::map<const Message*, const CalibrationImage*> ImagesOfIntrinsics(
    const std::vector<Part>& parts) {
  std::map<const Message*, const CalibrationImage*> images;
  for (const Part& part : PartsOf(parts, CameraCalibration::descriptor())) {
    const auto& camera = static_cast<const CameraCalibration&>(*part.message);
    if (camera.has_intrinsics_image()) images[&camera.intrinsics()] = &camera.intrinsics_image();
  }
  return images;
}

// None of a camera without coefficients, or without a size.
std::vector<Chart> ChartsOfLens(const Part& part, const LensReader& read) {
  const auto& intrinsics = static_cast<const CameraIntrinsics&>(*part.message);
  const bool bends = intrinsics.k_size() + intrinsics.p_size() > 0;
  if (!bends || intrinsics.width() <= 0 || intrinsics.height() <= 0) return {};
  LensReading reading = read(intrinsics);
  const auto& camera = reading.camera;
  for (const double number : {camera.fx, camera.fy, camera.skew, camera.cx, camera.cy}) {
    if (std::abs(number) < kLargestNumber) continue;
    reading.model.clear();
    reading.reason = "a number is not finite, or too large";
  }
  if (!reading.model.empty()) return LensCharts(reading.camera, reading.model, part.path);
  Chart chart;
  chart.title = JoinPath(part.path, "lens");
  chart.notes.push_back("not drawn: " + reading.reason);
  chart.size = ChartSize::kHalf;
  chart.plot = false;
  return {chart};
}

}  // namespace

std::vector<const Descriptor*> DrawableTypes() {
  return {CameraCalibration::descriptor(), CameraIntrinsics::descriptor(),
          FocusInfoItem::descriptor(), FocusCheckProto::descriptor(), PTZIntrinsics::descriptor()};
}

std::vector<Chart> ChartsOf(const std::vector<Part>& parts, const ChartOptions& options) {
  std::vector<Chart> charts =
      RigCharts(RigOf(PartsOf(parts, CameraCalibration::descriptor()), options.extrinsics));
  for (const Part& part : PartsOf(parts, PTZIntrinsics::descriptor())) {
    Append(ZoomCharts(static_cast<const PTZIntrinsics&>(*part.message), part.path), &charts);
  }
  const std::map<const Message*, const CalibrationImage*> images = ImagesOfIntrinsics(parts);
  for (const Part& part : PartsOf(parts, CameraIntrinsics::descriptor())) {
    const auto image = images.find(part.message);
    Append(SampleCharts(static_cast<const CameraIntrinsics&>(*part.message), part.path,
                        image == images.end() ? nullptr : image->second),
           &charts);
    if (options.lens) Append(ChartsOfLens(part, options.lens), &charts);
  }
  Append(TransferFunctionCharts(PartsOf(parts, FocusInfoItem::descriptor())), &charts);
  Append(FocusCheckCharts(PartsOf(parts, FocusCheckProto::descriptor())), &charts);
  for (Chart& chart : charts) chart.full_range = options.full_range;
  return charts;
}

}  // namespace calib
