#include "calib/formats/text_codec.h"

#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/text_format.h>

#include "calib/console/failure.h"

namespace calib {

using google::protobuf::Message;
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

// Counts what is written to it, and keeps none of it.
class SizeStream : public google::protobuf::io::ZeroCopyOutputStream {
 public:
  bool Next(void** data, int* size) override {
    *data = block_;
    *size = sizeof block_;
    count_ += *size;
    return true;
  }
  void BackUp(int count) override { count_ -= count; }
  google::protobuf::int64 ByteCount() const override { return count_; }

 private:
  char block_[4096];
  google::protobuf::int64 count_ = 0;
};

}  // namespace

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

bool HasComments(const std::string& bytes) {
  char quote = '\0';  // of the text in quotes that is passed over
  for (size_t i = 0; i < bytes.size(); ++i) {
    const char c = bytes[i];
    if (quote == '\0' && c == '#') return true;
    if (quote == '\0' && (c == '"' || c == '\'')) {
      quote = c;
    } else if (c == quote) {
      quote = '\0';
    } else if (c == '\\' && quote != '\0') {
      ++i;
    }
  }
  return false;
}

std::string EncodeText(const Message& record) {
  TextFormat::Printer printer;
  printer.SetUseShortRepeatedPrimitives(true);
  // A text that grows is there twice at times, and up to twice as long as it need be.
  SizeStream size;
  std::string text;
  if (printer.Print(record, &size)) text.reserve(static_cast<size_t>(size.ByteCount()));
  if (!printer.PrintToString(record, &text)) {
    throw Failure("the record cannot be written as text", "Write it in the binary format.");
  }
  return text;
}

}  // namespace calib
