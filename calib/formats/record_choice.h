// Which of a file's records are meant: FILE[17], FILE[-1], FILE[100:200], or --records with what
// stands in the brackets. Indices count from 0, those below 0 from the end, and a range is without
// its last, as in Python.
#ifndef CALIB_FORMATS_RECORD_CHOICE_H_
#define CALIB_FORMATS_RECORD_CHOICE_H_

#include <cstdint>
#include <optional>
#include <string>

namespace calib {

struct RecordChoice {
  std::string text;  // as it is typed, without brackets; empty if all are meant
  bool single = false;
  int64_t first = 0;
  std::optional<int64_t> last;  // none: to the end

  bool CountsFromEnd() const { return first < 0 || (last && *last < 0); }
  // The same for a file of `count` records, without indices that count from the end.
  RecordChoice Resolved(int64_t count) const;
};

// Throws Failure if the text, which messages say `place` of, is no index and no range.
RecordChoice ParseRecordChoice(const std::string& text, const std::string& place);

// A path and what is chosen of it. A file whose very name ends in brackets comes first.
struct ChosenPath {
  std::string path;
  std::optional<RecordChoice> choice;
};
ChosenPath SplitPath(const std::string& path);

}  // namespace calib

#endif  // CALIB_FORMATS_RECORD_CHOICE_H_
