#include "calib/console/number.h"

#include <cstdio>
#include <cstdlib>
#include <limits>

namespace calib {

namespace {

// A number with as many digits as the type always keeps is written without the zeros at their end.
template <typename T>
std::string ShortestOf(T value, T (*parse)(const char*, char**)) {
  char text[32];
  for (int digits = std::numeric_limits<T>::digits10; digits <= 17; ++digits) {
    std::snprintf(text, sizeof text, "%.*g", digits, static_cast<double>(value));
    if (parse(text, nullptr) == value) break;
  }
  return text;
}

}  // namespace

std::string Shortest(double value) { return ShortestOf(value, std::strtod); }
std::string Shortest(float value) { return ShortestOf(value, std::strtof); }

std::string Rounded(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

}  // namespace calib
