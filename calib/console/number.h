// Numbers as text.
#ifndef CALIB_CONSOLE_NUMBER_H_
#define CALIB_CONSOLE_NUMBER_H_

#include <string>

namespace calib {

// The shortest decimal number that reads back as the same number.
std::string Shortest(double value);
std::string Shortest(float value);

// With six significant digits, which is what people look at.
std::string Rounded(double value);

// Appends what reads back as the same number in the fewest characters: "1e+05". Finite ones only.
void AppendShortest(double value, std::string* text);
void AppendShortest(float value, std::string* text);

}  // namespace calib

#endif  // CALIB_CONSOLE_NUMBER_H_
