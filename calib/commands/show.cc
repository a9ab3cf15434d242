// calib show FILE
#include <memory>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/terminal.h"
#include "calib/fields/presence.h"
#include "calib/formats/record_reader.h"
#include "calib/views/record_text.h"

namespace calib {
namespace {

struct Flags {
  std::string path;
  InputFlags input;
  bool full = false;
  std::string color = "auto";
};

void ShowOne(const Record& record, const TextOptions& options) {
  Print(TextOf(*record.message, options));
  if (IsEmpty(*record.message)) {
    Note(record.name + ": a " + record.type->name() + " in which nothing is set");
  }
  for (const std::string& path : MissingFields(*record.message)) {
    Note(record.name + ": " + path + " is required, but not set");
  }
}

void Show(const Flags& flags) {
  TextOptions options;
  options.full = flags.full;
  options.color = UseColor(flags.color);
  options.width = OutputWidth();
  RecordReader reader(flags.path, flags.input);
  for (Record record = {}; reader.Next(&record);) {
    if (reader.file().many()) Print("# " + record.name + "\n");
    ShowOne(record, options);
  }
}

}  // namespace

void AddShow(Command* program, int* status) {
  Command* command = program->AddCommand("show", "Shows what is in a record");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->path, "The file to show")->Required();
  flags->input.AddTo(command);
  command->AddFlag("--full", flags->full, "Show long lists, text and images in full");
  AddColor(command, &flags->color);
  command->Footer(
      "Lists of more than 16 elements, and text and images of more than 64 bytes, are folded to "
      "their size, in a way that no reader takes for a whole record; 'calib convert' writes "
      "records for programs, and JSON. Of a log, each record is shown below its name.\n\n"
      "Examples:\n"
      "  calib show rig.RobotCalibration.binpb\n"
      "  calib show checks.FocusCheckProto.binpb.log[-1]\n"
      "  calib show --type FocusInfo --format binary focus.bin --full | less");
  command->Callback([flags, status] {
    Show(*flags);
    *status = kFine;
  });
}

}  // namespace calib
