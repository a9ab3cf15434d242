// calib set FILE CHANGE...
#include <memory>

#include "calib/commands/commands.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/assignment.h"
#include "calib/formats/names.h"
#include "calib/formats/record_reader.h"
#include "calib/formats/record_writer.h"

namespace calib {
namespace {

struct Flags {
  std::string path, output_path;
  std::vector<std::string> assignments;
  InputFlags input;
  OutputFlags output;
};

void Set(const Flags& flags) {
  std::vector<Assignment> assignments;
  for (const std::string& text : flags.assignments) assignments.push_back(ParseAssignment(text));
  const Record record = ReadRecord(flags.path, flags.input);
  for (const Assignment& assignment : assignments) Apply(assignment, record.message.get());
  OutputFlags output = flags.output;
  const std::string& path = flags.output_path.empty() ? flags.path : flags.output_path;
  // In place, and to standard output, the format stays what it was.
  if (output.format.empty() && !FactsFromName(path).format) output.format = NameOf(record.format);
  NoteLostComments(record, path, output);
  WriteRecord(path, *record.message, output);
}

}  // namespace

void AddSet(Command* program, int* status) {
  Command* command = program->AddCommand("set", "Changes fields of a record");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->path, "The file to change")->Required();
  command
      ->AddOption("CHANGE", flags->assignments,
                  "What to change: PATH=VALUE sets a field or an element, PATH+=VALUE appends to a "
                  "repeated field, PATH= (nothing) clears a field or takes an element out")
      ->Required();
  flags->input.AddTo(command);
  command->AddOption("--output", flags->output_path, "The file to write; else FILE itself")
      ->ValueName("OUT");
  flags->output.AddTo(command);
  command->Footer(
      "Changes are made in their order, and all or none of them are: the file is written once, "
      "when "
      "every one of them could be made. A text is taken as it stands, a list is [0.1, 0.2], a "
      "message is name: \"cam0\" model: \"x\". The path camera[*] stands for all cameras, and "
      "camera[name=cam0] for those of that name.\n\n"
      "Examples:\n"
      "  calib set rig.RobotCalibration.binpb camera[0].name=left camera[1].name=right\n"
      "  calib set rig.RobotCalibration.binpb 'camera[0].intrinsics.k=[-0.28, 0.07]'\n"
      "  calib set rig.RobotCalibration.binpb 'camera[*].serial=' --output bare.json");
  command->Callback([flags, status] {
    Set(*flags);
    *status = kFine;
  });
}

}  // namespace calib
