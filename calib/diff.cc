// calib diff A B
#include <memory>

#include "calib/arguments.h"
#include "calib/commands.h"
#include "calib/compare.h"
#include "calib/failure.h"
#include "calib/file.h"
#include "calib/record.h"

namespace calib {
namespace {

struct Flags {
  std::string before, after;
  InputFlags input;
  Tolerance tolerance;
};

std::string Line(const Difference& difference) {
  const std::string place = difference.path + ": ";
  if (difference.before.empty()) return place + "added " + difference.after + "\n";
  if (difference.after.empty()) return place + "removed " + difference.before + "\n";
  return place + difference.before + " -> " + difference.after + "\n";
}

int Diff(const Flags& flags) {
  if (flags.before == "-" && flags.after == "-") {
    throw Failure("both records are to come from standard input", "Name a file for one of them.");
  }
  const std::vector<Record> records = ReadRecords({flags.before, flags.after}, flags.input);
  std::string lines;
  for (const Difference& difference :
       Compare(*records[0].message, *records[1].message, flags.tolerance)) {
    lines += Line(difference);
  }
  Print(lines);
  return lines.empty() ? kFine : kFinding;
}

}  // namespace

void AddDiff(CLI::App* program, int* status) {
  CLI::App* command = program->add_subcommand("diff", "Says in which fields two records differ");
  const auto flags = std::make_shared<Flags>();
  command->add_option("A", flags->before, "The record of before")->required();
  command->add_option("B", flags->after, "The record to compare with it")->required();
  flags->input.AddTo(command);
  command
      ->add_option("--tolerance", flags->tolerance.absolute,
                   "Accept floating-point values that differ by no more than that")
      ->check(NumberFromZero())
      ->type_name("NUMBER");
  command
      ->add_option("--relative", flags->tolerance.relative,
                   "Accept those that differ by no more than that share of the "
                   "larger one, from 0 to below 1")
      ->check(NumberFromZeroToBelow(1))
      ->type_name("SHARE");
  command->footer(
      "One line for each field: its path, its value in A and its value in B. Elements are compared "
      "by their index. A field that is not set differs from one that is set to its default; 0 "
      "equals -0, and a NaN equals a NaN. The records may be of different formats, but not "
      "types.\n\n"
      "Exit status: 0 no difference, 1 differences, 2 a file could not be read.\n\n"
      "Examples:\n"
      "  calib diff october.RobotCalibration.binpb november.RobotCalibration.binpb\n"
      "  calib diff --tolerance 1e-6 a.CameraIntrinsics.binpb b.CameraIntrinsics.json");
  command->callback([flags, status] { *status = Diff(*flags); });
}

}  // namespace calib
