// A drawing of dots as text: each character holds a block of 2 by 4 dots (Unicode's Braille
// patterns), which makes the dots' distances about equal both ways on a terminal.
#ifndef CALIB_CHARTS_CANVAS_H_
#define CALIB_CHARTS_CANVAS_H_

#include <cstddef>
#include <string>
#include <vector>

namespace calib {

class Canvas {
 public:
  static constexpr int kDotsAcross = 2, kDotsDown = 4;  // of one character

  Canvas(int columns, int rows);

  // The dots' range; (0, 0) is at the upper left.
  int width() const { return columns_ * kDotsAcross; }
  int height() const { return rows_ * kDotsDown; }

  // Draws a dot; one that lies outside is not drawn.
  void Dot(int x, int y);
  // Draws a line of dots, of which every `every`th is drawn.
  void Line(int x1, int y1, int x2, int y2, int every = 1);

  // A row of characters in UTF-8, without blanks at the end.
  std::string Row(int row) const;

 private:
  size_t CellAt(int column, int row) const;

  int columns_, rows_;
  std::vector<unsigned char> cells_;  // by rows; a bit for each dot
};

}  // namespace calib

#endif  // CALIB_CHARTS_CANVAS_H_
