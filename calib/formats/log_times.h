// When records were appended to a log, where that is kept: a text file beside the log, LOG.times,
// with a line for each record that was appended with its time:
//
//   17 2026-03-01T12:00:00Z
//
// The line is written ahead of the record. If the record then does not come, the next one of that
// number has a later line, "17 -" if its time is not kept, and the last line counts.
#ifndef CALIB_FORMATS_LOG_TIMES_H_
#define CALIB_FORMATS_LOG_TIMES_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace calib {

class LogTimes {
 public:
  // Reads what there is; a log need not have any. Lines that are none are passed over.
  explicit LogTimes(const std::string& log);

  std::optional<int64_t> TimeOf(int64_t record) const;
  // Of a record that is to be appended; none if its time is not kept. Throws Failure if the line
  // cannot be written.
  static void Add(const std::string& log, int64_t record, std::optional<int64_t> time);

 private:
  std::map<int64_t, int64_t> times_;
};

// The time that --time says: "now" or a date. Throws Failure if it is neither.
int64_t TimeNamed(const std::string& text);

}  // namespace calib

#endif  // CALIB_FORMATS_LOG_TIMES_H_
