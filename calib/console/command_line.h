// The command line: which commands there are, what each takes, and what --help tells of it. The
// parser behind it is CLI11, whose headers take the compiler seconds: command_line.cc alone has
// them.
#ifndef CALIB_CONSOLE_COMMAND_LINE_H_
#define CALIB_CONSOLE_COMMAND_LINE_H_

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace calib {

// Returns what is wrong with a value, "" if nothing is.
using Validator = std::function<std::string(const std::string&)>;

// An option that has a value, a flag that has none, or an argument, which has no dashes.
class Option {
 public:
  explicit Option(CLI::Option* option) : option_(option) {}

  // Each of these returns the option itself.
  Option* Required();
  // What --help calls the value.
  Option* ValueName(const std::string& name);
  Option* Check(Validator validator);
  // Puts another word in the place of a value, ahead of all checks so far.
  Option* Transform(std::function<void(std::string*)> transform);
  Option* Excludes(Option* other);
  // How many values the option takes, each in a word of its own.
  Option* Values(int count);

 private:
  CLI::Option* option_;
};

// A command, or a group of commands. Options and commands that are added belong to it; the
// variables that take their values must outlive it.
class Command {
 public:
  explicit Command(CLI::App* app) : app_(app) {}
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  // Makes this one a group, of whose commands one must be named.
  Command* AddCommand(const std::string& name, const std::string& description);
  // Arguments are in capitals; a vector takes several.
  Option* AddOption(const std::string& name, std::string& value, const std::string& description);
  Option* AddOption(const std::string& name, std::vector<std::string>& values,
                    const std::string& description);
  Option* AddOption(const std::string& name, int& value, const std::string& description);
  Option* AddOption(const std::string& name, double& value, const std::string& description);
  // Takes one value each time that it is given.
  Option* AddRepeatedOption(const std::string& name, std::vector<std::string>& values,
                            const std::string& description);
  Option* AddFlag(const std::string& name, bool& value, const std::string& description);
  // What --help ends with: a paragraph for each line, which is broken where the width ends; lines
  // that begin with a blank stay as they are.
  void Footer(const std::string& text);
  // What the command does, once all values are there.
  void Callback(std::function<void()> callback);

 protected:
  CLI::App* app() const { return app_; }

 private:
  Option* Keep(CLI::Option* option);

  CLI::App* app_;
  std::deque<Command> commands_;
  std::deque<Option> options_;
};

class Program : public Command {
 public:
  Program(const std::string& name, const std::string& description, const std::string& version);
  ~Program();

  // Does what the arguments say: calls a command's callback, or prints help or the version to
  // standard output. Throws Failure if the arguments are wrong, or standard output cannot be
  // written.
  void Run(int argc, char** argv);

 private:
  Program(std::unique_ptr<CLI::App> app);

  std::unique_ptr<CLI::App> program_;
};

}  // namespace calib

#endif  // CALIB_CONSOLE_COMMAND_LINE_H_
