#include "calib/formats/record.h"

#include <unistd.h>

#include "calib/console/arguments.h"
#include "calib/console/build_info.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/unknown.h"
#include "calib/formats/codec.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::Message;

namespace {

constexpr char kFormatRemedy[] = "or name the file *.binpb (binary), *.txtpb (text) or *.json.";

Format InputFormat(const std::string& path, const InputFlags& flags, const NameFacts& facts) {
  const std::optional<Format> format =
      flags.format.empty() ? facts.format : std::optional<Format>(FormatNamed(flags.format));
  if (format == Format::kJson && !kReadsJson) {
    throw Failure(InputName(path) +
                      ": is JSON, which this build of calib does not read: its "
                      "protobuf run-time skips in silence what it does not understand",
                  "Convert it with a calib that is built on a later run-time.");
  }
  if (format) return *format;
  throw Failure(InputName(path) + ": its format is not known",
                std::string("Give it with --format binary, text or json, ") + kFormatRemedy);
}

// The types that the bytes can be a record of: nothing malformed, missing or unknown.
std::string FittingTypes(Format format, const std::string& bytes) {
  std::string fitting;
  for (const Descriptor* type : RecordTypes()) {
    try {
      const std::unique_ptr<Message> record = Decode(format, type, "", bytes);
      if (!record->IsInitialized() || !FindUnknownFields(*record).empty()) continue;
      fitting += (fitting.empty() ? "" : ", ") + type->name();
    } catch (const Failure&) {
      // Not that one.
    }
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

std::string Listed(const std::vector<std::string>& paths) {
  constexpr size_t kMost = 5;
  std::string list;
  for (size_t i = 0; i < paths.size() && i < kMost; ++i) list += (i > 0 ? ", " : "") + paths[i];
  if (paths.size() > kMost) list += " and " + std::to_string(paths.size() - kMost) + " more";
  return list;
}

}  // namespace

void InputFlags::AddTo(CLI::App* command) {
  command->add_option("--type", type, "Record type of the input; else the file's name tells it")
      ->type_name("TYPE");
  AddChoice(command, "--format", &format, FormatNames(),
            "Format of the input; else the file's name tells it");
}

Input OpenInput(const std::string& path, const InputFlags& flags) {
  const NameFacts facts = FactsFromName(path);
  const Format format = InputFormat(path, flags, facts);
  const Descriptor* type = flags.type.empty() ? facts.type : RecordType(flags.type);
  std::string bytes = ReadFile(path);
  if (type == nullptr) FailForType(path, format, bytes);
  return {InputName(path), type, format, std::move(bytes)};
}

Record DecodeInput(const Input& input) {
  return {input.name, input.type, Decode(input.format, input.type, input.name, input.bytes),
          input.bytes.size()};
}

Record ReadRecord(const std::string& path, const InputFlags& flags) {
  return DecodeInput(OpenInput(path, flags));
}

std::vector<Record> ReadRecords(const std::vector<std::string>& paths, const InputFlags& flags) {
  std::vector<Record> records;
  for (const std::string& path : paths) {
    records.push_back(ReadRecord(path, flags));
    const Record& first = records.front();
    const Record& last = records.back();
    if (last.type != first.type) {
      throw Failure(last.name + ": is a " + last.type->name() + ", but " + first.name + " is a " +
                        first.type->name(),
                    "Name records of one type.");
    }
  }
  return records;
}

bool IsEmpty(const Message& record) {
  std::vector<const google::protobuf::FieldDescriptor*> fields;
  record.GetReflection()->ListFields(record, &fields);
  return fields.empty() && OwnUnknownFields(record, "").empty();
}

std::vector<std::string> MissingFields(const Message& record) {
  std::vector<std::string> missing;
  record.FindInitializationErrors(&missing);
  return missing;
}

void OutputFlags::AddTo(CLI::App* command) {
  AddChoice(command, "--to", &format, FormatNames(),
            "Format of the output; else its name tells it");
  command->add_flag("--partial", partial, "Write the record even if required fields are missing");
}

std::string EncodeFor(const std::string& name, Format format, const Message& record) {
  try {
    return Encode(format, record);
  } catch (const Failure& failure) {
    throw Failure(name + ": not written: " + failure.what(), failure.remedy());
  }
}

void WriteRecord(const std::string& path, const Message& record, const OutputFlags& flags) {
  const NameFacts facts = FactsFromName(path);
  const std::string name = OutputName(path);
  if (flags.format.empty() && !facts.format) {
    throw Failure(name + ": its format is not known",
                  std::string("Give it with --to binary, text or json, ") + kFormatRemedy);
  }
  if (facts.type != nullptr && facts.type != record.GetDescriptor()) {
    throw Failure(name + ": is named for a " + facts.type->name() + ", but the record is a " +
                      record.GetDescriptor()->name(),
                  "Choose a name that ends in ." + record.GetDescriptor()->name() + ".binpb.");
  }
  const Format format = flags.format.empty() ? *facts.format : FormatNamed(flags.format);
  const std::vector<std::string> missing = MissingFields(record);
  if (!missing.empty() && !flags.partial) {
    throw Failure(name + ": not written, since required fields are not set: " + Listed(missing),
                  "Set them, or write the record as it is with --partial.");
  }
  if (path == "-" && format == Format::kBinary && isatty(STDOUT_FILENO) != 0) {
    throw Failure("standard output: is a terminal, which cannot show the binary format",
                  "Name a file, or choose --to text.");
  }
  WriteFile(path, EncodeFor(name, format, record));
}

}  // namespace calib
