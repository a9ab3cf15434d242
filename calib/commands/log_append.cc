// calib log append LOG FILE...
#include <cstdint>
#include <memory>
#include <optional>

#include "calib/commands/log_commands.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/presence.h"
#include "calib/formats/codec.h"
#include "calib/formats/log_appender.h"
#include "calib/formats/log_times.h"
#include "calib/formats/log_type.h"
#include "calib/formats/record_reader.h"

namespace calib {
namespace {

struct Flags {
  std::string log, time;
  std::vector<std::string> paths;
  InputFlags input;
  bool keep_empty = false, partial = false;
};

void CheckRequiredFields(const Record& record) {
  const std::vector<std::string> missing = MissingFields(*record.message);
  if (missing.empty()) return;
  throw Failure(record.name + ": not appended, since required fields are not set: " + missing[0],
                "Set them, or append the record as it is with --partial.");
}

void Append(const Flags& flags) {
  // The log's own name tells the type, else that of what is appended.
  const google::protobuf::Descriptor* type = LogType(flags.log, flags.input);
  std::optional<int64_t> time;
  if (!flags.time.empty()) time = TimeNamed(flags.time);
  std::unique_ptr<LogAppender> appender;
  std::optional<LogTimes> left;  // by a command that was stopped ahead of its record
  ForEachRecord(flags.paths, flags.input, [&](const Record& record) {
    if (type == nullptr) type = record.type;
    CheckLogType(flags.log, type, record);
    if (!flags.partial) CheckRequiredFields(record);
    if (appender == nullptr) {
      appender = std::make_unique<LogAppender>(flags.log, type, flags.keep_empty);
      left.emplace(flags.log);
    }
    const int64_t number = appender->records();
    if (time || left->TimeOf(number)) LogTimes::Add(flags.log, number, time);
    appender->Append(record.name, Encode(Format::kBinary, *record.message));
  });
  if (appender != nullptr) appender->Commit();
}

}  // namespace

void AddLogAppend(Command* log, int* status) {
  Command* command = log->AddCommand("append", "Appends records to a log");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("LOG", flags->log, "The log, which is made if it is not there")->Required();
  command->AddOption("FILE", flags->paths, "The files whose records are appended, in this order")
      ->Required();
  flags->input.AddTo(command);
  command->AddFlag("--partial", flags->partial,
                   "Append records even if required fields are missing");
  command->AddFlag("--keep-empty", flags->keep_empty,
                   "Append records in which nothing is set, and keep those at the log's end");
  command
      ->AddOption("--time", flags->time,
                  "Keep when the records were appended, in LOG.times, for 'calib log at'")
      ->ValueName("now|DATE");
  command->Footer(
      "Whatever happens, the records that were in the log stay whole. What a command left behind "
      "that was stopped in the middle is cut off by the next one, which says so. Records are on "
      "the disk before the command ends; all that are named are appended, or none. Several "
      "commands may append to one log at once: each waits for the others.\n\n"
      "Examples:\n"
      "  calib log append checks.FocusCheckProto.binpb.log today.FocusCheckProto.binpb\n"
      "  calib log append all.FocusCheckProto.binpb.log monday.FocusCheckProto.binpb.log[100:]");
  command->Callback([flags, status] {
    Append(*flags);
    *status = kFine;
  });
}

}  // namespace calib
