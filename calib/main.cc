// calib looks at records, checks, converts, compares and draws them, and brings them in from
// elsewhere. One file a command (commands/); what they share lies in the folders beside it.
#include <google/protobuf/stubs/common.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/build_info.h"
#include "calib/console/closest.h"
#include "calib/console/failure.h"
#include "calib/console/out_of_memory.h"

namespace calib {
namespace {

int Report(const std::string& message, const std::string& remedy) {
  TellFailure(message, remedy);
  return kTrouble;
}

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

// The parser would say only that a subcommand is required.
void CheckCommand(const CLI::App& program, int argc, char** argv) {
  if (argc < 2) throw Failure("no command is named", "'calib --help' lists them all.");
  const std::string word = argv[1];
  std::vector<std::string> names;
  for (const CLI::App* command : program.get_subcommands({})) names.push_back(command->get_name());
  if (word[0] != '-') {
    if (IsIn(names, word)) return;
    throw Failure("no command is called '" + word + "'",
                  SuggestClosest(word, names) + "'calib --help' lists them all.");
  }
  const std::vector<std::string> options = OptionNames(program);
  if (IsIn(options, word)) return;
  std::string meant;
  if (word.size() > 2 && word.compare(0, 2, "--") == 0) {
    meant = SuggestClosest(word, options);
    if (meant.empty()) meant = SuggestClosest(word.substr(2), names);
  }
  throw Failure("no option of calib is called '" + word + "'",
                meant + "'calib --help' lists them all.");
}

// What may have been meant by an option that a command does not have.
std::string SuggestOption(const CLI::App& program, const CLI::ParseError& error) {
  if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::ExtrasError)) return "";
  const std::string message = error.what();
  const size_t begin = message.find("--");
  if (begin == std::string::npos) return "";
  const std::string option = message.substr(begin, message.find_first_of(" =", begin) - begin);
  const std::vector<CLI::App*> used = program.get_subcommands();
  return used.empty() ? "" : SuggestClosest(option, OptionNames(*used.front()));
}

int Run(int argc, char** argv) {
  CLI::App program("Looks at calibration records, checks, converts, compares and draws them.",
                   "calib");
  program.set_version_flag("--version", kVersion);
  program.require_subcommand(1);
  program.formatter(HelpLayout());
  program.footer(
      "Files are named NAME.TYPE.EXTENSION, such as rig.RobotCalibration.binpb, with the "
      "extensions binpb (binary), txtpb (text) and json. For other names, --type and --format tell "
      "what is in them. The file '-' is standard input or output.\n\n"
      "Exit status: 0 fine, 1 a finding (check, diff) or nothing found (get), 2 trouble." +
      std::string(kReadsJson ? ""
                             : "\n\nThis build writes JSON, but does not read it: its protobuf "
                               "run-time skips in silence what it does not understand there."));
  int status = kFine;
  AddTypes(&program, &status);
  AddShow(&program, &status);
  AddConvert(&program, &status);
  AddCheck(&program, &status);
  AddDiff(&program, &status);
  AddGet(&program, &status);
  AddMerge(&program, &status);
  AddPlot(&program, &status);
  AddImport(&program, &status);
  AddExport(&program, &status);
  try {
    CheckCommand(program, argc, argv);
    program.parse(argc, argv);
  } catch (const CLI::Success& help_or_version) {
    const int code = program.exit(help_or_version);
    if (std::cout.flush()) return code;
    return Report("standard output: cannot be written", "Make room.");
  } catch (const CLI::ParseError& error) {
    std::string command = "calib";
    for (const CLI::App* used : program.get_subcommands()) command += " " + used->get_name();
    return Report(error.what(),
                  SuggestOption(program, error) + "'" + command + " --help' tells how it is used.");
  } catch (const Failure& failure) {
    return Report(failure.what(), failure.remedy());
  } catch (const std::exception& error) {
    return Report(error.what(), "");
  }
  return status;
}

}  // namespace
}  // namespace calib

// What is thrown while the program is set up or an error is told may end it.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
  calib::EndWhenOutOfMemory();
  const int status = calib::Run(argc, argv);
  // Frees what the run-time and the records keep, so that leak checkers see a clean exit.
  google::protobuf::ShutdownProtobufLibrary();
  return status;
}
