#include "calib/charts/chart_text.h"

#include <algorithm>
#include <cmath>

#include "calib/charts/canvas.h"
#include "calib/console/printable.h"
#include "calib/console/terminal.h"

namespace calib {
namespace {

constexpr int kMargin = 11;  // columns for the numbers of y
constexpr int kRows = 14, kMostRows = 40, kLeastColumns = 20;

class TextLayout {
 public:
  TextLayout(const Chart& chart, int width)
      : chart_(chart),
        axes_(AxesOf(chart)),
        columns_(std::max(width - kMargin - 2, kLeastColumns)),
        rows_(kRows) {
    if (chart.image) FitImage();
    labels_.resize(static_cast<size_t>(rows_));
  }

  std::string Draw() {
    Canvas canvas(columns_, rows_);
    DrawArea(&canvas);
    if (!chart_.mark_label.empty()) {
      canvas.Line(0, Y(chart_.mark), canvas.width() - 1, Y(chart_.mark), 3);
    }
    DrawPoints(&canvas);
    LabelRows();
    std::string text = std::string(kMargin + 1, ' ') + Printable(chart_.y_name) + "\n";
    for (int row = 0; row < rows_; ++row) {
      text += labels_[static_cast<size_t>(row)] + canvas.Row(row) + "\n";
    }
    return text + ColumnLabels() + Legend();
  }

 private:
  // One scale for both axes, as large as there is room for; what is narrow is drawn wider, so that
  // its numbers have room.
  void FitImage() {
    const double dots = axes_.x.length() / (columns_ * Canvas::kDotsAcross);
    const double rows = std::ceil(axes_.y.length() / dots / Canvas::kDotsDown);
    if (rows <= kMostRows) {
      rows_ = std::max(static_cast<int>(rows), 2);
      return;
    }
    rows_ = kMostRows;
    const double columns = columns_ * kMostRows / rows;
    columns_ = std::max(static_cast<int>(columns), kLeastColumns);
  }

  int X(double value) const {
    return static_cast<int>(
        std::lround(axes_.x.Position(value, 0, columns_ * Canvas::kDotsAcross - 1)));
  }
  int Y(double value) const {
    const int last = rows_ * Canvas::kDotsDown - 1;
    return static_cast<int>(std::lround(chart_.image ? axes_.y.Position(value, 0, last)
                                                     : axes_.y.Position(value, last, 0)));
  }

  void DrawArea(Canvas* canvas) const {
    if (!HasArea(chart_)) return;
    const int left = X(0), right = X(chart_.area_width), top = Y(0), bottom = Y(chart_.area_height);
    canvas->Line(left, top, right, top);
    canvas->Line(left, bottom, right, bottom);
    canvas->Line(left, top, left, bottom);
    canvas->Line(right, top, right, bottom);
  }

  void DrawPoints(Canvas* canvas) const {
    for (size_t i = 0; i < chart_.points.size(); ++i) {
      const ChartPoint& point = chart_.points[i];
      const ChartPoint& before = chart_.points[i > 0 && chart_.connected ? i - 1 : i];
      canvas->Line(X(before.x), Y(before.y), X(point.x), Y(point.y));
      if (chart_.connected && chart_.points.size() > 1) continue;
      canvas->Line(X(point.x) + 1, Y(point.y), X(point.x), Y(point.y) + 1);
    }
  }

  void LabelRows() {
    for (std::string& label : labels_) label = std::string(kMargin, ' ') + "│";
    const std::vector<double> ticks = axes_.y.Ticks(std::max(rows_ / 3, 2), 0);
    const std::vector<std::string> numbers = TickTexts(ticks);
    for (size_t i = 0; i < ticks.size(); ++i) {
      const std::string& number = numbers[i];
      const int row = Y(ticks[i]) / Canvas::kDotsDown;
      const size_t blanks = kMargin - 1 - std::min<size_t>(number.size(), kMargin - 1);
      labels_[static_cast<size_t>(row)] = std::string(blanks, ' ') + number + " ┤";
    }
  }

  // The axis of x with its ticks, their numbers, and its name.
  std::string ColumnLabels() const {
    std::vector<std::string> line(static_cast<size_t>(columns_), "─");
    std::string numbers;
    const std::vector<double> ticks =
        axes_.x.Ticks(std::max(columns_ / 10, 2), chart_.x_counts ? 1 : 0);
    const std::vector<std::string> texts = TickTexts(ticks);
    for (size_t i = 0; i < ticks.size(); ++i) {
      const size_t column = static_cast<size_t>(X(ticks[i]) / Canvas::kDotsAcross);
      const std::string& number = texts[i];
      const size_t middle = kMargin + 1 + column, half = number.size() / 2;
      line[column] = "┬";
      const size_t blank = numbers.empty() ? 0 : 1;  // between two numbers
      if (middle - half < numbers.size() + blank) continue;
      numbers.resize(middle - half, ' ');
      numbers += number;
    }
    std::string text = std::string(kMargin, ' ') + "└";
    for (const std::string& piece : line) text += piece;
    const std::string name = Printable(chart_.x_name);
    const int left = std::max(columns_ - static_cast<int>(CountCharacters(name)), 0) / 2;
    return text + "\n" + numbers + "\n" +
           std::string(static_cast<size_t>(kMargin + 1 + left), ' ') + name + "\n";
  }

  std::string Legend() const {
    std::string text;
    if (HasArea(chart_)) text += "frame: " + chart_.area_label + "\n";
    if (!chart_.mark_label.empty()) text += "dotted line: " + chart_.mark_label + "\n";
    return text;
  }

  const Chart& chart_;
  const ChartAxes axes_;
  int columns_, rows_;
  std::vector<std::string> labels_;
};

}  // namespace

std::string ChartsAsText(const std::string& title, const std::vector<Chart>& charts, int width) {
  std::string text = Printable(title) + "\n";
  for (const Chart& chart : charts) {
    text += "\n" + Printable(chart.title) + "\n";
    for (const std::string& note : chart.notes) text += Wrap(Printable(note), 0, width);
    text += "\n" + TextLayout(chart, width).Draw();
  }
  return text;
}

}  // namespace calib
