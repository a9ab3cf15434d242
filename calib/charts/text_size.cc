#include "calib/charts/text_size.h"

#include <cstring>
#include <sstream>

namespace calib {
namespace {

constexpr char kEllipsis[] = "\xe2\x80\xa6";

bool IsContinued(char byte) { return (byte & 0xc0) == 0x80; }

// The width of the character that begins with this byte, as a share of the font's size.
double CharacterWidth(char lead) {
  if (IsContinued(lead)) return 0;
  const unsigned char byte = static_cast<unsigned char>(lead);
  if (byte >= 0x80) return 1.05;
  if (lead == '\0') return 0;
  if (std::strchr("ijl.,:;'|!I fJ-/()[]\\ ", lead) != nullptr) return 0.42;
  if (std::strchr("mwMW@%", lead) != nullptr) return 1.02;
  if (std::strchr("<>=+~#^&OQCDGHNU", lead) != nullptr) return 0.84;
  if (lead >= 'A' && lead <= 'Z') return 0.72;
  return 0.645;
}

}  // namespace

double TextWidth(const std::string& text, double size, bool bold) {
  double width = 0;
  for (const char c : text) width += CharacterWidth(c);
  return width * size * (bold ? 1.12 : 1);
}

std::string ShortenToWidth(const std::string& text, double width, double size, bool bold) {
  if (TextWidth(text, size, bold) <= width) return text;
  const double room = width - TextWidth(kEllipsis, size, bold);
  const double scale = size * (bold ? 1.12 : 1);
  double used = 0;
  size_t end = 0;
  while (end < text.size()) {
    used += CharacterWidth(text[end]) * scale;
    if (used > room) break;
    ++end;
    while (end < text.size() && IsContinued(text[end])) ++end;
  }
  return text.substr(0, end) + kEllipsis;
}

std::vector<std::string> WrapToWidth(const std::string& text, double width, double size) {
  std::vector<std::string> lines;
  std::istringstream words(text);
  std::string word, line;
  while (words >> word) {
    std::string longer = line;
    longer.append(line.empty() ? "" : " ").append(word);
    if (TextWidth(longer, size) <= width) {
      line = longer;
      continue;
    }
    if (!line.empty()) lines.push_back(line);
    line = ShortenToWidth(word, width, size);
  }
  if (!line.empty()) lines.push_back(line);
  return lines;
}

}  // namespace calib
