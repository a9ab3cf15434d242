#include "calib/charts/chart_drawing.h"

#include <algorithm>
#include <cmath>

#include "calib/charts/chart_style.h"
#include "calib/charts/svg.h"
#include "calib/charts/text_size.h"
#include "calib/console/printable.h"

namespace calib {
namespace {

constexpr double kRight = 16, kTitleLine = 22, kNoteLine = 17, kText = 12, kSmallText = 10;
constexpr double kWideHeight = 260, kHalfHeight = 170, kSmallHeight = 84, kTallest = 760;
constexpr double kLeastPlot = 60;
constexpr double kFinestCell = 2, kCoarsestCell = 64;
constexpr double kFarStep = 14;  // marks of what lies far off are this far from each other

constexpr size_t kMostAvoidedPoints = 500;
constexpr size_t kMostLedTo = 40;        // of more labels none is led to by a long line
constexpr size_t kMostAvoided = 100000;  // labels times lines: the time that it may take to be neat

// How many ticks there is room for in a length where each takes `each`.
int TickCount(double length, double each) { return std::max(2, static_cast<int>(length / each)); }

std::string Text(const std::string& kind, double x, double y, const std::string& text,
                 const std::string& more = "") {
  return XmlElement("text", Class(kind) + Attribute("x", x) + Attribute("y", y) + more,
                    XmlText(text));
}

std::string Line(const std::string& kind, double x1, double y1, double x2, double y2) {
  return XmlElement("line", Class(kind) + Attribute("x1", x1) + Attribute("y1", y1) +
                                Attribute("x2", x2) + Attribute("y2", y2));
}

std::string Rectangle(const std::string& kind, double x1, double y1, double x2, double y2,
                      const std::string& more = "") {
  return XmlElement("rect", Class(kind) + Attribute("x", std::min(x1, x2)) +
                                Attribute("y", std::min(y1, y2)) +
                                Attribute("width", std::abs(x2 - x1)) +
                                Attribute("height", std::abs(y2 - y1)) + more);
}

std::string PixelText(const Pixel& place) {
  return Coordinate(place.x) + "," + Coordinate(place.y);
}

std::string VerdictText(Verdict verdict) {
  // A check mark and a cross, for those who do not see the color.
  if (verdict == Verdict::kPassed) return "\xe2\x9c\x93 ok";
  if (verdict == Verdict::kFailed) return "\xe2\x9c\x97 failed";
  return "";
}

// Where the line from an inner place to one beyond the box leaves it.
Pixel CutAt(const Pixel& inner, const Pixel& outer, const Box& box) {
  double share = 1;
  const auto cut = [&](double from, double to, double low, double high) {
    if (to < low) share = std::min(share, (from - low) / (from - to));
    if (to > high) share = std::min(share, (high - from) / (to - from));
  };
  cut(inner.x, outer.x, box.x1, box.x2);
  cut(inner.y, outer.y, box.y1, box.y2);
  return {inner.x + share * (outer.x - inner.x), inner.y + share * (outer.y - inner.y)};
}

}  // namespace

ChartDrawing::ChartDrawing(const Chart& chart, const ChartAxes& axes, double left, double top,
                           double width, double head)
    : chart_(chart),
      axes_(axes),
      small_(chart.size == ChartSize::kSmall),
      left_(left),
      width_(width),
      top_(top),
      below_(!chart.plot ? 0
             : small_    ? 18
                         : 46) {
  LayOutHead(top);
  y1_ = std::max(y1_, top + head);
  LayOutPlot();
}

void ChartDrawing::LayOutHead(double top) {
  title_y_ = top + kTitleLine;
  const double size = small_ ? kText : 15;
  const std::string verdict = VerdictText(chart_.verdict);
  const double for_verdict = verdict.empty() ? 0 : TextWidth(verdict, kText, true) + 12;
  title_ = ShortenToWidth(Printable(chart_.title), width_ - for_verdict, size, true);
  double line = title_y_;
  for (const std::string& note : NotesOf(chart_, axes_)) {
    if (small_) {
      line += 13;
      notes_.emplace_back(line, ShortenToWidth(Printable(note), width_, kSmallText));
      continue;
    }
    for (const std::string& part : WrapToWidth(Printable(note), width_, kText)) {
      line += kNoteLine;
      notes_.emplace_back(line, part);
    }
  }
  double x = left_;
  for (const ChartSeries* series : LegendOf(chart_)) {
    const double room = 28 + std::min(TextWidth(Printable(series->name), kText), width_ - 28) + 18;
    if (x == left_ || x + room > left_ + width_ + 18) {
      x = left_;
      line += kNoteLine;
    }
    legend_.push_back({{x, line}, series});
    x += room;
  }
  y1_ = line + 12;
}

std::vector<double> ChartDrawing::YTicks() const {
  return axes_.y.Ticks(TickCount(y2_ - y1_, small_ ? 40 : chart_.same_scale ? 60 : 38), 0);
}

double ChartDrawing::YTickWidth() const {
  double width = 0;
  for (const std::string& text : TickTexts(YTicks())) {
    width = std::max(width, TextWidth(text, small_ ? kSmallText : kText));
  }
  return width;
}

void ChartDrawing::LayOutPlot() {
  if (!chart_.plot) {
    x1_ = x2_ = left_;
    y2_ = y1_;
    return;
  }
  const double right = left_ + width_ - (small_ ? 4 : kRight);
  y2_ = y1_ + (small_ ? kSmallHeight : chart_.size == ChartSize::kHalf ? kHalfHeight : kWideHeight);
  x2_ = right;
  // The numbers at the axis take room, which may leave the axis shorter, with other numbers.
  for (int i = 0; i < 2; ++i) {
    x1_ = std::min(left_ + YTickWidth() + (small_ ? 6 : 30), right - kLeastPlot);
    if (!chart_.same_scale) continue;
    const double tallest = chart_.size == ChartSize::kWide ? kTallest : right - x1_;
    const double across = std::max(axes_.x.length(), axes_.y.length() / kLongestAxis);
    const double down = std::max(axes_.y.length(), axes_.x.length() / kLongestAxis);
    const double scale = std::min((right - x1_) / across, tallest / down);
    x2_ = x1_ + across * scale;
    y2_ = y1_ + down * scale;
  }
}

double ChartDrawing::Y(double value) const {
  return chart_.y_down ? axes_.y.Position(value, y1_, y2_) : axes_.y.Position(value, y2_, y1_);
}

Pixel ChartDrawing::At(const ChartPoint& point) const { return {X(point.x), Y(point.y)}; }

Pixel ChartDrawing::AtEdge(const ChartPoint& point) const {
  return {X(axes_.x.Nearest(point.x)), Y(axes_.y.Nearest(point.y))};
}

std::string ChartDrawing::Head() const {
  std::string svg = Text(small_ ? "a" : "t", left_, title_y_, title_);
  const std::string verdict = VerdictText(chart_.verdict);
  if (!verdict.empty()) {
    const double x = left_ + TextWidth(title_, small_ ? kText : 15, true) + 10;
    svg += Text(chart_.verdict == Verdict::kPassed ? "w good" : "w bad", x, title_y_, verdict);
  }
  for (const auto& note : notes_) svg += Text(small_ ? "n z" : "n", left_, note.first, note.second);
  for (const auto& entry : legend_) {
    const double x = entry.first.x, y = entry.first.y - 4;
    const ChartSeries& series = *entry.second;
    if (series.connected) {
      svg += Line(ColorClass(series.second ? "l d l" : "l l", series.color), x, y, x + 22, y);
    } else {
      svg += XmlElement("circle", Class(ColorClass(series.second ? "q q" : "p", series.color)) +
                                      Attribute("cx", x + 11) + Attribute("cy", y) + " r=\"3\"");
    }
    svg += Text("n", x + 28, entry.first.y,
                ShortenToWidth(Printable(series.name), width_ - 28, kText));
  }
  return svg;
}

std::string ChartDrawing::Grid() const {
  std::string path;
  if (!small_) {
    const double least = chart_.x_counts ? 1 : 0;
    for (const double tick : axes_.x.Ticks(TickCount(x2_ - x1_, 75), least)) {
      path += "M" + Coordinate(X(tick)) + " " + Coordinate(y1_) + "V" + Coordinate(y2_);
    }
  }
  for (const double tick : YTicks()) {
    path += "M" + Coordinate(x1_) + " " + Coordinate(Y(tick)) + "H" + Coordinate(x2_);
  }
  return path.empty() ? "" : XmlElement("path", Class("g") + " d=\"" + path + "\"");
}

std::string ChartDrawing::TickLabels() const {
  const double size = small_ ? kSmallText : kText;
  const std::string tiny = small_ ? " z" : "";
  std::string svg;
  LabelPlaces places({left_ - 20, y2_, left_ + width_ + 20, y2_ + below_});
  const std::vector<double> x_ticks =
      axes_.x.Ticks(TickCount(x2_ - x1_, small_ ? 60 : 75), chart_.x_counts ? 1 : 0);
  const std::vector<std::string> x_texts = TickTexts(x_ticks);
  for (size_t i = 0; i < x_ticks.size(); ++i) {
    const double half = TextWidth(x_texts[i], size) / 2 + 3, x = X(x_ticks[i]);
    if (places.Take({{x - half, y2_ + 2, x + half, y2_ + 4 + size}}) < 0) continue;
    svg += Text("x" + tiny, x, y2_ + (small_ ? 12 : 17), x_texts[i]);
  }
  const std::vector<double> y_ticks = YTicks();
  const std::vector<std::string> y_texts = TickTexts(y_ticks);
  for (size_t i = 0; i < y_ticks.size(); ++i) {
    svg += Text("y" + tiny, x1_ - (small_ ? 4 : 7), Y(y_ticks[i]) + 4, y_texts[i]);
  }
  return svg;
}

std::string ChartDrawing::Names() const {
  if (small_) return "";
  const double middle = (y1_ + y2_) / 2, side = left_ + 12;
  const auto name = [](const std::string& text, double room) {
    return ShortenToWidth(Printable(text), room, kText, true);
  };
  const double half = (x1_ + x2_) / 2;
  const double room = 2 * std::min(half - left_ + 20, left_ + width_ + 20 - half);
  return Text("x a", half, y2_ + 36, name(chart_.x_name, room)) +
         Text("x a", side, middle, name(chart_.y_name, y2_ - y1_ + 40),
              " transform=\"rotate(-90 " + Coordinate(side) + " " + Coordinate(middle) + ")\"");
}

// In the drawing. Of a picture, whole numbers are the middles of pixels.
Box ChartDrawing::AreaBox() const {
  const double off = chart_.area_picture.empty() ? 0 : 0.5;
  return {X(-off), Y(-off), X(chart_.area_width - off), Y(chart_.area_height - off)};
}

std::string ChartDrawing::Area() const {
  if (!HasArea(chart_)) return "";
  const Box box = AreaBox();
  if (chart_.area_picture.empty()) return Rectangle("i", box.x1, box.y1, box.x2, box.y2);
  return XmlElement(
      "image", Attribute("x", std::min(box.x1, box.x2)) + Attribute("y", std::min(box.y1, box.y2)) +
                   Attribute("width", std::abs(box.x2 - box.x1)) +
                   Attribute("height", std::abs(box.y2 - box.y1)) +
                   " preserveAspectRatio=\"none\" href=\"" + chart_.area_picture + "\"");
}

// Above all that is drawn in it, so that it is seen.
std::string ChartDrawing::AreaBorder() const {
  if (!HasArea(chart_)) return "";
  const Box box = AreaBox();
  return Rectangle("j", box.x1, box.y1, box.x2, box.y2);
}

std::string ChartDrawing::Cells() const {
  std::string svg;
  for (const ChartCell& cell : chart_.cells) {
    const double x1 = X(cell.x1), y1 = Y(cell.y1), x2 = X(cell.x2), y2 = Y(cell.y2);
    const double share = std::min(std::max(cell.share, 0.0), 1.0);
    svg += Rectangle("h", x1, y1, x2, y2, " fill-opacity=\"" + RoundedText(share) + "\"");
    if (cell.text.empty() || TextWidth(cell.text, kSmallText) > std::abs(x2 - x1) ||
        kSmallText > std::abs(y2 - y1)) {
      continue;
    }
    // Each is read on its ground both by day and by night.
    svg += Text(share > 0.75  ? "v z"
                : share > 0.6 ? "c z"
                              : "u z",
                (x1 + x2) / 2, (y1 + y2) / 2 + 4, cell.text);
  }
  return svg;
}

std::string ChartDrawing::Lines() const {
  std::string svg;
  for (const ChartLine& line : chart_.lines) {
    std::string path;
    for (const ChartPoint& point : line.points) {
      path += (path.empty() || point.after_gap ? "M" : "L") + PixelText(At(point));
    }
    const size_t count = line.points.size();
    if (line.arrow && count > 1) {
      const Pixel tip = At(line.points[count - 1]), tail = At(line.points[count - 2]);
      const double length = std::hypot(tip.x - tail.x, tip.y - tail.y);
      const double head = std::min(4.0, length / 2);
      if (length > 0.5) {
        const double dx = (tip.x - tail.x) / length * head, dy = (tip.y - tail.y) / length * head;
        path += "M" + PixelText({tip.x - dx - dy / 2, tip.y - dy + dx / 2}) + "L" + PixelText(tip) +
                "L" + PixelText({tip.x - dx + dy / 2, tip.y - dy - dx / 2});
      }
    }
    const std::string course = " d=\"" + path + "\"";
    if (line.over) svg += XmlElement("path", Class("hl") + course);
    svg +=
        XmlElement("path", Class(ColorClass(line.dashed ? "l d l" : "l l", line.color)) + course);
  }
  return svg;
}

std::string ChartDrawing::CurvePiece(const std::vector<Pixel>& piece,
                                     const ChartSeries& series) const {
  if (piece.size() < 2) return "";
  std::string path;
  for (const Pixel& place : ThinnedCurve(piece))
    path += (path.empty() ? "" : " ") + PixelText(place);
  return XmlElement("polyline", Class(ColorClass(series.second ? "l d l" : "l l", series.color)) +
                                    " points=\"" + path + "\"");
}

// Lines run from point to point, but not across a gap; towards what lies far off, up to the edge.
std::string ChartDrawing::Curve(const ChartSeries& series) const {
  const Box box{x1_, y1_, x2_, y2_};
  std::string svg;
  std::vector<Pixel> piece;
  for (size_t i = 0; i < series.points.size(); ++i) {
    const ChartPoint& point = series.points[i];
    const bool held = axes_.Hold(point);
    if (point.after_gap || i == 0) {
      svg += CurvePiece(piece, series);
      piece.clear();
    } else {
      const ChartPoint& before = series.points[i - 1];
      const bool before_held = axes_.Hold(before);
      if (held && !before_held) piece.push_back(CutAt(At(point), At(before), box));
      if (!held && before_held) {
        piece.push_back(CutAt(At(before), At(point), box));
        svg += CurvePiece(piece, series);
        piece.clear();
      }
    }
    if (held) piece.push_back(At(point));
  }
  return svg + CurvePiece(piece, series);
}

std::string ChartDrawing::Points(const ChartSeries& series) const {
  const std::string kind = Class(ColorClass(series.second ? "q q" : "p", series.color) +
                                 (chart_.area_picture.empty() ? "" : " on"));
  std::string svg;
  for (const ChartPoint& point : series.points) {
    if (!axes_.Hold(point)) continue;
    const Pixel place = At(point);
    svg += XmlElement("circle",
                      kind + Attribute("cx", place.x) + Attribute("cy", place.y) + " r=\"2.6\"",
                      XmlElement("title", "", XmlText(PointText(chart_, series, point))));
  }
  return svg;
}

std::string ChartDrawing::Swarm(const std::vector<ChartPoint>& points, int color,
                                double cell) const {
  std::vector<Pixel> places;
  places.reserve(points.size());
  for (const ChartPoint& point : points) {
    if (axes_.Hold(point)) places.push_back({X(point.x) - x1_, Y(point.y) - y1_});
  }
  std::string path;
  for (const DotRun& run : HitCells(places, cell)) {
    path += "M" + Coordinate(x1_ + static_cast<double>(run.column) * cell) + " " +
            Coordinate(y1_ + (static_cast<double>(run.row) + 0.5) * cell) + "h" +
            Coordinate(static_cast<double>(run.count) * cell);
  }
  if (path.empty()) return "";
  return XmlElement("path", Class(ColorClass("s l", color)) + " stroke-width=\"" +
                                Coordinate(cell) + "\" d=\"" + path + "\"");
}

// The points in cells as fine as there are bytes for; those of curves are seen by their lines,
// unless there are gaps on both sides.
std::string ChartDrawing::Swarms(size_t most_bytes) const {
  std::vector<ChartSeries> swarms;
  for (const ChartSeries& series : chart_.series) {
    swarms.push_back({series.name, series.element, {}, false, series.color, false});
    for (size_t i = 0; i < series.points.size(); ++i) {
      const bool last = i + 1 == series.points.size() || series.points[i + 1].after_gap;
      const bool lone = last && (i == 0 || series.points[i].after_gap);
      if (!series.connected || lone) swarms.back().points.push_back(series.points[i]);
    }
  }
  for (double cell = kFinestCell;; cell *= 2) {
    std::string svg;
    for (const ChartSeries& swarm : swarms) svg += Swarm(swarm.points, swarm.color, cell);
    if (svg.size() <= most_bytes || cell >= kCoarsestCell) return svg;
  }
}

// A triangle for each stretch of the edge beyond which points lie, with the number if it is one,
// and else with how many there are.
std::string ChartDrawing::FarOff(LabelPlaces* places) const {
  struct Far {
    Pixel place;
    double dx, dy;
    size_t count;
    std::string text, name;
  };
  std::vector<Far> far;
  for (const ChartSeries& series : chart_.series) {
    for (const ChartPoint& point : series.points) {
      if (axes_.Hold(point)) continue;
      const Pixel edge = AtEdge(point);
      const double dx = point.x < axes_.x.low() ? -1 : point.x > axes_.x.high() ? 1 : 0;
      double dy = point.y < axes_.y.low() ? 1 : point.y > axes_.y.high() ? -1 : 0;
      if (chart_.y_down) dy = -dy;
      const Pixel place{dx == 0 ? std::round((edge.x - x1_) / kFarStep) * kFarStep + x1_ : edge.x,
                        dy == 0 ? std::round((edge.y - y1_) / kFarStep) * kFarStep + y1_ : edge.y};
      const auto same = std::find_if(far.begin(), far.end(), [&](const Far& other) {
        return std::abs(other.place.x - place.x) < 1 && std::abs(other.place.y - place.y) < 1;
      });
      if (same != far.end()) {
        ++same->count;
        continue;
      }
      const std::string x = RoundedText(point.x), y = RoundedText(point.y);
      std::string text = dx == 0 ? y : x;
      if (dx != 0 && dy != 0) text.append(", ").append(y);
      far.push_back({place, dx, dy, 1, text, PointText(chart_, series, point)});
    }
  }
  std::string svg;
  for (const Far& one : far) {
    const double length = std::hypot(one.dx, one.dy), ux = one.dx / length, uy = one.dy / length;
    const Pixel& tip = one.place;
    const Pixel base{tip.x - ux * 8, tip.y - uy * 8};
    const std::string name =
        one.count == 1 ? one.name : std::to_string(one.count) + " points beyond the edge";
    svg += XmlElement("path",
                      Class("o") + " d=\"M" + PixelText(tip) + "L" +
                          PixelText({base.x - uy * 5, base.y + ux * 5}) + "L" +
                          PixelText({base.x + uy * 5, base.y - ux * 5}) + "Z\"",
                      XmlElement("title", "", XmlText(name)));
    if (small_) continue;
    const std::string text = one.count == 1 ? one.text : "\xc3\x97" + std::to_string(one.count);
    const double text_width = TextWidth(text, kText), y = base.y - uy * 9;
    std::vector<Box> boxes;
    std::vector<double> starts;
    for (const double x : {base.x - ux * 4 -
                               (ux > 0   ? text_width
                                : ux < 0 ? 0
                                         : text_width / 2),
                           base.x + 8, base.x - 8 - text_width}) {
      starts.push_back(x);
      boxes.push_back({x - 2, y - 7, x + text_width + 2, y + 7});
    }
    const int place = places->Take(boxes);
    if (place < 0) continue;
    svg += Text("k", starts[static_cast<size_t>(place)], y + 4, text);
  }
  return svg;
}

void ChartDrawing::AvoidCurves(LabelPlaces* places) const {
  for (const ChartSeries& series : chart_.series) {
    if (!series.connected || series.points.size() > kMostAvoidedPoints) continue;
    for (size_t i = 1; i < series.points.size(); ++i) {
      const Pixel from = AtEdge(series.points[i - 1]), to = AtEdge(series.points[i]);
      if (!series.points[i].after_gap) places->Avoid(from.x, from.y, to.x, to.y);
    }
  }
}

std::string ChartDrawing::Marks(LabelPlaces* places) const {
  std::string svg;
  for (const ChartMark& mark : chart_.marks) {
    if (!axes_.y.Contains(mark.y)) continue;
    svg += Line("m", x1_, Y(mark.y), x2_, Y(mark.y));
    places->Take({{x1_, Y(mark.y) - 1, x2_, Y(mark.y) + 1}});  // no label on any of the lines
  }
  for (const ChartMark& mark : chart_.marks) {
    if (!axes_.y.Contains(mark.y)) continue;
    const double y = Y(mark.y);
    const double size = small_ ? kSmallText : kText;
    const std::string label = ShortenToWidth(Printable(mark.label), x2_ - x1_ - 12, size);
    const double width = TextWidth(label, size);
    std::vector<Box> boxes;
    for (int step = 0; step < 12; ++step) {
      for (const double baseline : {y - 5 - step * 15, y + 14 + step * 15}) {
        for (const double x : {x2_ - 6 - width, x1_ + 6}) {
          boxes.push_back({x, baseline - size, x + width, baseline + 3});
        }
      }
    }
    const int place = places->Take(boxes);
    if (place < 0) continue;
    const Box& box = boxes[static_cast<size_t>(place)];
    svg += Text(small_ ? "k z" : "k", box.x1, box.y2 - 3, label);
  }
  return svg;
}

// Names beside what they name. One without room is told in the list that the chart comes with.
std::string ChartDrawing::Labels(LabelPlaces* places) const {
  std::string svg;
  if (chart_.lines.size() * chart_.labels.size() <= kMostAvoided) {
    for (const ChartLine& line : chart_.lines) {
      for (size_t i = 1; i < line.points.size(); ++i) {
        const Pixel from = At(line.points[i - 1]), to = At(line.points[i]);
        if (!line.points[i].after_gap) places->Avoid(from.x, from.y, to.x, to.y);
      }
    }
  }
  const bool crowded = chart_.labels.size() > kMostLedTo, over_points = CountPoints(chart_) > 0;
  for (const ChartLabel& label : chart_.labels) {
    const double x = X(label.x), y = Y(label.y);
    const std::string text = ShortenToWidth(Printable(label.text), (x2_ - x1_) * 0.6, kText);
    const double width = TextWidth(text, kText);
    std::vector<Box> boxes;
    for (const double out : {9.0, 24.0, 42.0, 64.0, 90.0}) {
      if (crowded && out > 24) break;
      for (const Pixel& corner :
           {Pixel{x + out, y - 8}, Pixel{x - out - width, y - 8},
            Pixel{x - width / 2, y - out - 14}, Pixel{x - width / 2, y + out},
            Pixel{x + out, y - out - 10}, Pixel{x + out, y + out},
            Pixel{x - out - width, y - out - 10}, Pixel{x - out - width, y + out}}) {
        boxes.push_back({corner.x, corner.y, corner.x + width, corner.y + 15});
      }
    }
    const int place = places->Take(boxes);
    if (place < 0) continue;
    const Box& box = boxes[static_cast<size_t>(place)];
    const Pixel near{std::min(std::max(x, box.x1), box.x2), std::min(std::max(y, box.y1), box.y2)};
    if (place >= 8) svg += Line("g", x, y, near.x, near.y);
    if (over_points) svg += Rectangle("b", box.x1 - 2, box.y1, box.x2 + 2, box.y2);
    svg += Text("e", box.x1, box.y2 - 4, text);
  }
  return svg;
}

// What a screen reader says in place of the drawing.
std::string ChartDrawing::Spoken() const {
  std::string text = chart_.title;
  if (chart_.verdict != Verdict::kNone) {
    text += chart_.verdict == Verdict::kPassed ? ", ok" : ", failed";
  }
  for (const std::string& note : NotesOf(chart_, axes_)) text += "; " + note;
  return XmlText(text);
}

std::string ChartDrawing::Draw(size_t most_points, size_t most_bytes) const {
  const auto drawn = [this](const std::string& svg) {
    return XmlElement("g", " role=\"img\" aria-label=\"" + Spoken() + "\"", "\n" + svg);
  };
  if (!chart_.plot) return drawn(Head());
  LabelPlaces places({x1_, y1_, x2_, y2_});
  const size_t count = CountPoints(chart_);
  const bool single = count <= most_points && !small_;
  std::string svg = Head() + Rectangle("b", x1_, y1_, x2_, y2_) +
                    (chart_.area_picture.empty() ? Area() + Grid() : Grid() + Area()) + Cells();
  svg += TickLabels() + Names();
  for (const ChartSeries& series : chart_.series) {
    if (series.connected) svg += Curve(series);
  }
  if (single) {
    for (const ChartSeries& series : chart_.series) {
      if (!series.smooth) svg += Points(series);
    }
  } else {
    svg += Swarms(most_bytes);
  }
  svg += Lines() + AreaBorder();
  svg += Rectangle(chart_.verdict == Verdict::kFailed ? "r" : "f", x1_, y1_, x2_, y2_);
  AvoidCurves(&places);
  svg += Marks(&places);
  svg += FarOff(&places);
  svg += Labels(&places);
  if (count == 0 && chart_.lines.empty() && chart_.cells.empty()) {
    svg += Text(small_ ? "x z" : "x", (x1_ + x2_) / 2, (y1_ + y2_) / 2 + 4, "no values");
  }
  return drawn(svg);
}

}  // namespace calib
