// One chart as SVG, laid out from its upper left corner.
#ifndef CALIB_CHARTS_CHART_DRAWING_H_
#define CALIB_CHARTS_CHART_DRAWING_H_

#include <string>
#include <utility>
#include <vector>

#include "calib/charts/chart.h"
#include "calib/charts/label_places.h"
#include "calib/charts/thinning.h"

namespace calib {

class ChartDrawing {
 public:
  // The chart must stay; `axes` are its own. It takes `width` pixels, and at least `head` of them
  // above the plot.
  ChartDrawing(const Chart& chart, const ChartAxes& axes, double left, double top, double width,
               double head = 0);

  double head() const { return y1_ - top_; }
  double bottom() const { return y2_ + below_; }

  // Each point by itself, which tells its numbers when pointed at, if there are no more than
  // `most_points`; else what is seen of them, in about `most_bytes`.
  std::string Draw(size_t most_points, size_t most_bytes) const;

 private:
  void LayOutHead(double top);
  void LayOutPlot();
  double YTickWidth() const;
  std::vector<double> YTicks() const;

  double X(double value) const { return axes_.x.Position(value, x1_, x2_); }
  double Y(double value) const;
  Pixel At(const ChartPoint& point) const;
  Pixel AtEdge(const ChartPoint& point) const;

  std::string Spoken() const;
  std::string Head() const;
  std::string Grid() const;
  std::string TickLabels() const;
  std::string Names() const;
  Box AreaBox() const;
  std::string Area() const;
  std::string AreaBorder() const;
  std::string Cells() const;
  std::string Lines() const;
  std::string Curve(const ChartSeries& series) const;
  std::string CurvePiece(const std::vector<Pixel>& piece, const ChartSeries& series) const;
  std::string Points(const ChartSeries& series) const;
  std::string Swarm(const std::vector<ChartPoint>& points, int color, double cell) const;
  std::string Swarms(size_t most_bytes) const;
  void AvoidCurves(LabelPlaces* places) const;
  std::string FarOff(LabelPlaces* places) const;
  std::string Marks(LabelPlaces* places) const;
  std::string Labels(LabelPlaces* places) const;

  const Chart& chart_;
  const ChartAxes& axes_;
  const bool small_;
  const double left_, width_;
  double top_, below_;
  std::string title_;
  std::vector<std::pair<double, std::string>> notes_;  // where, and the line
  std::vector<std::pair<Pixel, const ChartSeries*>> legend_;
  double title_y_, x1_, x2_, y1_, y2_;
};

}  // namespace calib

#endif  // CALIB_CHARTS_CHART_DRAWING_H_
