#include "calib/formats/record_file.h"

#include <algorithm>
#include <utility>

#include "calib/console/build_info.h"
#include "calib/console/failure.h"
#include "calib/fields/unknown.h"
#include "calib/formats/codec.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::Message;

namespace {

FileFormat InputFormat(const std::string& path, const InputFlags& flags, const NameFacts& facts) {
  const std::optional<FileFormat> format =
      flags.format.empty() ? facts.format : std::optional<FileFormat>(FormatNamed(flags.format));
  if (format && format->format == Format::kJson && !kReadsJson) {
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
std::string FittingTypes(Format format, std::string_view bytes) {
  std::string fitting;
  for (const Descriptor* type : RecordTypes()) {
    const std::unique_ptr<Message> record = DecodeIfFits(format, type, bytes);
    if (!record || !record->IsInitialized() || !FindUnknownFields(*record).empty()) continue;
    fitting += (fitting.empty() ? "" : ", ") + type->name();
  }
  return fitting;
}

const Descriptor* InputType(const std::string& path, const InputFlags& flags) {
  return flags.type.empty() ? FactsFromName(path).type : RecordType(flags.type);
}

RecordChoice ChoiceOf(const ChosenPath& chosen, const InputFlags& flags) {
  if (chosen.choice) return *chosen.choice;
  return flags.records.empty() ? RecordChoice() : ParseRecordChoice(flags.records, "--records");
}

}  // namespace

bool MayHoldMany(const std::string& path, const InputFlags& flags) {
  const ChosenPath chosen = SplitPath(path);
  return InputFormat(chosen.path, flags, FactsFromName(chosen.path)).many &&
         !ChoiceOf(chosen, flags).single;
}

RecordFile::RecordFile(const std::string& path, const InputFlags& flags, Notes note)
    : RecordFile(SplitPath(path), flags, std::move(note)) {}

RecordFile::RecordFile(const ChosenPath& chosen, const InputFlags& flags, Notes note)
    : note_(std::move(note)),
      format_(InputFormat(chosen.path, flags, FactsFromName(chosen.path))),
      choice_(ChoiceOf(chosen, flags)),
      type_(InputType(chosen.path, flags)),
      file_(chosen.path),
      source_(NewRecordSource(&file_, format_)) {
  if (type_ == nullptr) FailForType();
  if (choice_.CountsFromEnd()) {
    count_ = CountRecords();
    choice_ = choice_.Resolved(count_);
  }
}

bool RecordFile::Next(EncodedRecord* record) {
  if (done_) return false;
  done_ = true;  // unless all goes well
  for (; index_ < choice_.first; ++index_) {
    if (!source_->Skip()) return AtEnd();
  }
  if (choice_.last && index_ >= *choice_.last) return any_ ? false : AtEnd();
  if (!source_->Next(&record->bytes)) return AtEnd();
  record->file = &name();
  record->one_of_many = format_.many;
  record->type = type_;
  record->format = format_.format;
  record->index = index_++;
  any_ = true;
  done_ = false;
  return true;
}

bool RecordFile::AtEnd() const {
  if (any_ || choice_.text.empty()) return false;
  if (choice_.single) {
    const int64_t count = std::max(index_, count_);
    throw Failure(name() + ": has " + std::to_string(count) +
                  (count == 1 ? " record" : " records") + ", so there is no [" + choice_.text +
                  "]");
  }
  note_(name() + ": has no record in [" + choice_.text + "]");
  return false;
}

void RecordFile::FailForType() {
  std::string_view bytes;
  const bool some = source_->Next(&bytes);
  const std::string fitting = some ? FittingTypes(format_.format, bytes) : "";
  throw Failure(name() + ": its record type is not known",
                "Give it with --type TYPE, or name the file like rig.RobotCalibration.binpb. " +
                    (fitting.empty() ? "No type can hold what is in it."
                                     : "What is in it could be: " + fitting + "."));
}

int64_t RecordFile::CountRecords() {
  if (!format_.many) return 1;
  if (!file_.regular()) {
    throw Failure(
        name() + ": [" + choice_.text + "] counts from the end, which a pipe does not tell",
        "Count from the start, or name a file.");
  }
  int64_t count = 0;
  try {
    while (source_->Skip()) ++count;
  } catch (const DamagedLog& damaged) {
    note_(damaged.what());
  }
  file_.Rewind();
  source_ = NewRecordSource(&file_, format_);
  return count;
}

}  // namespace calib
