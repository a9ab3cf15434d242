// calib diff A B
#include <memory>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/terminal.h"
#include "calib/fields/compare.h"
#include "calib/formats/record_reader.h"

namespace calib {
namespace {

struct Flags {
  std::string before, after;
  InputFlags input;
  Tolerance tolerance;
  std::string color = "auto";
};

std::string Line(const Difference& difference, bool color) {
  const std::string place = Painted(difference.path, Color::kCyan, color) + ": ";
  const std::string before = Painted(difference.before, Color::kRed, color);
  const std::string after = Painted(difference.after, Color::kGreen, color);
  if (difference.before.empty()) return place + "added " + after + "\n";
  if (difference.after.empty()) return place + "removed " + before + "\n";
  return place + before + " -> " + after + "\n";
}

int Diff(const Flags& flags) {
  const std::vector<Record> records = ReadRecords({flags.before, flags.after}, flags.input);
  const bool color = UseColor(flags.color);
  std::string lines;
  for (const Difference& difference :
       Compare(*records[0].message, *records[1].message, flags.tolerance)) {
    lines += Line(difference, color);
  }
  Print(lines);
  return lines.empty() ? kFine : kFinding;
}

}  // namespace

void AddDiff(Command* program, int* status) {
  Command* command = program->AddCommand("diff", "Says in which fields two records differ");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("A", flags->before, "The record of before")->Required();
  command->AddOption("B", flags->after, "The record to compare with it")->Required();
  flags->input.AddTo(command);
  command
      ->AddOption("--tolerance", flags->tolerance.absolute,
                  "Accept floating-point values that differ by no more than that")
      ->Check(NumberFromZero())
      ->ValueName("NUMBER");
  command
      ->AddOption("--relative", flags->tolerance.relative,
                  "Accept those that differ by no more than that share of the "
                  "larger one, from 0 to below 1")
      ->Check(NumberFromZeroToBelow(1))
      ->ValueName("SHARE");
  AddColor(command, &flags->color);
  command->Footer(
      "One line for each field: its path, its value in A and its value in B. Elements are compared "
      "by their index. A field that is not set differs from one that is set to its default; 0 "
      "equals -0, and a NaN equals a NaN. The records may be of different formats, but not "
      "types.\n\n"
      "Exit status: 0 no difference, 1 differences, 2 a file could not be read.\n\n"
      "Examples:\n"
      "  calib diff october.RobotCalibration.binpb november.RobotCalibration.binpb\n"
      "  calib diff --tolerance 1e-6 a.CameraIntrinsics.binpb b.CameraIntrinsics.json");
  command->Callback([flags, status] { *status = Diff(*flags); });
}

}  // namespace calib
