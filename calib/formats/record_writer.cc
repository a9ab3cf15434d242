#include "calib/formats/record_writer.h"

#include <unistd.h>

#include <optional>
#include <vector>

#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/presence.h"
#include "calib/formats/codec.h"
#include "calib/formats/names.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::Message;

namespace {

FileFormat OutputFormat(const std::string& name, const OutputFlags& flags, const NameFacts& facts) {
  if (!flags.format.empty()) return FormatNamed(flags.format);
  if (!facts.format) FailForFormat(name, "--to");
  return *facts.format;
}

void CheckType(const std::string& name, const NameFacts& facts, const Descriptor* type) {
  if (facts.type == nullptr || facts.type == type) return;
  throw Failure(
      name + ": is named for a " + facts.type->name() + ", but the record is a " + type->name(),
      "Choose a name that ends in ." + type->name() + ".binpb.");
}

std::string Listed(const std::vector<std::string>& paths) {
  constexpr size_t kMost = 5;
  std::string list;
  for (size_t i = 0; i < paths.size() && i < kMost; ++i) list += (i > 0 ? ", " : "") + paths[i];
  if (paths.size() > kMost) list += " and " + std::to_string(paths.size() - kMost) + " more";
  return list;
}

void CheckRequiredFields(const std::string& name, const Message& record) {
  const std::vector<std::string> missing = MissingFields(record);
  if (missing.empty()) return;
  throw Failure(name + ": not written, since required fields are not set: " + Listed(missing),
                "Set them, or write the record as it is with --partial.");
}

void CheckTerminal(const std::string& path, FileFormat format) {
  if (path != "-" || format.format != Format::kBinary || isatty(STDOUT_FILENO) == 0) return;
  throw Failure("standard output: is a terminal, which cannot show the binary format",
                "Name a file, or choose --to text.");
}

// Encodes the record; where the format cannot hold it, the message names the file as well.
void EncodeFor(const std::string& name, FileFormat format, const Message& record,
               const Sink& sink) {
  try {
    EncodeForFile(format, record, sink);
  } catch (const Failure& failure) {
    throw Failure(name + ": not written: " + failure.what(), failure.remedy());
  }
}

// The path, once all is in order for records of the type.
const std::string& Checked(const std::string& path, FileFormat format, const Descriptor* type) {
  CheckType(OutputName(path), FactsFromName(path), type);
  CheckTerminal(path, format);
  return path;
}

}  // namespace

RecordFileWriter::RecordFileWriter(const std::string& path, const Descriptor* type,
                                   const OutputFlags& flags)
    : name_(OutputName(path)),
      format_(OutputFormat(name_, flags, FactsFromName(path))),
      partial_(flags.partial),
      file_(Checked(path, format_, type)) {}

void RecordFileWriter::Write(const Message& record) {
  if (written_++ > 0 && !format_.many) {
    throw Failure(
        name_ + ": not written, since the " + NameOf(format_.format) +
            " format holds one record, and there are more",
        "Choose one, such as FILE[0], or write a log or JSON lines: --to log, --to jsonl.");
  }
  if (!partial_) CheckRequiredFields(name_, record);
  EncodeFor(name_, format_, record,
            [&](const char* bytes, size_t size) { file_.Write(bytes, size); });
}

void RecordFileWriter::Commit() { file_.Commit(); }

void WriteRecord(const std::string& path, const Message& record, const OutputFlags& flags) {
  RecordFileWriter writer(path, record.GetDescriptor(), flags);
  writer.Write(record);
  writer.Commit();
}

void NoteLostComments(const Record& read, const std::string& path, const OutputFlags& flags) {
  if (!read.has_comments) return;
  if (OutputFormat(OutputName(path), flags, FactsFromName(path)).format != Format::kText) {
    return;
  }
  Note(read.name + ": its comments are not written: they are no part of the record");
}

}  // namespace calib
