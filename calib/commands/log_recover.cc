// calib log recover LOG --output OUT
#include <cstdint>
#include <memory>

#include "calib/commands/log_commands.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/mapped_file.h"
#include "calib/console/output_file.h"
#include "calib/formats/binary_codec.h"
#include "calib/formats/log_recovery.h"
#include "calib/formats/log_type.h"

namespace calib {
namespace {

struct Flags {
  std::string path, out;
  InputFlags input;
  bool strict = false, keep_empty = false;
};

std::string Counted(int64_t count) {
  return std::to_string(count) + (count == 1 ? " record" : " records");
}

// What a stretch is, and where its records are in the output.
std::string Describe(const LogStretch& stretch, int64_t written, const std::string& out) {
  const std::string range =
      out + "[" + std::to_string(written) + ":" + std::to_string(written + stretch.records) + "]";
  switch (stretch.kind) {
    case LogStretch::kRecords:
      return Counted(stretch.records) + ", " + range;
    case LogStretch::kGuessed:
      return Counted(stretch.records) + ", guessed, " + range;
    case LogStretch::kEmptyAtEnd:
      return Counted(stretch.records) +
             " in which nothing is set, as where a file was not written to its end";
    default:
      return "damaged";
  }
}

int Recover(const Flags& flags) {
  const google::protobuf::Descriptor* type = LogType(flags.path, flags.input);
  if (type == nullptr) {
    throw Failure(InputName(flags.path) + ": its record type is not known",
                  "Give it with --type TYPE.");
  }
  const MappedFile file(flags.path);
  LogRecovery recovery(type, file.bytes());
  OutputFile output(flags.out);
  int64_t written = 0;
  int status = kFine;
  const auto tell = [&](const std::string& line) {
    flags.out == "-" ? Note(line) : Print(line + "\n");
  };
  for (const LogStretch& stretch : recovery.Stretches()) {
    const bool empty = stretch.kind == LogStretch::kEmptyAtEnd;
    const bool guessed = stretch.kind == LogStretch::kGuessed;
    const bool takes =
        stretch.records > 0 && !(empty && !flags.keep_empty) && !(guessed && flags.strict);
    if (stretch.kind != LogStretch::kRecords) status = kFinding;
    tell(InputName(flags.path) + ": bytes " + std::to_string(stretch.begin) + " to " +
         std::to_string(stretch.end) + ": " + Describe(stretch, written, OutputName(flags.out)) +
         (takes || stretch.records == 0 ? "" : "; left out"));
    if (!takes) continue;
    written += stretch.records;
    ByteView record;
    size_t next = 0;
    for (size_t at = stretch.begin; at < stretch.end && recovery.Frame(at, &record, &next);
         at = next) {
      output.Write(FrameRecord(std::string(record.data, record.size)));
    }
  }
  output.Commit();
  tell(OutputName(flags.out) + ": " + Counted(written));
  return status;
}

}  // namespace

void AddLogRecover(Command* log, int* status) {
  Command* command = log->AddCommand("recover", "Saves the records of a damaged log");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("LOG", flags->path, "The log, which stays as it is")->Required();
  command->AddOption("--output", flags->out, "The log to write")->Required()->ValueName("OUT");
  command->AddOption("--type", flags->input.type, "Record type; else the log's name tells it")
      ->ValueName("TYPE");
  command->AddFlag("--strict", flags->strict,
                   "Leave out what is guessed: records behind the damage");
  command->AddFlag("--keep-empty", flags->keep_empty,
                   "Keep records at the end in which nothing is set");
  command->Footer(
      "Writes every record ahead of the damage and, behind it, the longest chain of records that "
      "can be strictly read, up to the end or the next damage. The lengths have no checksum, so "
      "such a chain is a guess: the report says which records of the output are guessed. Zeros "
      "read as records in which nothing is set; at the end of a log they are left out.\n\n"
      "Exit status: 0 the log was whole, 1 it was not, 2 trouble.\n\n"
      "Examples:\n"
      "  calib log recover checks.FocusCheckProto.binpb.log \\\n"
      "    --output saved.FocusCheckProto.binpb.log\n"
      "  calib log recover --strict cut.FocusCheckProto.binpb.log --output saved");
  command->Callback([flags, status] { *status = Recover(*flags); });
}

}  // namespace calib
