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
  TextLayout(const Chart& chart, const ChartAxes& axes, int width)
      : chart_(chart),
        axes_(axes),
        columns_(std::max(width - kMargin - 2, kLeastColumns)),
        rows_(kRows) {
    if (chart.same_scale) FitImage();
    labels_.resize(static_cast<size_t>(rows_));
  }

  std::string Draw() {
    Canvas canvas(columns_, rows_);
    DrawArea(&canvas);
    DrawCells(&canvas);
    for (const ChartMark& mark : chart_.marks) {
      if (axes_.y.Contains(mark.y)) {
        canvas.Line(0, Y(mark.y), canvas.width() - 1, Y(mark.y), 3);
      }
    }
    DrawLines(&canvas);
    for (const ChartSeries& series : chart_.series) DrawSeries(series, &canvas);
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
    return static_cast<int>(std::lround(chart_.y_down ? axes_.y.Position(value, 0, last)
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

  // Dots as dense as the cell is dark.
  void DrawCells(Canvas* canvas) const {
    for (const ChartCell& cell : chart_.cells) {
      if (cell.share <= 0) continue;
      const int step = cell.share > 0.66 ? 1 : cell.share > 0.33 ? 2 : 4;
      for (int y = Y(cell.y1); y < Y(cell.y2); y += step == 1 ? 1 : 2) {
        for (int x = X(cell.x1); x < X(cell.x2); x += step) canvas->Dot(x, y);
      }
    }
  }

  void DrawLines(Canvas* canvas) const {
    for (const ChartLine& line : chart_.lines) {
      for (size_t i = 1; i < line.points.size(); ++i) {
        const ChartPoint &before = line.points[i - 1], &point = line.points[i];
        if (point.after_gap) continue;
        canvas->Line(X(before.x), Y(before.y), X(point.x), Y(point.y), line.dashed ? 2 : 1);
      }
    }
  }

  // What lies far off is drawn at the edge.
  void DrawSeries(const ChartSeries& series, Canvas* canvas) const {
    const auto edge_x = [&](const ChartPoint& point) { return X(axes_.x.Nearest(point.x)); };
    const auto edge_y = [&](const ChartPoint& point) { return Y(axes_.y.Nearest(point.y)); };
    for (size_t i = 0; i < series.points.size(); ++i) {
      const ChartPoint& point = series.points[i];
      const int x = edge_x(point), y = edge_y(point);
      const bool first = i == 0 || point.after_gap;
      const bool last = i + 1 == series.points.size() || series.points[i + 1].after_gap;
      if (series.connected && !first) {
        const ChartPoint& before = series.points[i - 1];
        canvas->Line(edge_x(before), edge_y(before), x, y, series.second ? 2 : 1);
      } else if (!series.connected || last) {
        canvas->Line(x, y, x, y);
        canvas->Line(x + 1, y, x, y + 1);
      }
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
    for (const ChartLabel& label : chart_.labels) {
      text +=
          Printable(label.text) + ": " + RoundedText(label.x) + ", " + RoundedText(label.y) + "\n";
    }
    if (HasArea(chart_)) {
      text += "frame: " + RoundedText(chart_.area_width) + " by " +
              RoundedText(chart_.area_height) + "\n";
    }
    for (const ChartMark& mark : chart_.marks) {
      if (axes_.y.Contains(mark.y)) text += "dotted line: " + Printable(mark.label) + "\n";
    }
    for (const ChartSeries* series : LegendOf(chart_)) {
      if (series->connected) {
        text +=
            (series->second ? "dotted curve: " : "full curve: ") + Printable(series->name) + "\n";
      }
    }
    return text;
  }

  const Chart& chart_;
  const ChartAxes& axes_;
  int columns_, rows_;
  std::vector<std::string> labels_;
};

}  // namespace

std::string ChartsAsText(const std::string& title, const std::vector<Chart>& charts, int width) {
  std::string text = Printable(title) + "\n";
  const std::vector<ChartAxes> axes = AxesOf(charts);
  for (size_t i = 0; i < charts.size(); ++i) {
    const Chart& chart = charts[i];
    const char* const verdicts[] = {"", " - ok", " - FAILED"};
    if (!chart.heading.empty()) text += "\n" + Wrap(Printable(chart.heading), 0, width);
    if (!chart.heading_note.empty()) text += Wrap(Printable(chart.heading_note), 0, width);
    text += "\n" + Printable(chart.title) + verdicts[static_cast<int>(chart.verdict)] + "\n";
    for (const std::string& note : NotesOf(chart, axes[i])) {
      text += Wrap(Printable(note), 0, width);
    }
    if (chart.plot) text += "\n" + TextLayout(chart, axes[i], width).Draw();
  }
  return text;
}

}  // namespace calib
