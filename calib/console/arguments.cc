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

CLI::Validator Number(double below, bool whole, const std::string& expected) {
  const auto check = [=](const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    const bool number = end != text.c_str() && *end == '\0';
    const bool good =
        number && value >= 0 && value < below && (!whole || value == std::floor(value));
    return good ? std::string() : Wrong(text, expected);
  };
  return CLI::Validator(check, "");
}

class Help : public CLI::Formatter {
 public:
  // Releases of CLI11 differ in how many empty lines they put between the parts; one it is.
  std::string make_help(const CLI::App* command, std::string name,
                        CLI::AppFormatMode mode) const override {
    std::istringstream lines(CLI::Formatter::make_help(command, std::move(name), mode));
    std::string help;
    bool empty = false;
    for (std::string line; std::getline(lines, line); empty = line.empty()) {
      if (!empty || !line.empty()) help += line + "\n";
    }
    return help;
  }

  std::string make_usage(const CLI::App* command, std::string name) const override {
    return "\n" + CLI::Formatter::make_usage(command, std::move(name));
  }

  std::string make_option(const CLI::Option* option, bool positional) const override {
    std::string name = make_option_name(option, positional);
    const size_t comma = name.find(',');
    if (comma != std::string::npos) name.insert(comma + 1, " ");
    if (!positional && option->get_type_size() != 0) name += " " + option->get_type_name();
    const bool told = positional || !option->get_required();
    return Entry(name, option->get_description() + (told ? "" : " (required)"));
  }

  std::string make_subcommand(const CLI::App* command) const override {
    return Entry(command->get_name(), command->get_description());
  }

  std::string make_footer(const CLI::App* command) const override {
    std::istringstream lines(command->get_footer());
    std::string footer = "\n";
    for (std::string line; std::getline(lines, line);) {
      footer += line.empty() || line[0] == ' ' ? line + "\n" : Wrap(line, 0, kWidth);
    }
    return footer;
  }

 private:
  static constexpr int kWidth = 80, kColumn = 26;

  static std::string Entry(const std::string& name, const std::string& description) {
    const std::string left = "  " + name;
    const std::string right = Wrap(description, kColumn, kWidth);
    if (left.size() + 2 > kColumn) return left + "\n" + right;
    return left + right.substr(left.size());
  }
};

}  // namespace

CLI::Option* AddChoice(CLI::App* command, const std::string& name, std::string* value,
                       const std::vector<std::string>& words, const std::string& description) {
  const auto check = [words](const std::string& text) {
    for (const std::string& word : words) {
      if (word == text) return std::string();
    }
    return Wrong(text, Alternatives(words));
  };
  std::string braces;
  for (const std::string& word : words) braces += (braces.empty() ? "{" : ",") + word;
  return command->add_option(name, *value, description)
      ->check(CLI::Validator(check, ""))
      ->type_name(braces + "}");
}

void AddColor(CLI::App* command, std::string* value) {
  AddChoice(command, "--color", value, {"auto", "always", "never"},
            "Use colors; auto does on a terminal, unless NO_COLOR is set");
}

CLI::Validator NumberFromZero() {
  return Number(std::numeric_limits<double>::infinity(), false, "a number from 0");
}

CLI::Validator NumberFromZeroToBelow(double below) {
  return Number(below, false, "a number from 0 to below " + Shortest(below));
}

CLI::Validator CountFromZero() { return Number(1e9, true, "a whole number from 0"); }

std::shared_ptr<CLI::Formatter> HelpLayout() {
  const auto layout = std::make_shared<Help>();
  layout->label("Positionals", "Arguments");
  return layout;
}

}  // namespace calib
