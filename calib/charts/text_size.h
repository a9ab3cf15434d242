// How much room text takes in a drawing. Nobody knows the font that it will be seen in: widths are
// those of a wide one (DejaVu Sans), rounded up.
#ifndef CALIB_CHARTS_TEXT_SIZE_H_
#define CALIB_CHARTS_TEXT_SIZE_H_

#include <string>
#include <vector>

namespace calib {

// The width of printable text in UTF-8, in pixels, of a font of this size; bold is wider.
double TextWidth(const std::string& text, double size, bool bold = false);

// The text, or as much of its beginning as fits into the width, with an ellipsis behind it.
std::string ShortenToWidth(const std::string& text, double width, double size, bool bold = false);

// Lines no wider than that, broken at blanks; a word that is wider is shortened.
std::vector<std::string> WrapToWidth(const std::string& text, double width, double size);

}  // namespace calib

#endif  // CALIB_CHARTS_TEXT_SIZE_H_
