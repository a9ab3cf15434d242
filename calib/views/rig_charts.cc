#include "calib/views/rig_charts.h"

#include <string>

namespace calib {
namespace {

// An axis of the body, in its own direction or against it.
struct BodyAxis {
  int axis, sign;

  double Of(const Point3& point) const {
    return sign * (axis == 0 ? point.x : axis == 1 ? point.y : point.z);
  }
  std::string Name() const {
    return std::string(sign < 0 ? "\xe2\x88\x92" : "") + "xyz"[axis] + " of the body";
  }
};

// The axis to the right of one that looks along `forward` with `up` above: their cross product.
BodyAxis RightOf(const BodyAxis& forward, const BodyAxis& up) {
  const int axis = 3 - forward.axis - up.axis;
  const bool cyclic = (forward.axis + 1) % 3 == up.axis;
  return {axis, forward.sign * up.sign * (cyclic ? 1 : -1)};
}

Chart ProjectedChart(const Rig& rig, const std::string& title, const BodyAxis& across,
                     const BodyAxis& upwards) {
  Chart chart;
  chart.title = title;
  chart.x_name = across.Name();
  chart.y_name = upwards.Name();
  chart.same_scale = true;
  for (const RigLine& line : rig.lines) {
    ChartLine drawn;
    drawn.color = line.color;
    drawn.dashed = line.dashed;
    for (const Point3& point : line.points) {
      drawn.points.push_back({across.Of(point), upwards.Of(point)});
    }
    chart.lines.push_back(drawn);
  }
  for (const RigName& name : rig.names) {
    chart.labels.push_back({across.Of(name.place), upwards.Of(name.place), name.text, 0});
  }
  return chart;
}

}  // namespace

std::vector<Chart> RigCharts(const Rig& rig) {
  if (rig.notes.empty()) return {};
  const BodyAxis up{rig.up, rig.up_sign}, forward{rig.forward, rig.forward_sign};
  std::vector<Chart> charts = {ProjectedChart(rig, "rig from above", RightOf(forward, up), forward),
                               ProjectedChart(rig, "rig from its right side", forward, up)};
  charts[0].notes = rig.notes;
  if (rig.poses.empty()) {
    charts[0].plot = false;
    return {charts[0]};
  }
  charts[1].poses = {"rig", "camera", rig.poses};
  charts[0].notes.push_back("Above is taken as " + up.Name() +
                            ", where the tops of the images are; y axes are dashed");
  return charts;
}

}  // namespace calib
