// Text of a file that is shown among the program's own: it may hold anything.
#ifndef CALIB_CONSOLE_PRINTABLE_H_
#define CALIB_CONSOLE_PRINTABLE_H_

#include <cstddef>
#include <string>

namespace calib {

// The text in UTF-8, with U+FFFD in place of control characters, of those that turn the direction
// of what follows, and of octets that are not UTF-8.
std::string Printable(const std::string& text);

// The same of each line.
std::string PrintableLines(const std::string& text);

// Whether all of the text is UTF-8.
bool IsUtf8(const std::string& text);

// The number of characters of text in UTF-8.
size_t CountCharacters(const std::string& text);

}  // namespace calib

#endif  // CALIB_CONSOLE_PRINTABLE_H_
