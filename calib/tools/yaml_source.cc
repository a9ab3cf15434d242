#include "calib/tools/yaml_source.h"

#include <yaml-cpp/exceptions.h>

#include <algorithm>

#include "calib/tools/foreign_lines.h"

namespace calib {

namespace {

constexpr std::string_view kDocumentStart = "--- ";
constexpr char kNothing[] = " \t\r\n\xef\xbb\xbf";
constexpr char kOpenCvHead[] = "#YAML:";
constexpr char kInKeys[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_-./ ";

// What can make a token of its own.
bool IsSign(char c) {
  return (c < '0' || c > '9') && (c < 'A' || c > 'Z') && (c < 'a' || c > 'z') && c != ' ' &&
         c != '\n' && c != '\r' && c != '.' && c != '+' && c != '/' && c != '=' && c != '_';
}

// Where a line's first colon stands, if what follows it at once is the value of a key.
size_t ColonBeforeValue(std::string_view line) {
  const size_t colon = line.find_first_not_of(kInKeys);
  if (colon == std::string_view::npos || colon == 0 || colon + 1 == line.size() ||
      line[colon] != ':' || line[colon + 1] == ' ' || line[colon + 1] == '\t') {
    return std::string_view::npos;
  }
  return colon;
}

}  // namespace

YamlSource::YamlSource(const std::string& text) : text_(text) {
  MarkStart();
  if (text.compare(0, sizeof kOpenCvHead - 1, kOpenCvHead) == 0) SplitKeys();
}

void YamlSource::MarkStart() {
  size_t first = text_.find_first_not_of(kNothing);
  while (first != std::string::npos && text_[first] == '#') {
    first = text_.find_first_not_of(kNothing, text_.find('\n', first));
  }
  if (first == std::string::npos || (text_[first] != '{' && text_[first] != '[')) return;
  if (first > 0 && text_[first - 1] != '\n' && text_[first - 1] != '\xbf') return;
  const auto end = text_.begin() + static_cast<std::ptrdiff_t>(first);
  insertions_.push_back(
      {first, {static_cast<int>(std::count(text_.begin(), end, '\n')), 0}, kDocumentStart});
}

void YamlSource::SplitKeys() {
  Lines lines(text_, "#");
  for (Line line; lines.Next(&line);) {
    const size_t colon = ColonBeforeValue(line.text);
    if (colon == std::string_view::npos) continue;
    const auto position = static_cast<size_t>(line.text.data() - text_.data()) + colon + 1;
    insertions_.push_back(
        {position, {line.number, line.column + static_cast<int>(colon) + 1}, " "});
  }
}

YamlSource::Place YamlSource::PlaceOf(const YAML::Mark& mark) const {
  if (mark.is_null()) return {-1, -1};
  const auto found = std::lower_bound(
      insertions_.begin(), insertions_.end(), mark.line,
      [](const Insertion& insertion, int line) { return insertion.place.line < line; });
  if (found == insertions_.end() || found->place.line != mark.line ||
      mark.column < found->place.column) {
    return {mark.line, mark.column};
  }
  const int column = mark.column - static_cast<int>(found->bytes.size());
  return {mark.line, std::max(column, found->place.column)};
}

bool YamlSource::HasMarker() const {
  return text_.compare(0, 3, "---") == 0 || text_.find("\n---") != std::string::npos ||
         text_.find("\n...") != std::string::npos;
}

std::string_view YamlSource::LineBefore(int line, int* number) const {
  std::string_view found;
  Lines lines(text_, "#");
  for (Line next; lines.Next(&next) && next.number < line;) {
    found = next.text;
    *number = next.number;
  }
  return found;
}

void YamlSource::Arrived(Place place) {
  arrived_at_ = place;
  handed_out_ = 0;
}

YamlSource::int_type YamlSource::underflow() {
  if (HoldsTooMuch()) throw YAML::Exception(YAML::Mark::null_mark(), "");
  const bool more = next_insertion_ < insertions_.size();
  if (more && position_ == insertions_[next_insertion_].position) {
    HandOut(insertions_[next_insertion_++].bytes);
  } else {
    const size_t end = more ? insertions_[next_insertion_].position : text_.size();
    const size_t size = std::min<size_t>(end - position_, 2048);
    if (size == 0) return traits_type::eof();
    HandOut(std::string_view(text_).substr(position_, size));
    position_ += size;
    handed_out_ += static_cast<size_t>(std::count_if(gptr(), egptr(), IsSign));
  }
  return traits_type::to_int_type(*gptr());
}

void YamlSource::HandOut(std::string_view bytes) {
  char* begin = const_cast<char*>(bytes.data());  // NOLINT: the base class only reads
  setg(begin, begin, begin + bytes.size());
}

}  // namespace calib
