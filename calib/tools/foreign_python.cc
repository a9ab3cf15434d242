// A Python literal, as mrcal writes its cameras: YAML, but for strings of bytes such as b'...',
// which may be long and hold any sign. They are taken out; no record has a place for them.
#include <algorithm>

#include "calib/tools/foreign_tree.h"

namespace calib {

namespace {

// Whether the text is a map whose first key has Python's quotes; JSON has others.
bool IsPython(const std::string& text) {
  bool inside = false;
  for (size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '#') {
      at = std::min(text.find('\n', at), text.size());
    } else if (c == '{' && !inside) {
      inside = true;
    } else if (c != ' ' && c != '\t' && c != '\r' && c != '\n') {
      return inside && c == '\'';
    }
  }
  return false;
}

}  // namespace

void BlankByteStrings(std::string* text) {
  if (!IsPython(*text)) return;
  for (size_t at = text->find('b'); at != std::string::npos; at = text->find('b', at + 1)) {
    const size_t before = at == 0 ? std::string::npos : text->find_last_not_of(" \t", at - 1);
    if (before == std::string::npos || (*text)[before] != ':' || at + 1 == text->size()) continue;
    const char quote = (*text)[at + 1];
    if (quote != '\'' && quote != '"') continue;
    const size_t end = text->find(quote, at + 2);
    if (end == std::string::npos) return;
    std::fill(text->begin() + static_cast<std::ptrdiff_t>(at),
              text->begin() + static_cast<std::ptrdiff_t>(end + 1), ' ');
    text->replace(at, 2, "''");
    at = end;
  }
}

}  // namespace calib
