// Times as people write them, in UTC: 2026-03-01T12:00:00Z, or 2026-03-01 for its beginning.
#ifndef CALIB_CONSOLE_DATE_H_
#define CALIB_CONSOLE_DATE_H_

#include <cstdint>
#include <optional>
#include <string>

namespace calib {

// Seconds since 1970; none if the text is no such time.
std::optional<int64_t> ParseDate(const std::string& text);
std::string FormatDate(int64_t seconds);

}  // namespace calib

#endif  // CALIB_CONSOLE_DATE_H_
