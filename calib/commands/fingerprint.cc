// calib fingerprint FILE...
#include "calib/fields/fingerprint.h"

#include <memory>

#include "calib/commands/commands.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/unknown.h"
#include "calib/formats/record_reader.h"

namespace calib {
namespace {

struct Flags {
  std::vector<std::string> paths;
  InputFlags input;
};

int Fingerprints(const Flags& flags) {
  Failures failures(flags.paths.size());
  for (const std::string& path : flags.paths) {
    failures.Try([&] {
      const Record record = ReadRecord(path, flags.input);
      for (const UnknownField& unknown : FindUnknownFields(*record.message)) {
        Note(record.name + ": " + Describe(unknown) + " has no part in the fingerprint");
      }
      Print(Fingerprint(*record.message) + "  " + record.name + "\n");
    });
  }
  failures.ThrowIfAny();
  return kFine;
}

}  // namespace

void AddFingerprint(Command* program, int* status) {
  Command* command = program->AddCommand("fingerprint", "Prints a hash of what records hold");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->paths, "The files to read")->Required();
  flags->input.AddTo(command);
  command->Footer(
      "One line for each file: the hash in 64 hexadecimal digits, two blanks and the file's name. "
      "Files that hold the same values have the same hash, whatever their format, the order of "
      "their fields and how numbers are encoded in them; it is the SHA-256 of the type's name, a "
      "line break and the record in the binary format, without unknown fields, which are told, and "
      "with 0 in place of -0. 'calib check --expect-fingerprint' compares.\n\n"
      "Examples:\n"
      "  calib fingerprint rig.RobotCalibration.binpb\n"
      "  calib fingerprint *.RobotCalibration.binpb | sort | uniq -w 64 -D");
  command->Callback([flags, status] { *status = Fingerprints(*flags); });
}

}  // namespace calib
