#include "calib/console/number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

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

#ifdef __cpp_lib_to_chars
template <typename T>
char* FewestOf(T value, char* text) {
  return std::to_chars(text, text + kMostCharacters, value).ptr;
}
#else
// The same without std::to_chars(): the fewest digits that read back, with an exponent if that
// takes fewer characters.
template <typename T>
char* FewestOf(T value, char* text) {
  char exponential[32], fixed[400];
  const double number = static_cast<double>(value);
  int digits = 0;
  do {
    std::snprintf(exponential, sizeof exponential, "%.*e", digits, number);
  } while (static_cast<T>(std::strtod(exponential, nullptr)) != value && digits++ < 17);
  const int exponent = std::atoi(std::strchr(exponential, 'e') + 1);
  std::snprintf(fixed, sizeof fixed, "%.*f", std::max(digits - exponent, 0), number);
  const char* const fewest = std::strlen(fixed) <= std::strlen(exponential) ? fixed : exponential;
  const size_t size = std::strlen(fewest);
  std::memcpy(text, fewest, size);
  return text + size;
}
#endif

std::string_view LargestFloat(float value) {
  return value < 0 ? "-3.4028234e+38" : "3.4028234e+38";
}

}  // namespace

bool IsLargestFloat(float value) { return std::abs(value) == std::numeric_limits<float>::max(); }

std::string Shortest(double value) { return ShortestOf(value, std::strtod); }
std::string Shortest(float value) {
  return IsLargestFloat(value) ? std::string(LargestFloat(value)) : ShortestOf(value, std::strtof);
}

std::string Rounded(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

char* WriteFewest(double value, char* text) { return FewestOf(value, text); }
char* WriteFewest(float value, char* text) {
  return IsLargestFloat(value) ? text + LargestFloat(value).copy(text, kMostCharacters)
                               : FewestOf(value, text);
}

}  // namespace calib
