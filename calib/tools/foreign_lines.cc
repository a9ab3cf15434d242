#include "calib/tools/foreign_lines.h"

#include <algorithm>

namespace calib {

namespace {

constexpr std::string_view kBlanks = " \t\r\f\v";
constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

}  // namespace

std::vector<Word> Line::Words() const {
  std::vector<Word> words;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find_first_of(kBlanks, at), text.size());
    words.push_back({text.substr(at, end - at), column + static_cast<int>(at)});
    at = std::min(text.find_first_not_of(kBlanks, end), text.size());
  }
  return words;
}

bool Lines::Next(Line* line) {
  if (number_ == 0 && text_.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
    text_.remove_prefix(kByteOrderMark.size());
  }
  while (!text_.empty()) {
    const size_t end = std::min(text_.find('\n'), text_.size());
    const std::string_view whole = text_.substr(0, end);
    text_.remove_prefix(std::min(end + 1, text_.size()));
    const int number = number_++;
    const size_t first = whole.find_first_not_of(kBlanks);
    if (first == std::string_view::npos || comments_.find(whole[first]) != std::string_view::npos) {
      continue;
    }
    const size_t last = whole.find_last_not_of(kBlanks);
    *line = {whole.substr(first, last - first + 1), number, static_cast<int>(first)};
    return true;
  }
  return false;
}

}  // namespace calib
