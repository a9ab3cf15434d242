#include "calib/svg.h"

#include <cmath>

#include "calib/number.h"

namespace calib {

namespace {

// The length of the character in UTF-8 at `i`; 0 if there is none that XML can hold.
size_t CharacterLength(const std::string& text, size_t i) {
  const auto byte = [&](size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned char lead = byte(i);
  if (lead < 0x80) return lead >= 0x20 || lead == '\t' || lead == '\n' || lead == '\r' ? 1 : 0;
  const size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || i + length > text.size()) return 0;
  for (size_t j = 1; j < length; ++j) {
    if ((byte(i + j) & 0xc0) != 0x80) return 0;
  }
  const unsigned char second = byte(i + 1);
  const bool overlong = (lead == 0xe0 && second < 0xa0) || (lead == 0xf0 && second < 0x90);
  const bool too_large = lead == 0xf4 && second > 0x8f;
  const bool surrogate = lead == 0xed && second > 0x9f;
  const bool no_character = lead == 0xef && second == 0xbf && byte(i + 2) > 0xbd;
  return overlong || too_large || surrogate || no_character ? 0 : length;
}

}  // namespace

std::string XmlText(const std::string& text) {
  std::string result;
  for (size_t i = 0; i < text.size();) {
    const size_t length = CharacterLength(text, i);
    switch (text[i]) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += length == 0 ? "\xef\xbf\xbd" : text.substr(i, length);
    }
    i += length == 0 ? 1 : length;
  }
  return result;
}

std::string Coordinate(double value) {
  const double rounded = std::round(value * 100) / 100;
  return Shortest(rounded == 0 ? 0 : rounded);
}

std::string XmlElement(const std::string& name, const std::string& attributes,
                       const std::string& content) {
  const std::string start = "<" + name + attributes;
  return content.empty() ? start + "/>\n" : start + ">" + content + "</" + name + ">\n";
}

std::string At(const std::string& name, double value) {
  return " " + name + "=\"" + Coordinate(value) + "\"";
}

}  // namespace calib
