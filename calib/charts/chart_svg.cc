#include "calib/charts/chart_svg.h"

#include <algorithm>
#include <cmath>

#include "calib/charts/svg.h"

namespace calib {

namespace {

constexpr double kWidth = 760, kMargin = 24, kGap = 24;
constexpr double kLeft = 84, kRight = 16, kBottom = 46, kTitleLine = 22, kNoteLine = 18;
constexpr double kCurveHeight = 260, kSmallHeight = 170, kTallestImage = 760;

constexpr char kStyle[] =
    "text{font-family:'DejaVu Sans','Helvetica Neue',Arial,sans-serif;font-size:12px;fill:#333}"
    ".t{font-size:15px;font-weight:bold;fill:#111}.n{fill:#666}.x{text-anchor:middle}"
    ".y{text-anchor:end}.a{font-weight:bold}.g{stroke:#e4e4e4}.f{fill:none;stroke:#999}"
    ".i{fill:#f2f6fb;stroke:#5b7fa8;stroke-width:1.5}.l{fill:none;stroke:#1f6fb4;stroke-width:1.5}"
    ".p{fill:#1f6fb4}.m{stroke:#b3541e;stroke-dasharray:6 4}.k{fill:#b3541e}";

// How many ticks there is room for in a length where each takes `each`.
int TickCount(double length, double each) { return std::max(2, static_cast<int>(length / each)); }

std::string Label(const std::string& kind, double x, double y, const std::string& text,
                  const std::string& more = "") {
  return XmlElement("text", " class=\"" + kind + "\"" + At("x", x) + At("y", y) + more,
                    XmlText(text));
}

std::string Line(const std::string& kind, double x1, double y1, double x2, double y2) {
  return XmlElement("line", " class=\"" + kind + "\"" + At("x1", x1) + At("y1", y1) + At("x2", x2) +
                                At("y2", y2));
}

std::string Rectangle(const std::string& kind, double x1, double y1, double x2, double y2) {
  return XmlElement("rect", " class=\"" + kind + "\"" + At("x", std::min(x1, x2)) +
                                At("y", std::min(y1, y2)) + At("width", std::abs(x2 - x1)) +
                                At("height", std::abs(y2 - y1)));
}

// A chart laid out from its upper left corner.
class Layout {
 public:
  Layout(const Chart& chart, double left, double top, double width)
      : chart_(chart), axes_(AxesOf(chart)), left_(left) {
    title_ = top + kTitleLine;
    x1_ = left + kLeft;
    x2_ = left + width - kRight;
    y1_ = title_ + 12 + kNoteLine * static_cast<double>(chart.notes.size());
    y2_ = y1_ + (chart.small ? kSmallHeight : kCurveHeight);
    if (chart.image) FitImage();
  }

  double bottom() const { return y2_ + kBottom; }

  std::string Draw() const {
    std::string svg = Label("t", left_, title_, chart_.title);
    double line = title_;
    for (const std::string& note : chart_.notes) {
      svg += Label("n", left_, line += kNoteLine, note);
    }
    return svg + Area() + Axes() + Mark() + Points();
  }

 private:
  // One scale for both axes, as large as there is room for.
  void FitImage() {
    const double scale = std::min((x2_ - x1_) / axes_.x.length(), kTallestImage / axes_.y.length());
    x2_ = x1_ + axes_.x.length() * scale;
    y2_ = y1_ + axes_.y.length() * scale;
  }

  double X(double value) const { return axes_.x.Position(value, x1_, x2_); }
  double Y(double value) const {
    return chart_.image ? axes_.y.Position(value, y1_, y2_) : axes_.y.Position(value, y2_, y1_);
  }

  std::string Axes() const {
    std::string svg;
    const double least = chart_.x_counts ? 1 : 0;
    const std::vector<double> x_ticks = axes_.x.Ticks(TickCount(x2_ - x1_, 75), least);
    const std::vector<std::string> x_texts = TickTexts(x_ticks);
    for (size_t i = 0; i < x_ticks.size(); ++i) {
      svg += Line("g", X(x_ticks[i]), y1_, X(x_ticks[i]), y2_);
      svg += Label("x", X(x_ticks[i]), y2_ + 17, x_texts[i]);
    }
    const std::vector<double> y_ticks =
        axes_.y.Ticks(TickCount(y2_ - y1_, chart_.image ? 60 : 38), 0);
    const std::vector<std::string> y_texts = TickTexts(y_ticks);
    for (size_t i = 0; i < y_ticks.size(); ++i) {
      svg += Line("g", x1_, Y(y_ticks[i]), x2_, Y(y_ticks[i]));
      svg += Label("y", x1_ - 7, Y(y_ticks[i]) + 4, y_texts[i]);
    }
    const double middle = (y1_ + y2_) / 2, side = left_ + 12;
    svg += Rectangle("f", x1_, y1_, x2_, y2_);
    svg += Label("x a", (x1_ + x2_) / 2, y2_ + 36, chart_.x_name);
    svg += Label("x a", side, middle, chart_.y_name,
                 " transform=\"rotate(-90 " + Coordinate(side) + " " + Coordinate(middle) + ")\"");
    return svg;
  }

  std::string Area() const {
    if (!HasArea(chart_)) return "";
    return Rectangle("i", X(0), Y(0), X(chart_.area_width), Y(chart_.area_height)) +
           Label("n", X(0) + 6, Y(0) + 16, chart_.area_label);
  }

  std::string Mark() const {
    if (chart_.mark_label.empty()) return "";
    return Line("m", x1_, Y(chart_.mark), x2_, Y(chart_.mark)) +
           Label("y k", x2_ - 6, Y(chart_.mark) - 6, chart_.mark_label);
  }

  std::string Points() const {
    std::string svg, line;
    for (const ChartPoint& point : chart_.points) {
      line += (line.empty() ? "" : " ") + Coordinate(X(point.x)) + "," + Coordinate(Y(point.y));
      svg += XmlElement("circle",
                        " class=\"p\"" + At("cx", X(point.x)) + At("cy", Y(point.y)) + " r=\"2.6\"",
                        "<title>" + XmlText(point.label) + "</title>");
    }
    if (!chart_.connected || chart_.points.size() < 2) return svg;
    return XmlElement("polyline", " class=\"l\" points=\"" + line + "\"") + svg;
  }

  const Chart& chart_;
  const ChartAxes axes_;
  double left_;
  double title_, x1_, x2_, y1_, y2_;
};

}  // namespace

std::string ChartsAsSvg(const std::string& title, const std::vector<Chart>& charts) {
  const double half = (kWidth - kGap) / 2;
  std::string drawn = Label("n", kMargin, kMargin, title);
  double top = 0, bottom = kMargin + kNoteLine;
  bool beside = false;  // the chart before was small and has room beside it
  for (const Chart& chart : charts) {
    beside = beside && chart.small;
    if (!beside) top = bottom;
    const Layout layout(chart, kMargin + (beside ? half + kGap : 0), top,
                        chart.small ? half : kWidth);
    drawn += layout.Draw();
    bottom = std::max(bottom, layout.bottom() + kGap);
    beside = chart.small && !beside;
  }
  const std::string width = Coordinate(kWidth + 2 * kMargin), height = Coordinate(bottom);
  return XmlElement(
      "svg",
      " xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "\" height=\"" + height +
          "\" viewBox=\"0 0 " + width + " " + height + "\"",
      "\n" + XmlElement("title", "", XmlText(title)) + XmlElement("style", "", kStyle) +
          XmlElement("rect", " width=\"100%\" height=\"100%\" fill=\"#fff\"") + drawn);
}

}  // namespace calib
