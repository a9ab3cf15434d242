// calib merge FILE... --output OUT
#include <memory>

#include "calib/commands/commands.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/compare.h"
#include "calib/formats/record_reader.h"
#include "calib/formats/record_writer.h"

namespace calib {
namespace {

struct Flags {
  std::vector<std::string> paths;
  InputFlags input;
  OutputFlags output;
  std::string out;
};

// Says what `next` replaces. Elements of repeated fields replace nothing: they are added.
void TellReplaced(const Record& next, const google::protobuf::Message& merged) {
  for (const Difference& difference : Compare(merged, *next.message, Tolerance())) {
    const bool element = difference.path.find('[') != std::string::npos;
    if (element || difference.before.empty() || difference.after.empty()) continue;
    Note(next.name + ": " + difference.path + ": " + difference.after + " replaces " +
         difference.before);
  }
}

void Merge(const Flags& flags) {
  std::unique_ptr<google::protobuf::Message> merged;
  ForEachRecord(flags.paths, flags.input, [&](const Record& record) {
    if (merged == nullptr) {
      merged.reset(record.message->New());
    } else {
      TellReplaced(record, *merged);
    }
    merged->MergeFrom(*record.message);
    NoteLostComments(record, flags.out, flags.output);
  });
  if (merged == nullptr) throw Failure("there is no record to merge");
  WriteRecord(flags.out, *merged, flags.output);
}

}  // namespace

void AddMerge(Command* program, int* status) {
  Command* command = program->AddCommand("merge", "Puts records of one type together");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->paths, "The files to put together, in this order")->Required();
  flags->input.AddTo(command);
  command->AddOption("--output", flags->out, "The file to write")->Required()->ValueName("OUT");
  flags->output.AddTo(command);
  command->Footer(
      "Elements of repeated fields are put one behind the other, messages are merged field by "
      "field, and of single values the last one counts; what it replaces is told. Unknown fields "
      "are kept.\n\n"
      "Examples:\n"
      "  calib merge left.RobotCalibration.binpb right.RobotCalibration.binpb \\\n"
      "    --output rig.RobotCalibration.binpb\n"
      "  calib merge a.FocusInfo.binpb b.FocusInfo.binpb --output - --to text");
  command->Callback([flags, status] {
    Merge(*flags);
    *status = kFine;
  });
}

}  // namespace calib
