// Axes are named by fields and scaled in what the fields hold: where the format records no unit,
// spacing or meaning, the charts have none either, and lists are drawn over the index.
#include "calib/views/record_charts.h"

#include <algorithm>
#include <cmath>

#include "calib/console/number.h"
#include "calib/fields/field_path.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Reflection;
using namespace zarvo::calibration;  // NOLINT: the types that are drawn

namespace {

// Whether an axis can hold the number.
bool IsDrawable(double value) { return std::abs(value) < 1e300; }

// Adds the point to the chart, or 1 to `left_out` if it cannot be drawn.
template <typename X, typename Y>
void AddPoint(X x, Y y, const std::string& name, bool set, Chart* chart, int* left_out) {
  if (!set || !IsDrawable(x) || !IsDrawable(y)) {
    ++*left_out;
    return;
  }
  chart->points.push_back(
      {x, y,
       name + ": " + chart->x_name + " " + Shortest(x) + ", " + chart->y_name + " " + Shortest(y)});
}

void NoteCounts(int count, int left_out, const std::string& what, Chart* chart) {
  chart->notes.push_back(std::to_string(count) + " " + what + (count == 1 ? "" : "s"));
  if (left_out == 0) return;
  chart->notes.push_back(std::to_string(left_out) +
                         " of them not drawn: a value is not set, not finite, or too large");
}

void SamplePoints(const CameraIntrinsics& intrinsics, const std::string& path,
                  std::vector<Chart>* charts) {
  if (intrinsics.sample_points_size() == 0) return;
  Chart chart;
  chart.title = JoinPath(path, "sample_points");
  chart.x_name = "img_x";
  chart.y_name = "img_y";
  chart.image = true;
  int left_out = 0;
  for (int i = 0; i < intrinsics.sample_points_size(); ++i) {
    const CameraIntrinsicsSamplePoints& sample = intrinsics.sample_points(i);
    const bool set = sample.has_img_x() && sample.has_img_y();
    AddPoint(sample.img_x(), sample.img_y(), "sample_points[" + std::to_string(i) + "]", set,
             &chart, &left_out);
  }
  NoteCounts(intrinsics.sample_points_size(), left_out, "sample_point", &chart);
  if (intrinsics.width() > 0 && intrinsics.height() > 0) {
    chart.area_width = intrinsics.width();
    chart.area_height = intrinsics.height();
    chart.area_label = "width " + std::to_string(intrinsics.width()) + ", height " +
                       std::to_string(intrinsics.height());
  } else {
    chart.notes.push_back("width and height are not set: the image area is not known");
  }
  charts->push_back(chart);
}

// The chart of a list of numbers over their index.
Chart ListChart(const google::protobuf::RepeatedField<float>& list, const std::string& path,
                const std::string& field) {
  Chart chart;
  chart.title = JoinPath(path, field);
  chart.x_name = "index in " + field;
  chart.y_name = field;
  chart.connected = chart.x_counts = true;
  int left_out = 0;
  for (int i = 0; i < list.size(); ++i) {
    AddPoint(static_cast<double>(i), list.Get(i), field + "[" + std::to_string(i) + "]", true,
             &chart, &left_out);
  }
  NoteCounts(list.size(), left_out, "value", &chart);
  return chart;
}

void TransferFunction(const FocusInfoItem& item, const std::string& path,
                      std::vector<Chart>* charts) {
  if (item.transfer_function_size() == 0) return;
  Chart chart = ListChart(item.transfer_function(), path, "transfer_function");
  if (item.has_target_id()) chart.notes[0] += ", target_id " + std::to_string(item.target_id());
  if (item.has_cutoff_threshold() && IsDrawable(item.cutoff_threshold())) {
    chart.mark = item.cutoff_threshold();
    chart.mark_label = "cutoff_threshold " + Shortest(item.cutoff_threshold());
  }
  charts->push_back(chart);
}

void Bins(const FocusCheckProto& check, const std::string& path, std::vector<Chart>* charts) {
  if (check.bins_size() == 0) return;
  Chart chart = ListChart(check.bins(), path, "bins");
  if (check.has_name()) chart.notes[0] += ", name \"" + check.name() + "\"";
  charts->push_back(chart);
}

// The chart of one field of the samples over their zoom, or over their index if no sample has a
// zoom.
Chart ZoomChart(const PTZIntrinsics& intrinsics, const std::string& path, bool by_zoom,
                const FieldDescriptor* field) {
  Chart chart;
  chart.title = field->name();
  chart.x_name = by_zoom ? "zoom" : "index in samples";
  chart.y_name = field->name();
  chart.connected = chart.small = true;
  chart.x_counts = !by_zoom;
  int left_out = 0;
  for (int i = 0; i < intrinsics.samples_size(); ++i) {
    const PTZIntrinsicsItem& sample = intrinsics.samples(i);
    const Reflection* reflection = sample.GetReflection();
    const bool set = reflection->HasField(sample, field) && (!by_zoom || sample.has_zoom());
    AddPoint(by_zoom ? sample.zoom() : i, reflection->GetDouble(sample, field),
             "samples[" + std::to_string(i) + "]", set, &chart, &left_out);
  }
  std::stable_sort(chart.points.begin(), chart.points.end(),
                   [](const ChartPoint& a, const ChartPoint& b) { return a.x < b.x; });
  NoteCounts(intrinsics.samples_size(), left_out, JoinPath(path, "sample"), &chart);
  return chart;
}

void ZoomCurves(const PTZIntrinsics& intrinsics, const std::string& path,
                std::vector<Chart>* charts) {
  const auto& samples = intrinsics.samples();
  const bool by_zoom = std::any_of(samples.begin(), samples.end(),
                                   [](const PTZIntrinsicsItem& item) { return item.has_zoom(); });
  const Descriptor* type = PTZIntrinsicsItem::descriptor();
  for (int i = 0; i < type->field_count(); ++i) {
    const FieldDescriptor* field = type->field(i);
    if (field->number() == PTZIntrinsicsItem::kZoomFieldNumber ||
        field->cpp_type() != FieldDescriptor::CPPTYPE_DOUBLE || field->is_repeated()) {
      continue;
    }
    const Chart chart = ZoomChart(intrinsics, path, by_zoom, field);
    if (!chart.points.empty()) charts->push_back(chart);
  }
}

template <typename T, void (*draw)(const T&, const std::string&, std::vector<Chart>*)>
void Draw(const Part& part, std::vector<Chart>* charts) {
  draw(static_cast<const T&>(*part.message), part.path, charts);
}

struct Drawing {
  const Descriptor* type;
  void (*draw)(const Part& part, std::vector<Chart>* charts);
};

const std::vector<Drawing>& Drawings() {
  static const std::vector<Drawing> drawings = {
      {CameraIntrinsics::descriptor(), Draw<CameraIntrinsics, SamplePoints>},
      {FocusInfoItem::descriptor(), Draw<FocusInfoItem, TransferFunction>},
      {FocusCheckProto::descriptor(), Draw<FocusCheckProto, Bins>},
      {PTZIntrinsics::descriptor(), Draw<PTZIntrinsics, ZoomCurves>}};
  return drawings;
}

}  // namespace

std::vector<const Descriptor*> DrawableTypes() {
  std::vector<const Descriptor*> types;
  for (const Drawing& drawing : Drawings()) types.push_back(drawing.type);
  return types;
}

std::vector<Chart> ChartsOf(const Part& part) {
  std::vector<Chart> charts;
  for (const Drawing& drawing : Drawings()) {
    if (part.message->GetDescriptor() == drawing.type) drawing.draw(part, &charts);
  }
  return charts;
}

}  // namespace calib
