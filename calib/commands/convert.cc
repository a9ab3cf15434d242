// calib convert IN OUT
#include <memory>
#include <optional>

#include "calib/commands/commands.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/unknown.h"
#include "calib/formats/record_reader.h"
#include "calib/formats/record_writer.h"

namespace calib {
namespace {

struct Flags {
  std::string in, out;
  InputFlags input;
  OutputFlags output;
  bool drop_unknown = false;
};

void DropUnknown(Record* record) {
  for (const UnknownField& unknown : FindUnknownFields(*record->message)) {
    Note(record->name + ": left out " + Describe(unknown));
  }
  record->message->DiscardUnknownFields();
}

void Convert(const Flags& flags) {
  RecordReader reader(flags.in, flags.input);
  std::optional<RecordFileWriter> writer;  // opened once there is something to write
  Record record = {};
  while (reader.Next(&record)) {
    if (flags.drop_unknown) DropUnknown(&record);
    NoteLostComments(record, flags.out, flags.output);
    if (!writer) writer.emplace(flags.out, record.type, flags.output);
    writer->Write(*record.message);
  }
  if (!writer) writer.emplace(flags.out, reader.file().type(), flags.output);
  writer->Commit();
}

}  // namespace

void AddConvert(Command* program, int* status) {
  Command* command =
      program->AddCommand("convert", "Converts records between binary, text, JSON and logs");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("IN", flags->in, "The file to read")->Required();
  command->AddOption("OUT", flags->out, "The file to write")->Required();
  flags->input.AddTo(command);
  flags->output.AddTo(command);
  command->AddFlag("--drop-unknown", flags->drop_unknown,
                   "Leave unknown fields out, and say so; text and JSON cannot hold them");
  command->Footer(
      "The output holds what the input holds, or is not written: JSON cannot hold text that is not "
      "UTF-8. Comments of a text are no part of a record. Many records, one after the other, are a "
      "log (NAME.TYPE.binpb.log) or JSON lines (NAME.TYPE.jsonl).\n\n"
      "Examples:\n"
      "  calib convert rig.RobotCalibration.binpb rig.RobotCalibration.txtpb\n"
      "  calib convert rig.RobotCalibration.binpb - --to json | jq .camera[].name\n"
      "  calib convert checks.FocusCheckProto.binpb.log checks.FocusCheckProto.jsonl\n"
      "  calib convert --type FocusInfo --format text notes.txt focus.FocusInfo.binpb");
  command->Callback([flags, status] {
    Convert(*flags);
    *status = kFine;
  });
}

}  // namespace calib
