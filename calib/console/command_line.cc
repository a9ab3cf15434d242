#include "calib/console/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <sstream>
#include <utility>

#include "calib/console/closest.h"
#include "calib/console/failure.h"
#include "calib/console/terminal.h"

namespace calib {
namespace {

// The layout of --help, for as many columns as there are, from 40 to 120.
class Help : public CLI::Formatter {
 public:
  Help() { label("Positionals", "Arguments"); }

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
      footer += line.empty() || line[0] == ' ' ? line + "\n" : Wrap(line, 0, Width());
    }
    return footer;
  }

 private:
  static constexpr int kColumn = 26;

  static int Width() { return std::clamp(OutputWidth(), 40, 120); }

  // Too many words to choose from for one line go on below their brace.
  static std::string Broken(std::string left) {
    const auto width = static_cast<size_t>(Width());
    const size_t brace = left.find('{');
    for (size_t line = 0; left.size() - line > width;) {
      const size_t comma = left.rfind(',', line + width - 1);
      if (brace == std::string::npos || comma == std::string::npos || comma < line + brace) break;
      line = comma + 2;
      left.insert(comma + 1, "\n" + std::string(brace + 1, ' '));
    }
    return left;
  }

  static std::string Entry(const std::string& name, const std::string& description) {
    const std::string left = Broken("  " + name);
    const std::string right = Wrap(description, kColumn, Width());
    if (left.size() + 2 > kColumn) return left + "\n" + right;
    return left + right.substr(left.size());
  }
};

// The names of the options, as they are typed.
std::vector<std::string> OptionNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    for (const std::string& name : option->get_snames()) names.push_back("-" + name);
  }
  return names;
}

bool IsIn(const std::vector<std::string>& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// The parser would say only that a subcommand is required. `named` is the group's own name, such as
// "calib log"; the arguments are those behind it.
void CheckCommand(const CLI::App& group, const std::string& named, int argc, char** argv) {
  const std::string whose = named.find(' ') == std::string::npos ? "" : " of " + named;
  const std::string all = "'" + named + " --help' lists them all.";
  if (argc < 1) throw Failure("no command" + whose + " is named", all);
  const std::string word = argv[0];
  const std::vector<const CLI::App*> commands = group.get_subcommands({});
  const auto called = std::find_if(commands.begin(), commands.end(), [&](const CLI::App* command) {
    return command->get_name() == word;
  });
  if (called != commands.end()) {
    if ((*called)->get_subcommands({}).empty()) return;
    return CheckCommand(**called, named + " " + word, argc - 1, argv + 1);
  }
  std::vector<std::string> names;
  names.reserve(commands.size());
  for (const CLI::App* command : commands) names.push_back(command->get_name());
  if (word[0] != '-') {
    throw Failure("no command" + whose + " is called '" + word + "'",
                  SuggestClosest(word, names) + all);
  }
  const std::vector<std::string> options = OptionNames(group);
  if (IsIn(options, word)) return;
  std::string meant;
  if (word.size() > 2 && word.compare(0, 2, "--") == 0) {
    meant = SuggestClosest(word, options);
    if (meant.empty()) meant = SuggestClosest(word.substr(2), names);
  }
  throw Failure("no option of " + named + " is called '" + word + "'", meant + all);
}

// The command that was named last, and its whole name.
std::pair<const CLI::App*, std::string> NamedCommand(const CLI::App& program) {
  const CLI::App* command = &program;
  std::string name = program.get_name();
  while (!command->get_subcommands().empty()) {
    command = command->get_subcommands().front();
    name += " " + command->get_name();
  }
  return {command, name};
}

// What may have been meant by an option that a command does not have.
std::string SuggestOption(const CLI::App& command, const CLI::ParseError& error) {
  if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::ExtrasError)) return "";
  const std::string message = error.what();
  const size_t begin = message.find("--");
  if (begin == std::string::npos) return "";
  const std::string option = message.substr(begin, message.find_first_of(" =", begin) - begin);
  return SuggestClosest(option, OptionNames(command));
}

}  // namespace

Option* Option::Required() {
  option_->required();
  return this;
}

Option* Option::ValueName(const std::string& name) {
  option_->type_name(name);
  return this;
}

Option* Option::Check(Validator validator) {
  option_->check(CLI::Validator(std::move(validator), ""));
  return this;
}

Option* Option::Transform(std::function<void(std::string*)> transform) {
  const auto in_place = [transform = std::move(transform)](std::string& word) {
    transform(&word);
    return std::string();
  };
  option_->transform(CLI::Validator(in_place, ""));
  return this;
}

Option* Option::Excludes(Option* other) {
  option_->excludes(other->option_);
  return this;
}

Option* Option::Values(int count) {
  option_->expected(count);
  return this;
}

Command* Command::AddCommand(const std::string& name, const std::string& description) {
  app_->require_subcommand(1);
  return &commands_.emplace_back(app_->add_subcommand(name, description));
}

Option* Command::Keep(CLI::Option* option) { return &options_.emplace_back(option); }

Option* Command::AddOption(const std::string& name, std::string& value,
                           const std::string& description) {
  return Keep(app_->add_option(name, value, description));
}

Option* Command::AddOption(const std::string& name, std::vector<std::string>& values,
                           const std::string& description) {
  return Keep(app_->add_option(name, values, description));
}

Option* Command::AddOption(const std::string& name, int& value, const std::string& description) {
  return Keep(app_->add_option(name, value, description));
}

Option* Command::AddOption(const std::string& name, double& value, const std::string& description) {
  return Keep(app_->add_option(name, value, description));
}

Option* Command::AddRepeatedOption(const std::string& name, std::vector<std::string>& values,
                                   const std::string& description) {
  // As an option of a vector it would take what follows, too.
  const CLI::callback_t take = [&values](const CLI::results_t& results) {
    values = results;
    return true;
  };
  CLI::Option* option = app_->add_option(name, take, description);
  return Keep(option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll));
}

Option* Command::AddFlag(const std::string& name, bool& value, const std::string& description) {
  return Keep(app_->add_flag(name, value, description));
}

void Command::Footer(const std::string& text) { app_->footer(text); }

void Command::Callback(std::function<void()> callback) { app_->callback(std::move(callback)); }

Program::Program(const std::string& name, const std::string& description,
                 const std::string& version)
    : Program(std::make_unique<CLI::App>(description, name)) {
  program_->set_version_flag("--version", version);
  program_->formatter(std::make_shared<Help>());
}

Program::Program(std::unique_ptr<CLI::App> app) : Command(app.get()), program_(std::move(app)) {}

Program::~Program() = default;

void Program::Run(int argc, char** argv) {
  CheckCommand(*program_, program_->get_name(), argc - 1, argv + 1);
  try {
    program_->parse(argc, argv);
  } catch (const CLI::Success& help_or_version) {
    program_->exit(help_or_version);
    if (!std::cout.flush()) throw Failure("standard output: cannot be written", "Make room.");
  } catch (const CLI::ParseError& error) {
    const auto [command, name] = NamedCommand(*program_);
    const std::string suggestion = command == program_.get() ? "" : SuggestOption(*command, error);
    throw Failure(error.what(), suggestion + "'" + name + " --help' tells how it is used.");
  }
}

}  // namespace calib
