// Numbers as text.
#ifndef CALIB_CONSOLE_NUMBER_H_
#define CALIB_CONSOLE_NUMBER_H_

#include <cstddef>
#include <string>

namespace calib {

// Whether it is the largest float that is finite, or its negative. The run-time and others write it
// as 3.40282347e+38 or 3.4028235e+38, which is a little more: older run-times read an infinity in
// text, and refuse such a number in JSON. What stands below writes 3.4028234e+38.
bool IsLargestFloat(float value);

// The shortest decimal number that reads back as the same number.
std::string Shortest(double value);
std::string Shortest(float value);

// With six significant digits, which is what people look at.
std::string Rounded(double value);

// Writes what reads back as the same number in the fewest characters, "1e+05", where there must be
// room for kMostCharacters. Finite ones only. Returns its end.
constexpr size_t kMostCharacters = 32;
char* WriteFewest(double value, char* text);
char* WriteFewest(float value, char* text);

}  // namespace calib

#endif  // CALIB_CONSOLE_NUMBER_H_
