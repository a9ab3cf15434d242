#include "calib/formats/text_codec.h"

#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/text_format.h>

#include <vector>

#include "calib/console/failure.h"
#include "calib/console/number.h"
#include "calib/fields/text_fields.h"
#include "calib/fields/value.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
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

// What the run-time prints, on its way to a sink.
class SinkStream : public google::protobuf::io::ZeroCopyOutputStream {
 public:
  explicit SinkStream(BufferedSink* sink) : sink_(sink) {}
  ~SinkStream() override { Flush(); }
  SinkStream(const SinkStream&) = delete;
  SinkStream& operator=(const SinkStream&) = delete;

  bool Next(void** data, int* size) override {
    Flush();
    *data = block_;
    *size = sizeof block_;
    used_ = sizeof block_;
    count_ += *size;
    return true;
  }
  void BackUp(int count) override {
    used_ -= static_cast<size_t>(count);
    count_ -= count;
  }
  google::protobuf::int64 ByteCount() const override { return count_; }

 private:
  void Flush() {
    sink_->Write(block_, used_);
    used_ = 0;
  }

  BufferedSink* sink_;
  char block_[4096];
  size_t used_ = 0;
  google::protobuf::int64 count_ = 0;
};

// Text of that size is escaped in pieces; of what is shorter, the run-time's printer holds all.
constexpr size_t kLong = size_t{1} << 20;

bool HasLongText(const Message& message) {
  bool found = false;
  ForEachText(message, [&](const FieldDescriptor*, const std::string& text,
                           const std::function<std::string()>&) {
    if (text.size() > kLong) found = true;
  });
  return found;
}

// Whether a number in or below the message is one that the run-time writes as a larger one.
bool HasLargestFloat(const Message& message) {
  const Reflection* reflection = message.GetReflection();
  std::vector<const FieldDescriptor*> fields;
  reflection->ListFields(message, &fields);
  for (const FieldDescriptor* field : fields) {
    const bool repeated = field->is_repeated();
    const int size = repeated ? reflection->FieldSize(message, field) : 1;
    for (int i = 0; i < size; ++i) {
      bool found = false;
      if (field->cpp_type() == FieldDescriptor::CPPTYPE_FLOAT) {
        found = IsLargestFloat(repeated ? reflection->GetRepeatedFloat(message, field, i)
                                        : reflection->GetFloat(message, field));
      } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
        found = HasLargestFloat(repeated ? reflection->GetRepeatedMessage(message, field, i)
                                         : reflection->GetMessage(message, field));
      } else {
        break;
      }
      if (found) return true;
    }
  }
  return false;
}

// Prints messages as the run-time does, but goes itself through those that have a long text, or the
// largest float, in or below them.
class Printer {
 public:
  explicit Printer(BufferedSink* sink) : sink_(sink) {}

  void Print(const Message& message, int indent) {
    if (!HasLongText(message) && !HasLargestFloat(message)) return PrintAtOnce(message, indent);
    const Reflection* reflection = message.GetReflection();
    std::vector<const FieldDescriptor*> fields;
    reflection->ListFields(message, &fields);
    for (const FieldDescriptor* field : fields) {
      const int size = field->is_repeated() ? reflection->FieldSize(message, field) : -1;
      switch (field->cpp_type()) {
        case FieldDescriptor::CPPTYPE_STRING:
          if (size < 0) PrintText(message, field, -1, indent);
          for (int i = 0; i < size; ++i) PrintText(message, field, i, indent);
          break;
        case FieldDescriptor::CPPTYPE_MESSAGE:
          if (size < 0) PrintInner(reflection->GetMessage(message, field), field, indent);
          for (int i = 0; i < size; ++i) {
            PrintInner(reflection->GetRepeatedMessage(message, field, i), field, indent);
          }
          break;
        default:
          PrintNumbers(message, field, size, indent);
      }
    }
  }

 private:
  void PrintAtOnce(const Message& message, int indent) {
    TextFormat::Printer printer;
    printer.SetUseShortRepeatedPrimitives(true);
    printer.SetInitialIndentLevel(indent);
    SinkStream stream(sink_);
    if (printer.Print(message, &stream)) return;
    throw Failure("the record cannot be written as text", "Write it in the binary format.");
  }

  void Begin(const FieldDescriptor* field, int indent) {
    sink_->Write(std::string(2 * static_cast<size_t>(indent), ' ') + field->name());
  }

  void PrintInner(const Message& inner, const FieldDescriptor* field, int indent) {
    Begin(field, indent);
    sink_->Write(" {\n");
    Print(inner, indent + 1);
    sink_->Write(std::string(2 * static_cast<size_t>(indent), ' ') + "}\n");
  }

  void PrintNumbers(const Message& message, const FieldDescriptor* field, int size, int indent) {
    Begin(field, indent);
    sink_->Write(size < 0 ? ": " + FullValue(message, field, -1) : ": [");
    for (int i = 0; i < size; ++i) {
      sink_->Write((i > 0 ? ", " : "") + FullValue(message, field, i));
    }
    sink_->Write(size < 0 ? "\n" : "]\n");
  }

  void PrintText(const Message& message, const FieldDescriptor* field, int index, int indent) {
    Begin(field, indent);
    std::string scratch;
    const std::string& text = TextIn(message, field, index, &scratch);
    sink_->Write(": \"");
    for (size_t i = 0; i < text.size(); ++i) PrintEscaped(text[i]);
    sink_->Write("\"\n");
  }

  void PrintEscaped(char c) {
    const unsigned octet = static_cast<unsigned char>(c);
    const char escape = c == '\n'                            ? 'n'
                        : c == '\r'                          ? 'r'
                        : c == '\t'                          ? 't'
                        : c == '"' || c == '\'' || c == '\\' ? c
                                                             : '\0';
    if (escape != '\0') {
      const char escaped[] = {'\\', escape};
      sink_->Write(escaped, sizeof escaped);
    } else if (octet < 0x20 || octet >= 0x7f) {
      const char escaped[] = {'\\', static_cast<char>('0' + (octet >> 6)),
                              static_cast<char>('0' + (octet >> 3 & 7)),
                              static_cast<char>('0' + (octet & 7))};
      sink_->Write(escaped, sizeof escaped);
    } else {
      sink_->Write(&c, 1);
    }
  }

  BufferedSink* sink_;
};

}  // namespace

void DecodeText(const std::string& name, std::string_view bytes, Message* record) {
  google::protobuf::io::ArrayInputStream input(bytes.data(), static_cast<int>(bytes.size()));
  FirstError error;
  TextFormat::Parser parser;
  parser.RecordErrorsTo(&error);
  parser.AllowPartialMessage(true);
  if (parser.Parse(&input, record)) return;
  throw Failure(name + ":" + error.place() + ": " + error.message(),
                "Correct the text there, or say what else it is with --type or --format.");
}

bool HasComments(std::string_view bytes) {
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

void EncodeText(const Message& record, const Sink& sink) {
  BufferedSink buffered(sink);
  Printer(&buffered).Print(record, 0);
  buffered.Flush();
}

}  // namespace calib
