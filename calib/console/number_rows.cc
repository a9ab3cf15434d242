#include "calib/console/number_rows.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "calib/console/failure.h"
#include "calib/console/number.h"
#include "calib/console/printable.h"

namespace calib {

std::vector<NumberRow> NumberRows(const std::string& name, const std::string& text,
                                  const std::vector<std::string>& columns) {
  std::string expected;
  for (const std::string& column : columns) expected += (expected.empty() ? "" : " ") + column;
  const auto refuse = [&](int line, const std::string& what) {
    throw Failure(name + ":" + std::to_string(line) + ": " + what + ", expected " + expected,
                  "Write one point a line, its numbers apart by blanks, tabs or commas.");
  };
  std::vector<NumberRow> rows;
  std::istringstream lines(text);
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    for (char& c : line) {
      if (c == ',' || c == '\r' || c == '\t') c = ' ';
    }
    const size_t begin = line.find_first_not_of(' ');
    if (begin == std::string::npos || line[begin] == '#') continue;
    NumberRow row = {number, {}};
    std::istringstream words(line);
    for (std::string word; words >> word;) {
      char* end = nullptr;
      row.numbers.push_back(std::strtod(word.c_str(), &end));
      if (*end != '\0') refuse(number, "'" + Printable(word) + "' is no number");
    }
    if (row.numbers.size() != columns.size()) {
      refuse(number, "has " + std::to_string(row.numbers.size()) +
                         (row.numbers.size() == 1 ? " number" : " numbers"));
    }
    rows.push_back(row);
  }
  return rows;
}

std::string NumberLine(const std::vector<double>& numbers) {
  std::string line;
  // Plus 0, so that nobody is asked what -0 means.
  for (const double number : numbers) line += (line.empty() ? "" : " ") + Shortest(number + 0.0);
  return line + "\n";
}

std::string ToDigits(double value, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*g", digits, value);
  return text;
}

}  // namespace calib
