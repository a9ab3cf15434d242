#include "calib/console/printable.h"

#include <algorithm>

namespace calib {
namespace {

// The length of the character in UTF-8 at `i`; 0 if there is none.
size_t Utf8Length(const std::string& text, size_t i) {
  const auto byte = [&](size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned char lead = byte(i);
  if (lead < 0x80) return 1;
  const size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || i + length > text.size()) return 0;
  for (size_t j = 1; j < length; ++j) {
    if ((byte(i + j) & 0xc0) != 0x80) return 0;
  }
  const unsigned char second = byte(i + 1);
  const bool overlong = (lead == 0xe0 && second < 0xa0) || (lead == 0xf0 && second < 0x90);
  const bool too_large = lead == 0xf4 && second > 0x8f;
  const bool surrogate = lead == 0xed && second > 0x9f;
  return overlong || too_large || surrogate ? 0 : length;
}

// The same; 0 also if it is none to look at.
size_t PrintableLength(const std::string& text, size_t i) {
  const auto byte = [&](size_t at) { return static_cast<unsigned char>(text[at]); };
  const size_t length = Utf8Length(text, i);
  const bool control = length == 1 ? byte(i) < 0x20 || byte(i) == 0x7f
                                   : length == 2 && byte(i) == 0xc2 && byte(i + 1) < 0xa0;
  const bool no_character =
      length == 3 && byte(i) == 0xef && byte(i + 1) == 0xbf && byte(i + 2) > 0xbd;
  // They make what follows look like other text: U+202A to U+202E, U+2066 to U+2069.
  const bool turns = length == 3 && byte(i) == 0xe2 &&
                     ((byte(i + 1) == 0x80 && byte(i + 2) >= 0xaa && byte(i + 2) <= 0xae) ||
                      (byte(i + 1) == 0x81 && byte(i + 2) >= 0xa6 && byte(i + 2) <= 0xa9));
  return control || no_character || turns ? 0 : length;
}

}  // namespace

std::string Printable(const std::string& text) {
  std::string result;
  for (size_t i = 0; i < text.size();) {
    const size_t length = PrintableLength(text, i);
    result += length == 0 ? "\xef\xbf\xbd" : text.substr(i, length);
    i += std::max<size_t>(length, 1);
  }
  return result;
}

std::string PrintableLines(const std::string& text) {
  std::string result;
  size_t begin = 0;
  for (size_t end; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
    result += Printable(text.substr(begin, end - begin)) + "\n";
  }
  return result + Printable(text.substr(begin));
}

bool IsUtf8(const std::string& text) {
  for (size_t i = 0; i < text.size();) {
    const size_t length = Utf8Length(text, i);
    if (length == 0) return false;
    i += length;
  }
  return true;
}

size_t CountCharacters(const std::string& text) {
  return static_cast<size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xc0) != 0x80; }));
}

}  // namespace calib
