#include "calib/tools/yaml_values.h"

#include <algorithm>
#include <string_view>

#include "calib/console/number.h"

namespace calib {

namespace {

// Whether a reader knows the plain word as something else than text: what begins like a number (a
// date and a time do, too) or is one of YAML's own words in whatever letters.
bool HasMeaning(const std::string& text) {
  constexpr std::string_view kFirst = "0123456789+-.~=<";
  if (text.empty() || kFirst.find(text[0]) != std::string_view::npos) return true;
  std::string word = text;
  std::transform(word.begin(), word.end(), word.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  const char* const words[] = {"y", "yes", "true", "on", "n", "no", "false", "off", "null"};
  return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

// Whether a reader of YAML 1.1 sees the end of a line in it, where one of YAML 1.2 sees none.
bool HasForeignLineEnd(const std::string& text) {
  const char* const ends[] = {"\xc2\x85", "\xe2\x80\xa8", "\xe2\x80\xa9"};
  return std::any_of(std::begin(ends), std::end(ends),
                     [&](const char* end) { return text.find(end) != std::string::npos; });
}

}  // namespace

std::string YamlNumber(double value) {
  std::string text = Shortest(value);
  const size_t end = text.find_first_of(".e");
  if (end == std::string::npos) return text + ".0";
  if (text[end] == 'e') text.insert(end, ".0");
  return text;
}

void EmitText(YAML::Emitter* out, const std::string& text) {
  const bool escape = HasForeignLineEnd(text);
  if (escape) *out << YAML::EscapeNonAscii;
  if (escape || HasMeaning(text)) *out << YAML::DoubleQuoted;
  *out << text;
}

}  // namespace calib
