#include "calib/formats/record_reader.h"

#include <exception>

#include "calib/console/failure.h"
#include "calib/formats/codec.h"
#include "calib/formats/text_codec.h"

namespace calib {

using google::protobuf::Message;
using google::protobuf::MessageFactory;

namespace {

void CheckSameType(const std::string& first, const google::protobuf::Descriptor* type,
                   const Record& record) {
  if (record.type == type) return;
  throw Failure(
      record.name + ": is a " + record.type->name() + ", but " + first + " is a " + type->name(),
      "Name records of one type.");
}

}  // namespace

Record DecodeRecord(const EncodedRecord& encoded) {
  Record record = {};
  DecodeRecordInto(encoded, &record);
  return record;
}

void DecodeRecordInto(const EncodedRecord& encoded, Record* record) {
  record->type = encoded.type;
  record->name = encoded.name();
  record->encoded_size = encoded.bytes.size();
  record->format = encoded.format;
  record->has_comments = encoded.format == Format::kText && HasComments(encoded.bytes);
  DecodeMessageInto(encoded, &record->message);
}

void DecodeMessageInto(const EncodedRecord& encoded, std::unique_ptr<Message>* message) {
  if (*message == nullptr || (*message)->GetDescriptor() != encoded.type) {
    message->reset(MessageFactory::generated_factory()->GetPrototype(encoded.type)->New());
  }
  // What is said of a record begins with its name, which takes longer to make than a small record
  // to read.
  try {
    DecodeInto(encoded.format, "", encoded.bytes, message->get());
  } catch (const Failure& failure) {
    throw Failure(encoded.name() + failure.what(), failure.remedy());
  }
}

bool RecordReader::Next(Record* record) {
  if (!file_.Next(&encoded_)) return false;
  DecodeRecordInto(encoded_, record);
  return true;
}

Record ReadRecord(const std::string& path, const InputFlags& flags) {
  RecordFile file(path, flags);
  EncodedRecord encoded, another;
  if (!file.Next(&encoded)) throw Failure(file.name() + ": holds no record");
  std::string kept;
  if (file.many()) {
    encoded.bytes = kept = encoded.bytes;  // in their place come those of a next one
    if (file.Next(&another)) {
      throw Failure(
          file.name() + ": holds more than one record",
          "Choose one, such as " + file.name() + "[0], or " + file.name() + "[-1] for the last.");
    }
  }
  return DecodeRecord(encoded);
}

std::vector<Record> ReadRecords(const std::vector<std::string>& paths, const InputFlags& flags) {
  std::vector<Record> records;
  Failures failures(paths.size());
  for (const std::string& path : paths) {
    failures.Try([&] {
      Record record = ReadRecord(path, flags);
      if (!records.empty()) CheckSameType(records.front().name, records.front().type, record);
      records.push_back(std::move(record));
    });
  }
  failures.ThrowIfAny();
  return records;
}

void ForEachRecord(const std::vector<std::string>& paths, const InputFlags& flags,
                   const std::function<void(const Record& record)>& visit) {
  std::string first;
  const google::protobuf::Descriptor* type = nullptr;
  std::exception_ptr thrown;  // by the visit, which is no failure of the file
  Failures failures(paths.size());
  for (const std::string& path : paths) {
    failures.Try([&] {
      RecordReader reader(path, flags);
      Record record = {};
      while (reader.Next(&record)) {
        if (type != nullptr) CheckSameType(first, type, record);
        if (type == nullptr) first = record.name;
        type = record.type;
        try {
          visit(record);
        } catch (...) {
          thrown = std::current_exception();
          return;
        }
      }
    });
    if (thrown) std::rethrow_exception(thrown);
  }
  failures.ThrowIfAny();
}

}  // namespace calib
