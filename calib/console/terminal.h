// What standard output is, and text laid out for it.
#ifndef CALIB_CONSOLE_TERMINAL_H_
#define CALIB_CONSOLE_TERMINAL_H_

#include <string>

namespace calib {

// The number of columns to fill: what the environment variable COLUMNS says, if that is from 20 to
// 10000, else that of the terminal; 80 if standard output is none.
int OutputWidth();

// Whether to use colors, by the value of --color: "always", "never", or "auto", which is "always"
// on a terminal unless the environment variable NO_COLOR is set.
bool UseColor(const std::string& choice);

enum class Color { kRed = 31, kGreen = 32, kCyan = 36 };

// The text in that color, or as it is without `use_color`.
std::string Painted(const std::string& text, Color color, bool use_color);

// Breaks `text` at blanks into lines of at most `width` columns, each indented by `indent`, and
// ends the last one, too.
std::string Wrap(const std::string& text, int indent, int width);

}  // namespace calib

#endif  // CALIB_CONSOLE_TERMINAL_H_
