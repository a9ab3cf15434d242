#include "calib/charts/canvas.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace calib {

Canvas::Canvas(int columns, int rows)
    : columns_(columns),
      rows_(rows),
      cells_(static_cast<size_t>(columns) * static_cast<size_t>(rows)) {}

size_t Canvas::CellAt(int column, int row) const {
  return static_cast<size_t>(row) * static_cast<size_t>(columns_) + static_cast<size_t>(column);
}

void Canvas::Dot(int x, int y) {
  if (x < 0 || y < 0 || x >= width() || y >= height()) return;
  // Unicode counts the upper three rows of dots column by column, and the lowest one last.
  constexpr unsigned char kBits[kDotsDown][kDotsAcross] = {{1, 8}, {2, 16}, {4, 32}, {64, 128}};
  cells_[CellAt(x / kDotsAcross, y / kDotsDown)] |= kBits[y % kDotsDown][x % kDotsAcross];
}

void Canvas::Line(int x1, int y1, int x2, int y2, int every) {
  const int steps = std::max({std::abs(x2 - x1), std::abs(y2 - y1), 1});
  for (int i = 0; i <= steps; i += every) {
    const double share = static_cast<double>(i) / steps;
    Dot(x1 + static_cast<int>(std::lround(share * (x2 - x1))),
        y1 + static_cast<int>(std::lround(share * (y2 - y1))));
  }
}

std::string Canvas::Row(int row) const {
  std::string text, blanks;
  for (int column = 0; column < columns_; ++column) {
    const unsigned cell = cells_[CellAt(column, row)];
    if (cell == 0) {
      blanks += ' ';
      continue;
    }
    // U+2800 and the bits, as UTF-8.
    text += blanks + '\xe2' + static_cast<char>(0xa0 | cell >> 6) +
            static_cast<char>(0x80 | (cell & 0x3f));
    blanks.clear();
  }
  return text;
}

}  // namespace calib
