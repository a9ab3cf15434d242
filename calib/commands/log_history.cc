// calib log current LOG, at LOG TIME, rollback LOG N, history LOG
//
// The record that was appended last is the one that is valid.
#include <google/protobuf/message.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>

#include "calib/commands/log_commands.h"
#include "calib/console/date.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/compare.h"
#include "calib/fields/metadata_time.h"
#include "calib/formats/codec.h"
#include "calib/formats/log_appender.h"
#include "calib/formats/log_times.h"
#include "calib/formats/record_reader.h"
#include "calib/formats/record_writer.h"

namespace calib {
namespace {

using google::protobuf::Message;

struct Flags {
  std::string log, when, record, time = "now", out = "-";
  InputFlags input;
  OutputFlags output;
};

Record RecordAt(const Flags& flags, const std::string& index) {
  InputFlags input = flags.input;
  input.records = index;
  return ReadRecord(flags.log, input);
}

void Write(const Flags& flags, const Record& record) {
  OutputFlags output = flags.output;
  output.partial = true;  // the log held it
  if (flags.out == "-" && output.format.empty()) output.format = "text";
  Note(record.name);
  WriteRecord(flags.out, *record.message, output);
}

// The number of the record that was valid then.
int64_t ValidAt(const Flags& flags) {
  const std::optional<int64_t> date = ParseDate(flags.when);
  char* end = nullptr;
  const int64_t number = std::strtoll(flags.when.c_str(), &end, 10);
  if (!date && (flags.when.empty() || *end != '\0')) {
    throw Failure("TIME: is '" + flags.when + "', expected a date in UTC, or a number",
                  "A date such as 2026-03-01T12:00:00Z is a time of appending, a number is a "
                  "metadata.time.");
  }
  const LogTimes times(flags.log);
  int64_t valid = -1;
  std::optional<int64_t> latest;
  RecordReader reader(flags.log, flags.input);
  Record record = {};
  for (int64_t index = 0; reader.Next(&record); ++index) {
    const std::optional<int64_t> time = date ? times.TimeOf(index) : MetadataTime(*record.message);
    if (!time || *time > (date ? *date : number)) continue;
    if (!date && latest && *time < *latest) continue;
    latest = time;
    valid = index;
  }
  if (valid >= 0) return valid;
  throw Failure(reader.file().name() + ": holds no record of " + flags.when + " or before",
                date ? "Times of appending are kept by 'calib log append --time'; a number is "
                       "compared with metadata.time."
                     : "A date is compared with the times of appending.");
}

void Rollback(const Flags& flags) {
  const Record record = RecordAt(flags, flags.record);
  LogAppender appender(flags.log, record.type, true);
  const int64_t number = appender.records();
  LogTimes::Add(flags.log, number, TimeNamed(flags.time));
  appender.Append(record.name, Encode(Format::kBinary, *record.message));
  appender.Commit();
  Note(record.name + " is current again, as [" + std::to_string(number) + "]");
}

void History(const Flags& flags) {
  const LogTimes times(flags.log);
  RecordReader reader(flags.log, flags.input);
  Record record = {};
  std::unique_ptr<Message> before;
  for (int64_t index = 0; reader.Next(&record); ++index) {
    const std::optional<int64_t> appended = times.TimeOf(index);
    const std::optional<int64_t> measured = MetadataTime(*record.message);
    std::string line = "[" + std::to_string(index) + "]";
    if (appended) line += " appended " + FormatDate(*appended);
    if (measured) line += " metadata.time " + std::to_string(*measured);
    if (before != nullptr) {
      const size_t count = Compare(*before, *record.message, Tolerance()).size();
      line += count == 0
                  ? " the same"
                  : " " + std::to_string(count) + (count == 1 ? " difference" : " differences");
    }
    Print(line + "\n");
    if (before == nullptr) before.reset(record.message->New());
    before->CopyFrom(*record.message);
  }
}

Command* AddOne(Command* log, const std::string& name, const std::string& description,
                Flags* flags) {
  Command* command = log->AddCommand(name, description);
  command->AddOption("LOG", flags->log, "The log")->Required();
  return command;
}

void AddOutput(Command* command, Flags* flags) {
  command->AddOption("--output", flags->out, "The file to write; else standard output, as text")
      ->ValueName("OUT");
  flags->input.AddTo(command);
  flags->output.AddTo(command);
}

}  // namespace

void AddLogCurrent(Command* log, int* status) {
  const auto flags = std::make_shared<Flags>();
  Command* command = AddOne(log, "current", "Writes the record that is valid now", flags.get());
  AddOutput(command, flags.get());
  command->Footer(
      "That is the last one of the log.\n\n"
      "Examples:\n"
      "  calib log current base.BaseCalibrationProto.binpb.log\n"
      "  calib log current robot.RobotCalibration.binpb.log \\\n"
      "    --output robot.RobotCalibration.binpb");
  command->Callback([flags, status] {
    Write(*flags, RecordAt(*flags, "-1"));
    *status = kFine;
  });
}

void AddLogAt(Command* log, int* status) {
  const auto flags = std::make_shared<Flags>();
  Command* command = AddOne(log, "at", "Writes the record that was valid at a time", flags.get());
  command->AddOption("TIME", flags->when, "A date in UTC, or a number")->Required();
  AddOutput(command, flags.get());
  command->Footer(
      "A date is compared with the times of appending, which 'calib log append --time' keeps: of "
      "the "
      "records up to it, the one that was appended last. A number is compared with metadata.time, "
      "whose unit the format does not tell: of the records up to it, the latest.\n\n"
      "Examples:\n"
      "  calib log at base.BaseCalibrationProto.binpb.log 2026-03-01\n"
      "  calib log at base.BaseCalibrationProto.binpb.log 1447171200");
  command->Callback([flags, status] {
    Write(*flags, RecordAt(*flags, std::to_string(ValidAt(*flags))));
    *status = kFine;
  });
}

void AddLogRollback(Command* log, int* status) {
  const auto flags = std::make_shared<Flags>();
  Command* command = AddOne(log, "rollback", "Makes an earlier record valid again", flags.get());
  command->AddOption("RECORD", flags->record, "Its number; -2 is the last but one")->Required();
  command->AddOption("--time", flags->time, "The time to keep in place of now")
      ->ValueName("now|DATE");
  flags->input.AddTo(command);
  command->Footer(
      "Appends a copy of the record, and its time of appending to LOG.times: what was valid in "
      "between stays in the log.\n\n"
      "Examples:\n"
      "  calib log rollback base.BaseCalibrationProto.binpb.log -- -2\n"
      "  calib log rollback base.BaseCalibrationProto.binpb.log 17");
  command->Callback([flags, status] {
    Rollback(*flags);
    *status = kFine;
  });
}

void AddLogHistory(Command* log, int* status) {
  const auto flags = std::make_shared<Flags>();
  Command* command = AddOne(log, "history", "Lists what was valid when", flags.get());
  flags->input.AddTo(command);
  command->Footer(
      "A line for each record: its number, when it was appended if that was kept, its "
      "metadata.time if it has one, and how many fields differ from the one before.\n\n"
      "Examples:\n"
      "  calib log history base.BaseCalibrationProto.binpb.log");
  command->Callback([flags, status] {
    History(*flags);
    *status = kFine;
  });
}

}  // namespace calib
