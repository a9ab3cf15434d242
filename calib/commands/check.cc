// calib check FILE...
#include <memory>
#include <optional>

#include "calib/commands/commands.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/printable.h"
#include "calib/fields/presence.h"
#include "calib/fields/unknown.h"
#include "calib/formats/record_reader.h"

namespace calib {
namespace {

struct Flags {
  std::vector<std::string> paths;
  InputFlags input;
  bool allow_unknown = false;
};

// What is wrong with the file: a line for each finding.
std::string Findings(const Record& record, bool allow_unknown) {
  std::string findings;
  for (const std::string& path : MissingFields(*record.message)) {
    findings += record.name + ": " + path + ": required, but not set\n";
  }
  if (allow_unknown) return findings;
  for (const UnknownField& unknown : FindUnknownFields(*record.message)) {
    findings += record.name + ": " + Describe(unknown) + "\n";
  }
  return findings;
}

std::string Summary(const Record& record) {
  const std::string size = std::to_string(record.file_size) + " bytes";
  return record.name + ": a whole " + record.type->name() + " of " + size +
         (IsEmpty(*record.message) ? ", in which nothing is set\n" : "\n");
}

// What there is to say of several files.
std::string Count(size_t whole, size_t found, size_t failed) {
  std::string count = std::to_string(whole + found + failed) + " files: " + std::to_string(whole) +
                      " whole, " + std::to_string(found) + " with findings";
  if (failed > 0) count += ", " + std::to_string(failed) + " that could not be checked";
  return count + "\n";
}

int Check(const Flags& flags) {
  size_t whole = 0, found = 0;
  Failures failures(flags.paths.size());
  for (const std::string& path : flags.paths) {
    std::optional<RecordFile> file;
    if (!failures.Try([&] { file = ReadRecordFile(path, flags.input); })) continue;
    std::string findings;
    try {
      const Record record = DecodeRecord(*file);
      findings = Findings(record, flags.allow_unknown);
      if (findings.empty()) Print(Summary(record));
    } catch (const Failure& malformed) {
      findings = PrintableLines(malformed.what()) + "\n";
    }
    Print(findings);
    ++(findings.empty() ? whole : found);
  }
  if (flags.paths.size() > 1) Print(Count(whole, found, failures.count()));
  return failures.count() > 0 ? kTrouble : found > 0 ? kFinding : kFine;
}

}  // namespace

void AddCheck(Command* program, int* status) {
  Command* command = program->AddCommand("check", "Says whether records are whole");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->paths, "The files to check")->Required();
  flags->input.AddTo(command);
  command->AddFlag("--allow-unknown", flags->allow_unknown,
                   "Accept unknown fields, as a newer schema makes them");
  command->Footer(
      "Reports where a file is malformed and how, required fields that are not set, and unknown "
      "fields: one line for each, or one that says that the record is whole. Of several files all "
      "are checked, and the last line counts them.\n\n"
      "Exit status: 0 all are whole, 1 something was found, 2 a file could not be checked.\n\n"
      "Examples:\n"
      "  calib check rig.RobotCalibration.binpb\n"
      "  calib check --type RobotCalibration --format binary - < rig.bin");
  command->Callback([flags, status] { *status = Check(*flags); });
}

}  // namespace calib
