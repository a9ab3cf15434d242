// calib looks at records, checks, converts, compares and draws them, and brings them in from
// elsewhere. One file a command (commands/); what they share lies in the folders beside it.
#include <google/protobuf/stubs/common.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <string>

#include "calib/commands/commands.h"
#include "calib/console/build_info.h"
#include "calib/console/command_line.h"
#include "calib/console/failure.h"
#include "calib/console/out_of_memory.h"

namespace calib {
namespace {

// In the order of --help.
constexpr struct {
  const char* name;
  void (*add)(Command* program, int* status);
} kCommands[] = {
    {"types", AddTypes},
    {"show", AddShow},
    {"convert", AddConvert},
    {"check", AddCheck},
    {"fingerprint", AddFingerprint},
    {"diff", AddDiff},
    {"get", AddGet},
    {"set", AddSet},
    {"merge", AddMerge},
    {"log", AddLog},
    {"table", AddTable},
    {"drift", AddDrift},
    {"plot", AddPlot},
    {"report", AddReport},
    {"image", AddImage},
    {"import", AddImport},
    {"export", AddExport},
    {"project", AddProject},
    {"unproject", AddUnproject},
    {"undistort", AddUndistort},
    {"undistort-image", AddUndistortImage},
    {"rectify", AddRectify},
    {"transform", AddTransform},
    {"convert-lens", AddConvertLens},
    {"scale", AddScale},
    {"crop", AddCrop},
    {"bin", AddBin},
    {"rotate", AddRotate},
    {"residuals", AddResiduals},
};

// The command that is named, or all if none is: to tell the parser of the options of all takes
// longer than to read a small record.
void AddCommands(Program* program, const std::string& named, int* status) {
  const bool known = std::any_of(std::begin(kCommands), std::end(kCommands),
                                 [&](const auto& command) { return command.name == named; });
  for (const auto& command : kCommands) {
    if (!known || command.name == named) command.add(program, status);
  }
}

int Run(int argc, char** argv) {
  Program program("calib",
                  "Looks at calibration records, checks, converts, compares and draws them.",
                  kVersion);
  program.Footer(
      "Files are named NAME.TYPE.EXTENSION, such as rig.RobotCalibration.binpb, with the "
      "extensions binpb (binary), txtpb (text), json, binpb.log (a log of many records) and jsonl "
      "(JSON lines). For other names, --type and --format tell what is in them. FILE[17], FILE[-1] "
      "and FILE[100:200] choose among the records of a file. The file '-' is standard input or "
      "output.\n\n"
      "Exit status: 0 fine, 1 a finding (check, diff, drift, log, residuals, table) or nothing "
      "found (get, image, project, unproject, undistort), 2 trouble." +
      std::string(kReadsJson ? ""
                             : "\n\nThis build writes JSON, but does not read it: its protobuf "
                               "run-time skips in silence what it does not understand there."));
  int status = kFine;
  AddCommands(&program, argc > 1 ? argv[1] : "", &status);
  try {
    program.Run(argc, argv);
  } catch (const Failure& failure) {
    TellFailure(failure.what(), failure.remedy());
    return kTrouble;
  } catch (const std::exception& error) {
    TellFailure(error.what(), "");
    return kTrouble;
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
