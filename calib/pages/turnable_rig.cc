// Places stand in data-p attributes, as numbers that are across, up and towards the viewer; here
// and in the script they are turned and projected alike.
#include "calib/pages/turnable_rig.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "calib/charts/chart.h"
#include "calib/charts/chart_style.h"
#include "calib/charts/svg.h"
#include "calib/pages/html.h"

namespace calib {
namespace {

constexpr double kSize = 520, kYaw = 0.6, kPitch = 0.45;

using Place3 = std::array<double, 3>;

// With the rig's up axis up, and from behind it: what it looks along leads away from the viewer.
Place3 Turned(const Rig& rig, const Point3& point) {
  const double numbers[] = {point.x, point.y, point.z};
  const int right = 3 - rig.up - rig.forward;
  const bool cyclic = (rig.forward + 1) % 3 == rig.up;
  const int right_sign = rig.forward_sign * rig.up_sign * (cyclic ? 1 : -1);
  return {right_sign * numbers[right], rig.up_sign * numbers[rig.up],
          -rig.forward_sign * numbers[rig.forward]};
}

// All places, so that they fill a ball of radius 1 around 0.
class Ball {
 public:
  explicit Ball(const Rig& rig) : rig_(rig) {
    Place3 low = {}, high = {};
    bool first = true;
    for (const RigLine& line : rig.lines) {
      for (const Point3& point : line.points) {
        const Place3 place = Turned(rig, point);
        for (size_t i = 0; i < 3; ++i) {
          low[i] = first ? place[i] : std::min(low[i], place[i]);
          high[i] = first ? place[i] : std::max(high[i], place[i]);
        }
        first = false;
      }
    }
    for (size_t i = 0; i < 3; ++i) middle_[i] = (low[i] + high[i]) / 2;
    for (const RigLine& line : rig.lines) {
      for (const Point3& point : line.points) {
        const Place3 place = Turned(rig, point);
        radius_ = std::max(radius_, std::hypot(place[0] - middle_[0], place[1] - middle_[1],
                                               place[2] - middle_[2]));
      }
    }
    if (radius_ <= 0) radius_ = 1;
  }

  Place3 At(const Point3& point) const {
    Place3 place = Turned(rig_, point);
    for (size_t i = 0; i < 3; ++i) place[i] = (place[i] - middle_[i]) / radius_;
    return place;
  }

 private:
  const Rig& rig_;
  Place3 middle_ = {};
  double radius_ = 0;
};

struct Projection {
  double x, y;
};

Projection Project(const Place3& place) {
  const double x = place[0] * std::cos(kYaw) + place[2] * std::sin(kYaw);
  const double depth = place[2] * std::cos(kYaw) - place[0] * std::sin(kYaw);
  const double y = place[1] * std::cos(kPitch) - depth * std::sin(kPitch);
  return {kSize / 2 + x * kSize * 0.42, kSize / 2 - y * kSize * 0.42};
}

std::string PlaceText(const Place3& place) {
  return RoundedText(place[0]) + "," + RoundedText(place[1]) + "," + RoundedText(place[2]);
}

constexpr char kScript[] = R"script(
for (const svg of document.querySelectorAll('svg.turn')) {
  const size = svg.viewBox.baseVal.width;
  let yaw = 0.6, pitch = 0.45, from = null;
  const at = text => {
    const [a, b, c] = text.split(',').map(Number);
    const x = a * Math.cos(yaw) + c * Math.sin(yaw);
    const depth = c * Math.cos(yaw) - a * Math.sin(yaw);
    const y = b * Math.cos(pitch) - depth * Math.sin(pitch);
    return [size / 2 + x * size * 0.42, size / 2 - y * size * 0.42];
  };
  const draw = () => {
    for (const line of svg.querySelectorAll('polyline')) {
      line.setAttribute('points', line.dataset.p.split(' ').map(at).join(' '));
    }
    for (const text of svg.querySelectorAll('text')) {
      const [x, y] = at(text.dataset.p);
      text.setAttribute('x', x + 6);
      text.setAttribute('y', y - 6);
    }
  };
  const turn = (right, up) => {
    yaw += right;
    pitch = Math.min(1.57, Math.max(-1.57, pitch + up));
    draw();
  };
  svg.addEventListener('pointerdown', event => {
    from = event;
    svg.setPointerCapture(event.pointerId);
  });
  svg.addEventListener('pointerup', () => { from = null; });
  svg.addEventListener('pointermove', event => {
    if (!from) return;
    turn((event.clientX - from.clientX) / 150, (event.clientY - from.clientY) / 150);
    from = event;
  });
  const keys = {ArrowLeft: [-0.1, 0], ArrowRight: [0.1, 0], ArrowUp: [0, -0.1], ArrowDown: [0, 0.1]};
  svg.addEventListener('keydown', event => {
    if (!keys[event.key]) return;
    turn(...keys[event.key]);
    event.preventDefault();
  });
}
)script";

// Of the script between its tags; tests/calib/bin/read-page compares.
constexpr char kScriptHash[] = "sha256-SiZ2vv7onggY6JINeesfy4MMJkyMUW8SppH+zmvmVXg=";

}  // namespace

std::string TurnableRig(const Rig& rig) {
  const Ball ball(rig);
  std::string drawing;
  for (const RigLine& line : rig.lines) {
    std::string places, points;
    for (const Point3& point : line.points) {
      const Place3 place = ball.At(point);
      const Projection at = Project(place);
      places += (places.empty() ? "" : " ") + PlaceText(place);
      points += (points.empty() ? "" : " ") + Coordinate(at.x) + "," + Coordinate(at.y);
    }
    std::string attributes = Class(ColorClass(line.dashed ? "l d l" : "l l", line.color));
    attributes.append(" data-p=\"")
        .append(places)
        .append("\" points=\"")
        .append(points)
        .append("\"");
    drawing += Tag("polyline", attributes, "");
  }
  for (const RigName& name : rig.names) {
    const Place3 place = ball.At(name.place);
    const Projection at = Project(place);
    drawing += Tag("text",
                   Class("e") + " data-p=\"" + PlaceText(place) + "\"" + Attribute("x", at.x + 6) +
                       Attribute("y", at.y - 6),
                   XmlText(name.text));
  }
  const std::string size = Coordinate(kSize);
  return Tag(
      "figure", " class=\"turn\"",
      Tag("svg",
          " class=\"turn\" role=\"application\" tabindex=\"0\" aria-label=\"The rig in space; "
          "arrow keys turn it\" width=\"" +
              size + "\" height=\"" + size + "\" viewBox=\"0 0 " + size + " " + size + "\"",
          drawing) +
          Tag("figcaption", " class=\"hint\"",
              "Drag it, or use the arrow keys, to turn it. The two drawings below show the "
              "same from above and from the side."));
}

std::string TurnScript() { return "<script>" + std::string(kScript) + "</script>\n"; }

std::string TurnScriptSource() { return "'" + std::string(kScriptHash) + "'"; }

}  // namespace calib
