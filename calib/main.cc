// calib looks at records, checks, converts, compares and draws them, and brings them in from
// elsewhere. One file a command (commands/); what they share lies in the folders beside it.
#include <google/protobuf/stubs/common.h>

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

// The parser would say only that a subcommand is required.
void CheckCommand(const CLI::App& program, int argc, char** argv) {
  if (argc < 2) throw Failure("no command is named", "'calib --help' lists them all.");
  if (argv[1][0] == '-') return;
  std::vector<std::string> names;
  for (const CLI::App* command : program.get_subcommands({})) {
    if (command->get_name() == argv[1]) return;
    names.push_back(command->get_name());
  }
  throw Failure("no command is called '" + std::string(argv[1]) + "'",
                SuggestClosest(argv[1], names) + "'calib --help' lists them all.");
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
    return Report(error.what(), "'" + command + " --help' tells how it is used.");
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
