#include "calib/formats/record_choice.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>

#include "calib/console/failure.h"

namespace calib {
namespace {

// A whole number of up to 18 digits.
bool ReadIndex(const std::string& text, int64_t* index) {
  const size_t sign = !text.empty() && text[0] == '-' ? 1 : 0;
  const std::string digits = text.substr(sign);
  if (digits.empty() || digits.size() > 18) return false;
  if (digits.find_first_not_of("0123456789") != std::string::npos) return false;
  *index = std::strtoll(text.c_str(), nullptr, 10);
  return true;
}

bool Read(const std::string& text, RecordChoice* choice) {
  choice->text = text;
  const size_t colon = text.find(':');
  if (colon == std::string::npos) {
    choice->single = true;
    if (!ReadIndex(text, &choice->first)) return false;
    if (choice->first != -1) choice->last = choice->first + 1;
    return true;
  }
  const std::string first = text.substr(0, colon), last = text.substr(colon + 1);
  int64_t end = 0;
  if (!first.empty() && !ReadIndex(first, &choice->first)) return false;
  if (!last.empty() && !ReadIndex(last, &end)) return false;
  if (!last.empty()) choice->last = end;
  return true;
}

}  // namespace

RecordChoice RecordChoice::Resolved(int64_t count) const {
  const auto from_start = [&](int64_t index) {
    return index < 0 ? std::max<int64_t>(index + count, 0) : index;
  };
  RecordChoice resolved = *this;
  resolved.first = from_start(first);
  if (last) resolved.last = from_start(*last);
  // An index that counts back beyond the first record is that of no record.
  if (single && first < -count) resolved.last = resolved.first = 0;
  return resolved;
}

RecordChoice ParseRecordChoice(const std::string& text, const std::string& place) {
  RecordChoice choice;
  if (Read(text, &choice)) return choice;
  throw Failure(place + ": '" + text + "' is no index and no range of records",
                "Write it like 17, -1 (the last one), 100:200 (from 100 to 199), 100: or :100.");
}

ChosenPath SplitPath(const std::string& path) {
  const size_t bracket = path.find_last_of('[');
  struct stat status;
  if (path.empty() || path.back() != ']' || bracket == std::string::npos || bracket == 0 ||
      stat(path.c_str(), &status) == 0) {
    return {path, std::nullopt};
  }
  return {path.substr(0, bracket),
          ParseRecordChoice(path.substr(bracket + 1, path.size() - bracket - 2), path)};
}

}  // namespace calib
