#include "calib/formats/record_file.h"

#include "calib/console/build_info.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/unknown.h"
#include "calib/formats/codec.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::Message;

namespace {

Format InputFormat(const std::string& path, const InputFlags& flags, const NameFacts& facts) {
  const std::optional<Format> format =
      flags.format.empty() ? facts.format : std::optional<Format>(FormatNamed(flags.format));
  if (format == Format::kJson && !kReadsJson) {
    throw Failure(InputName(path) +
                      ": is JSON, which this build of calib does not read: its "
                      "protobuf run-time skips in silence what it does not understand",
                  "Convert it with a calib that is built on a later run-time.");
  }
  if (!format) FailForFormat(InputName(path), "--format");
  return *format;
}

// The names of the types that the bytes can be a record of, with nothing in it that is malformed,
// missing or unknown.
std::string FittingTypes(Format format, const std::string& bytes) {
  std::string fitting;
  for (const Descriptor* type : RecordTypes()) {
    const std::unique_ptr<Message> record = DecodeIfFits(format, type, bytes);
    if (!record || !record->IsInitialized() || !FindUnknownFields(*record).empty()) continue;
    fitting += (fitting.empty() ? "" : ", ") + type->name();
  }
  return fitting;
}

[[noreturn]] void FailForType(const std::string& path, Format format, const std::string& bytes) {
  const std::string fitting = FittingTypes(format, bytes);
  throw Failure(InputName(path) + ": its record type is not known",
                "Give it with --type TYPE, or name the file like rig.RobotCalibration.binpb. " +
                    (fitting.empty() ? "No type can hold what is in it."
                                     : "What is in it could be: " + fitting + "."));
}

}  // namespace

RecordFile ReadRecordFile(const std::string& path, const InputFlags& flags) {
  const NameFacts facts = FactsFromName(path);
  const Format format = InputFormat(path, flags, facts);
  const Descriptor* type = flags.type.empty() ? facts.type : RecordType(flags.type);
  std::string bytes = ReadFile(path);
  if (type == nullptr) FailForType(path, format, bytes);
  return {InputName(path), type, format, std::move(bytes)};
}

}  // namespace calib
