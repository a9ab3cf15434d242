// calib diff A B
#include <cstdint>
#include <memory>
#include <optional>

#include "calib/commands/commands.h"
#include "calib/commands/diff_pixels.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/terminal.h"
#include "calib/fields/compare.h"
#include "calib/fields/field_path.h"
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

// The differences of two records; one that is null is not there. `name` is empty, or what tells the
// records from the others of their files: "[17]".
std::vector<Difference> DifferencesOf(const Record* before, const Record* after,
                                      const std::string& name, const Flags& flags) {
  if (before == nullptr) return {{name, "", after->type->name(), ""}};
  if (after == nullptr) return {{name, before->type->name(), "", ""}};
  const Message &a = *before->message, &b = *after->message;
  const CameraMatch match(a, b, By(flags.by));
  std::vector<Difference> differences = Compare(a, b, flags.tolerance, match);
  const std::string told = flags.by == "index" ? "" : match.Told();
  if (!told.empty() && (match.moved() || !differences.empty())) {
    Note(name.empty() ? told : name + ": " + told);
  }
  if (name.empty()) return differences;
  for (Difference& difference : differences) {
    difference.path = difference.path.empty() ? name : JoinPath(name, difference.path);
  }
  return differences;
}

void CheckTypes(const RecordFile& before, const RecordFile& after) {
  if (before.type() == after.type()) return;
  throw Failure(after.name() + ": is a " + after.type()->name() + ", but " + before.name() +
                    " is a " + before.type()->name(),
                "Name records of one type.");
}

int Diff(const Flags& flags) {
  if (flags.pixels.pixels) {
    const std::vector<Record> two = ReadRecords({flags.before, flags.after}, flags.input);
    return DiffPixels(two[0], two[1], flags.pixels, By(flags.by), flags.tolerance.absolute);
  }
  std::optional<RecordReader> readers[2];
  Record records[2] = {};
  bool there[2] = {};
  const std::string* paths[] = {&flags.before, &flags.after};
  Failures failures(2);
  for (int i = 0; i < 2; ++i) {
    failures.Try([&] {
      readers[i].emplace(*paths[i], flags.input);
      if (i == 1 && readers[0]) CheckTypes(readers[0]->file(), readers[1]->file());
      there[i] = readers[i]->Next(&records[i]);
    });
  }
  failures.ThrowIfAny();
  const bool color = UseColor(flags.color);
  const bool many = readers[0]->file().many() || readers[1]->file().many();
  int status = kFine;
  for (int64_t index = 0; there[0] || there[1]; ++index) {
    std::string lines;
    for (const Difference& difference :
         DifferencesOf(there[0] ? &records[0] : nullptr, there[1] ? &records[1] : nullptr,
                       many ? "[" + std::to_string(index) + "]" : "", flags)) {
      lines += Line(difference, color);
    }
    if (!lines.empty()) status = kFinding;
    Print(lines);
    for (int i = 0; i < 2; ++i) there[i] = there[i] && readers[i]->Next(&records[i]);
  }
  return status;
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
      "difference. Other elements are compared by their index. A field that is not set differs "
      "from one that is set to its default; 0 equals -0, and a NaN equals a NaN. The records may "
      "be of different formats, but not types. Of logs, the records at one place are compared, "
      "below its number.\n\n"
      "Exit status: 0 no difference, 1 differences, 2 a file could not be read.\n\n"
      "Examples:\n"
      "  calib diff october.RobotCalibration.binpb november.RobotCalibration.binpb\n"
      "  calib diff --pixels --tolerance 0.5 october.RobotCalibration.binpb "
      "november.RobotCalibration.binpb\n"
      "  calib diff base.BaseCalibrationProto.binpb.log[-2] "
      "base.BaseCalibrationProto.binpb.log[-1]\n"
      "  calib diff --tolerance 1e-6 a.CameraIntrinsics.binpb b.CameraIntrinsics.json");
  command->Callback([flags, status] { *status = Diff(*flags); });
}

}  // namespace calib
