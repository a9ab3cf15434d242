#include "calib/formats/codec.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/text_format.h>

#include <cstdint>

#include "calib/console/failure.h"
#include "calib/fields/unknown.h"
#include "calib/formats/stream_limit.h"
#include "calib/formats/wire_defect.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::Message;
using google::protobuf::MessageFactory;
using google::protobuf::TextFormat;

namespace {

// Keeps the first error; those after it are mostly its consequences.
class FirstError : public google::protobuf::io::ErrorCollector {
 public:
  void AddError(int line, int column, const std::string& message) override {
    if (message_.empty()) {
      place_ = std::to_string(line + 1) + ":" + std::to_string(column + 1);
      message_ = message;
    }
  }
  void AddWarning(int, int, const std::string&) override {}

  const std::string& place() const { return place_; }
  const std::string& message() const { return message_; }

 private:
  std::string place_, message_;
};

void CheckNothingUnknown(Format format, const Message& record) {
  const std::vector<UnknownField> unknown = FindUnknownFields(record);
  if (unknown.empty()) return;
  throw Failure(std::string("the record has a field that the ") + NameOf(format) +
                    " format cannot hold: " + Describe(unknown.front()),
                "Write it in the binary format, which keeps unknown fields, or leave them out "
                "with --drop-unknown.");
}

}  // namespace

void DecodeBinary(const std::string& name, const std::string& bytes, Message* record) {
  google::protobuf::io::CodedInputStream input(reinterpret_cast<const uint8_t*>(bytes.data()),
                                               static_cast<int>(bytes.size()));
  if (ReadWhole(&input, bytes, record)) return;
  const std::string type = record->GetDescriptor()->name();
  const std::optional<WireDefect> defect = FindWireDefect(record->GetDescriptor(), bytes);
  if (!defect) throw Failure(name + ": the run-time refuses to read it as a " + type);
  throw Failure(name + ": byte " + std::to_string(defect->offset) + ": " +
                    (defect->path.empty() ? "the record" : defect->path) + " " + defect->what,
                "It is cut off, damaged, or no " + type +
                    " in the binary format; another type or format is named with --type or "
                    "--format.");
}

void DecodeText(const std::string& name, const std::string& bytes, Message* record) {
  google::protobuf::io::ArrayInputStream input(bytes.data(), static_cast<int>(bytes.size()));
  FirstError error;
  TextFormat::Parser parser;
  parser.RecordErrorsTo(&error);
  parser.AllowPartialMessage(true);
  if (parser.Parse(&input, record)) return;
  throw Failure(name + ":" + error.place() + ": " + error.message(),
                "Correct the text there, or say what else it is with --type or --format.");
}

std::string EncodeBinary(const Message& record) {
  std::string bytes;
  if (!record.SerializePartialToString(&bytes)) {
    throw Failure("the record takes more than 2 GiB, the most that the binary format can hold",
                  "Leave some of it out.");
  }
  return bytes;
}

std::string EncodeText(const Message& record) {
  TextFormat::Printer printer;
  printer.SetUseShortRepeatedPrimitives(true);
  std::string text;
  if (!printer.PrintToString(record, &text)) {
    throw Failure("the record cannot be written as text", "Write it in the binary format.");
  }
  return text;
}

std::unique_ptr<Message> Decode(Format format, const Descriptor* type, const std::string& name,
                                const std::string& bytes) {
  std::unique_ptr<Message> record(MessageFactory::generated_factory()->GetPrototype(type)->New());
  switch (format) {
    case Format::kBinary:
      DecodeBinary(name, bytes, record.get());
      break;
    case Format::kText:
      DecodeText(name, bytes, record.get());
      break;
    case Format::kJson:
      DecodeJson(name, bytes, record.get());
      break;
  }
  return record;
}

std::string Encode(Format format, const Message& record) {
  if (format == Format::kBinary) return EncodeBinary(record);
  CheckNothingUnknown(format, record);
  return format == Format::kText ? EncodeText(record) : EncodeJson(record);
}

}  // namespace calib
