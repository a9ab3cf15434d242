// calib diff A B
#include <memory>

#include "calib/commands/commands.h"
#include "calib/commands/diff_pixels.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/terminal.h"
#include "calib/fields/compare.h"
#include "calib/formats/record_reader.h"

namespace calib {
namespace {

using google::protobuf::Message;

struct Flags {
  std::string before, after;
  InputFlags input;
  Tolerance tolerance;
  std::string by;
  std::string color = "auto";
  PixelFlags pixels;
};

std::string Line(const Difference& difference, bool color) {
  std::string place = Painted(difference.path, Color::kCyan, color);
  if (!difference.path.empty()) place += ": ";
  if (!difference.summary.empty()) return place + difference.summary + "\n";
  const std::string before = Painted(difference.before, Color::kRed, color);
  const std::string after = Painted(difference.after, Color::kGreen, color);
  if (difference.before.empty()) return place + "added " + after + "\n";
  if (difference.after.empty()) return place + "removed " + before + "\n";
  return place + before + " -> " + after + "\n";
}

MatchBy By(const std::string& name) {
  return name == "index"    ? MatchBy::kIndex
         : name == "name"   ? MatchBy::kName
         : name == "serial" ? MatchBy::kSerial
                            : MatchBy::kAuto;
}

int Diff(const Flags& flags) {
  const std::vector<Record> records = ReadRecords({flags.before, flags.after}, flags.input);
  if (flags.pixels.pixels) {
    return DiffPixels(records[0], records[1], flags.pixels, flags.tolerance.absolute);
  }
  const bool color = UseColor(flags.color);
  const Message &before = *records[0].message, &after = *records[1].message;
  const CameraMatch match(before, after, By(flags.by));
  std::string lines;
  for (const Difference& difference : Compare(before, after, flags.tolerance, match)) {
    lines += Line(difference, color);
  }
  const std::string told = flags.by == "index" ? "" : match.Told();
  if (!told.empty() && (match.moved() || !lines.empty())) Note(told);
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
  AddChoice(command, "--by", &flags->by, {"index", "name", "serial"},
            "Match cameras by that; else by a name or a serial number that no other camera has on "
            "either side, and those that are left by their index");
  AddColor(command, &flags->color);
  flags->pixels.AddTo(command);
  command->Footer(
      "One line for each field: its path, its value in A and its value in B; below the numbers of "
      "a "
      "rigid transform, by how much it was turned and moved. How cameras are matched is told on "
      "standard error, and paths have their indices in A; that their order differs is no "
      "difference. "
      "Other elements are compared by their index. A field that is not set differs from one that "
      "is "
      "set to its default; 0 equals -0, and a NaN equals a NaN. The records may be of different "
      "formats, but not types.\n\n"
      "Exit status: 0 no difference, 1 differences, 2 a file could not be read.\n\n"
      "Examples:\n"
      "  calib diff october.RobotCalibration.binpb november.RobotCalibration.binpb\n"
      "  calib diff --pixels --tolerance 0.5 october.RobotCalibration.binpb "
      "november.RobotCalibration.binpb\n"
      "  calib diff --tolerance 1e-6 a.CameraIntrinsics.binpb b.CameraIntrinsics.json");
  command->Callback([flags, status] { *status = Diff(*flags); });
}

}  // namespace calib
