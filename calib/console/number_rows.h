// Tables of numbers in text: a row for each line, numbers apart by blanks, tabs or commas. Empty
// lines and those that begin with # are left out.
#ifndef CALIB_CONSOLE_NUMBER_ROWS_H_
#define CALIB_CONSOLE_NUMBER_ROWS_H_

#include <string>
#include <vector>

namespace calib {

struct NumberRow {
  int line;  // from 1
  std::vector<double> numbers;
};

// Throws Failure, with `name` for the file, where a line has another number of columns than
// `columns` says, such as {"u", "v"}, or something else than numbers.
std::vector<NumberRow> NumberRows(const std::string& name, const std::string& text,
                                  const std::vector<std::string>& columns);

// Numbers as a line of such a table.
std::string NumberLine(const std::vector<double>& numbers);

// A number that is measured or computed, as a message tells it.
std::string ToDigits(double value, int digits);

}  // namespace calib

#endif  // CALIB_CONSOLE_NUMBER_ROWS_H_
