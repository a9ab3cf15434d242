#include "calib/console/date.h"

#include <cstdio>
#include <ctime>

namespace calib {

std::optional<int64_t> ParseDate(const std::string& text) {
  std::tm date = {};
  date.tm_mday = 1;
  const std::string whole = text.size() == 10 ? text + "T00:00:00Z" : text;
  if (std::sscanf(whole.c_str(), "%4d-%2d-%2dT%2d:%2d:%2dZ", &date.tm_year, &date.tm_mon,
                  &date.tm_mday, &date.tm_hour, &date.tm_min, &date.tm_sec) != 6) {
    return std::nullopt;
  }
  date.tm_year -= 1900;
  --date.tm_mon;
  const int64_t seconds = static_cast<int64_t>(timegm(&date));
  // The 31st of February would be one of March.
  if (FormatDate(seconds) != whole) return std::nullopt;
  return seconds;
}

std::string FormatDate(int64_t seconds) {
  const std::time_t time = static_cast<std::time_t>(seconds);
  std::tm date = {};
  char text[32];
  if (gmtime_r(&time, &date) == nullptr) return std::to_string(seconds);
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &date);
  return text;
}

}  // namespace calib
