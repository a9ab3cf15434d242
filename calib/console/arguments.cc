#include "calib/console/arguments.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>

#include "calib/console/number.h"
#include "calib/console/terminal.h"

namespace calib {
namespace {

std::string Wrong(const std::string& value, const std::string& expected) {
  return "is '" + value + "', expected " + expected;
}

// The words as a sentence has them: "ros, kalibr or opencv".
std::string Alternatives(const std::vector<std::string>& words) {
  std::string list;
  for (size_t i = 0; i < words.size(); ++i) {
    list += (i == 0 ? "" : i + 1 < words.size() ? ", " : " or ") + words[i];
  }
  return list;
}

Validator Number(double from, double below, bool whole, const std::string& expected) {
  const auto check = [=](const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    const bool number = end != text.c_str() && *end == '\0';
    const bool good =
        number && value >= from && value < below && (!whole || value == std::floor(value));
    return good ? std::string() : Wrong(text, expected);
  };
  return check;
}

}  // namespace

Option* AddChoice(Command* command, const std::string& name, std::string* value,
                  const std::vector<std::string>& words, const std::string& description) {
  const auto check = [words](const std::string& text) {
    for (const std::string& word : words) {
      if (word == text) return std::string();
    }
    return Wrong(text, Alternatives(words));
  };
  std::string braces;
  for (const std::string& word : words) braces += (braces.empty() ? "{" : ",") + word;
  return command->AddOption(name, *value, description)->Check(check)->ValueName(braces + "}");
}

void AddColor(Command* command, std::string* value) {
  AddChoice(command, "--color", value, {"auto", "always", "never"},
            "Use colors; auto does on a terminal, unless NO_COLOR is set");
}

Validator NumberFromZero() {
  return Number(0, std::numeric_limits<double>::infinity(), false, "a number from 0");
}

Validator NumberFromZeroToBelow(double below) {
  return Number(0, below, false, "a number from 0 to below " + Shortest(below));
}

Validator NumberFromZeroToOne() {
  return Number(0, std::nextafter(1.0, 2.0), false, "a number from 0 to 1");
}

Validator NumberAboveZero() {
  const double infinity = std::numeric_limits<double>::infinity();
  return Number(std::numeric_limits<double>::denorm_min(), infinity, false, "a number above 0");
}

Validator CountFromZero() { return Number(0, 1e9, true, "a whole number from 0"); }

Validator CountFromOne() { return Number(1, 1e9, true, "a whole number from 1"); }

}  // namespace calib
