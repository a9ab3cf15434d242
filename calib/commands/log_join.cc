// calib log join FILE... --output OUT
#include <memory>
#include <optional>

#include "calib/commands/log_commands.h"
#include "calib/console/failure.h"
#include "calib/formats/record_reader.h"
#include "calib/formats/record_writer.h"

namespace calib {
namespace {

struct Flags {
  std::vector<std::string> paths;
  std::string out;
  InputFlags input;
  OutputFlags output;
};

void Join(const Flags& flags) {
  std::optional<RecordFileWriter> writer;
  ForEachRecord(flags.paths, flags.input, [&](const Record& record) {
    if (!writer) writer.emplace(flags.out, record.type, flags.output);
    writer->Write(*record.message);
  });
  if (!writer) throw Failure("there is no record to join");
  writer->Commit();
}

}  // namespace

void AddLogJoin(Command* log, int* status) {
  Command* command = log->AddCommand("join", "Puts the records of files into one log");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->paths, "The files to join, in this order")->Required();
  command->AddOption("--output", flags->out, "The log, or JSON lines, to write")
      ->Required()
      ->ValueName("OUT");
  flags->input.AddTo(command);
  flags->output.AddTo(command);
  command->Footer(
      "The output is written anew; 'calib log append' adds to a log.\n\n"
      "Examples:\n"
      "  calib log join robots/*.RobotCalibration.binpb \\\n"
      "    --output all.RobotCalibration.binpb.log\n"
      "  calib log join *.FocusCheckProto.json --output - --to jsonl");
  command->Callback([flags, status] {
    Join(*flags);
    *status = kFine;
  });
}

}  // namespace calib
