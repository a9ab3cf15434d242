#include "calib/charts/chart_svg.h"

#include <algorithm>

#include "calib/charts/chart_drawing.h"
#include "calib/charts/chart_style.h"
#include "calib/charts/svg.h"
#include "calib/charts/text_size.h"
#include "calib/console/printable.h"

namespace calib {
namespace {

constexpr double kWidth = 760, kMargin = 24, kGap = 24;
constexpr size_t kMostBytes = 1950000;   // of all drawings in a file
constexpr double kShareOfPoints = 0.75;  // of them
constexpr size_t kBytesOfSmall = 4000;
constexpr size_t kBytesOfPoint = 200;  // one that tells its numbers

int Columns(ChartSize size) {
  return size == ChartSize::kWide ? 1 : size == ChartSize::kHalf ? 2 : 4;
}

// Charts of one size share a row, as many as it has columns; a heading begins a new one.
size_t EndOfRow(const std::vector<Chart>& charts, size_t begin) {
  size_t end = begin + 1;
  while (end < charts.size() && end - begin < static_cast<size_t>(Columns(charts[begin].size)) &&
         charts[end].size == charts[begin].size && charts[end].heading.empty()) {
    ++end;
  }
  return end;
}

std::string Heading(const std::string& kind, const std::string& text, double* top) {
  std::string svg;
  for (const std::string& line : WrapToWidth(Printable(text), kWidth, 14)) {
    *top += 20;
    svg += XmlElement("text", Class(kind) + Attribute("x", kMargin) + Attribute("y", *top),
                      XmlText(line));
  }
  return svg;
}

struct Drawing {
  std::string svg;
  double height;
};

Drawing Draw(const std::vector<Chart>& charts, double top, size_t most_bytes) {
  const std::vector<ChartAxes> axes = AxesOf(charts);
  size_t points = 0;
  for (const Chart& chart : charts) points += CountPoints(chart);
  const auto for_points = static_cast<size_t>(static_cast<double>(most_bytes) * kShareOfPoints);
  const size_t share = for_points / std::max<size_t>(charts.size(), 1);
  const size_t most_points =
      points <= for_points / kBytesOfPoint / 2 ? points : share / kBytesOfPoint / 2;
  std::string svg;
  double bottom = top;
  for (size_t begin = 0, end; begin < charts.size(); begin = end) {
    end = EndOfRow(charts, begin);
    top = bottom;
    std::string row = Heading("t h2", charts[begin].heading, &top);
    row += Heading("n", charts[begin].heading_note, &top);
    const int columns = Columns(charts[begin].size);
    const double width = (kWidth - kGap * (columns - 1)) / columns;
    const auto lay_out = [&](size_t i, double head) {
      const double left = kMargin + (width + kGap) * static_cast<double>(i - begin);
      return ChartDrawing(charts[i], axes[i], left, top, width, head);
    };
    double head = 0;  // of the row, so that its plots stand side by side
    for (size_t i = begin; i < end; ++i) head = std::max(head, lay_out(i, 0).head());
    for (size_t i = begin; i < end; ++i) {
      const ChartDrawing drawing = lay_out(i, head);
      row += drawing.Draw(most_points, share);
      bottom = std::max(bottom, drawing.bottom() + (columns == 4 ? 8 : kGap));
    }
    if (begin > 0 && svg.size() + row.size() > most_bytes) {
      svg +=
          Heading("t h2",
                  std::to_string(charts.size() - begin) + " of " + std::to_string(charts.size()) +
                      " drawings are left out: they would make this too large",
                  &top);
      return {svg, top + kGap};
    }
    svg += row;
  }
  return {svg, bottom};
}

std::string Element(const Drawing& drawing, const std::string& head) {
  const std::string width = Coordinate(kWidth + 2 * kMargin), height = Coordinate(drawing.height);
  return XmlElement("svg",
                    " xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "\" height=\"" +
                        height + "\" viewBox=\"0 0 " + width + " " + height + "\"",
                    "\n" + head + drawing.svg);
}

}  // namespace

std::string ChartsAsSvg(const std::string& title, const std::vector<Chart>& charts) {
  const std::string line = ShortenToWidth(Printable(title), kWidth, 12);
  return Element(
      Draw(charts, kMargin + 18, kMostBytes),
      XmlElement("title", "", XmlText(title)) + XmlElement("style", "", ChartStyle()) +
          XmlElement("rect", Class("b") + " width=\"100%\" height=\"100%\"") +
          XmlElement("text", Class("n") + Attribute("x", kMargin) + Attribute("y", kMargin),
                     XmlText(line)));
}

std::string ChartsAsElement(const std::vector<Chart>& charts, size_t most_bytes) {
  return Element(Draw(charts, 0, most_bytes), "");
}

std::string SmallChartAsElement(const Chart& chart, double width) {
  const std::vector<ChartAxes> axes = AxesOf({chart});
  const ChartDrawing drawing(chart, axes[0], 2, 0, width - 4);
  const std::string across = Coordinate(width), down = Coordinate(drawing.bottom());
  return XmlElement("svg",
                    " xmlns=\"http://www.w3.org/2000/svg\" width=\"" + across + "\" height=\"" +
                        down + "\" viewBox=\"0 0 " + across + " " + down + "\"",
                    "\n" + drawing.Draw(0, kBytesOfSmall));
}

}  // namespace calib
