// JSON as the run-time's converter writes it: lowerCamelCase names in the order of the fields'
// numbers, numbers of 64 bits and those that are not finite as texts, bytes in base64, one blank
// for each level. It goes through the message itself, so that nothing of the size of the record or
// of its text is held, and -0 keeps its sign.
#include <cmath>
#include <vector>

#include "calib/console/failure.h"
#include "calib/console/number.h"
#include "calib/console/printable.h"
#include "calib/fields/text_fields.h"
#include "calib/fields/value.h"
#include "calib/formats/json_codec.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

namespace {

template <typename T>
std::string Number(T value) {
  if (std::isnan(value)) return "\"NaN\"";
  if (std::isinf(value)) return value < 0 ? "\"-Infinity\"" : "\"Infinity\"";
  if (value == 0) return std::signbit(value) ? "-0.0" : "0";
  return Shortest(value);
}

// The value of a field, or of its element `index` (-1 if it is not repeated), that is neither text
// nor a message.
std::string Scalar(const Message& message, const FieldDescriptor* field, int index) {
  const Reflection* r = message.GetReflection();
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_DOUBLE:
      return Number(index < 0 ? r->GetDouble(message, field)
                              : r->GetRepeatedDouble(message, field, index));
    case FieldDescriptor::CPPTYPE_FLOAT:
      return Number(index < 0 ? r->GetFloat(message, field)
                              : r->GetRepeatedFloat(message, field, index));
    case FieldDescriptor::CPPTYPE_INT64:
    case FieldDescriptor::CPPTYPE_UINT64:
    case FieldDescriptor::CPPTYPE_ENUM:
      return "\"" + FullValue(message, field, index) + "\"";
    default:
      return FullValue(message, field, index);
  }
}

class Writer {
 public:
  Writer(JsonLayout layout, BufferedSink* sink)
      : one_line_(layout == JsonLayout::kOneLine), sink_(sink) {}

  void Object(const Message& message, size_t indent) {
    std::vector<const FieldDescriptor*> fields;
    message.GetReflection()->ListFields(message, &fields);
    sink_->Write("{");
    for (size_t i = 0; i < fields.size(); ++i) {
      NextLine(i > 0, indent + 1);
      sink_->Write("\"" + fields[i]->camelcase_name() + (one_line_ ? "\":" : "\": "));
      fields[i]->is_repeated() ? List(message, fields[i], indent + 1)
                               : Value(message, fields[i], -1, indent + 1);
    }
    if (!fields.empty()) NextLine(false, indent);
    sink_->Write("}");
  }

 private:
  void NextLine(bool comma, size_t indent) {
    if (one_line_) return sink_->Write(comma ? "," : "");
    sink_->Write((comma ? ",\n" : "\n") + std::string(indent, ' '));
  }

  void List(const Message& message, const FieldDescriptor* field, size_t indent) {
    sink_->Write("[");
    const int size = message.GetReflection()->FieldSize(message, field);
    for (int i = 0; i < size; ++i) {
      NextLine(i > 0, indent + 1);
      Value(message, field, i, indent + 1);
    }
    NextLine(false, indent);
    sink_->Write("]");
  }

  void Value(const Message& message, const FieldDescriptor* field, int index, size_t indent) {
    const Reflection* reflection = message.GetReflection();
    std::string scratch;
    switch (field->cpp_type()) {
      case FieldDescriptor::CPPTYPE_MESSAGE:
        return Object(index < 0 ? reflection->GetMessage(message, field)
                                : reflection->GetRepeatedMessage(message, field, index),
                      indent);
      case FieldDescriptor::CPPTYPE_STRING:
        sink_->Write("\"");
        field->type() == FieldDescriptor::TYPE_BYTES
            ? Base64(TextIn(message, field, index, &scratch))
            : Text(TextIn(message, field, index, &scratch));
        return sink_->Write("\"");
      default:
        return sink_->Write(Scalar(message, field, index));
    }
  }

  void Text(const std::string& text) {
    static const char kDigits[] = "0123456789abcdef";
    for (const char c : text) {
      const unsigned octet = static_cast<unsigned char>(c);
      if (c == '"' || c == '\\') {
        const char escaped[] = {'\\', c};
        sink_->Write(escaped, sizeof escaped);
      } else if (c == '\n') {
        sink_->Write("\\n", 2);
      } else if (octet < 0x20 || octet == 0x7f) {
        const char escaped[] = {'\\', 'u', '0', '0', kDigits[octet >> 4], kDigits[octet & 0xf]};
        sink_->Write(escaped, sizeof escaped);
      } else {
        sink_->Write(&c, 1);
      }
    }
  }

  void Base64(const std::string& bytes) {
    static const char kDigits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (size_t i = 0; i < bytes.size(); i += 3) {
      const auto octet = [&](size_t at) {
        return at < bytes.size() ? static_cast<unsigned>(static_cast<unsigned char>(bytes[at])) : 0;
      };
      const unsigned bits = octet(i) << 16 | octet(i + 1) << 8 | octet(i + 2);
      const char digits[] = {kDigits[bits >> 18], kDigits[bits >> 12 & 63],
                             i + 1 < bytes.size() ? kDigits[bits >> 6 & 63] : '=',
                             i + 2 < bytes.size() ? kDigits[bits & 63] : '='};
      sink_->Write(digits, sizeof digits);
    }
  }

  const bool one_line_;
  BufferedSink* sink_;
};

void CheckText(const Message& record) {
  ForEachText(record, [](const FieldDescriptor* field, const std::string& text,
                         const std::function<std::string()>& path) {
    if (field->type() == FieldDescriptor::TYPE_BYTES || IsUtf8(text)) return;
    throw Failure(path() + " cannot be written as JSON, which holds text in UTF-8 only",
                  "Write it in the binary or the text format, which hold every record.");
  });
}

}  // namespace

void EncodeJson(const Message& record, JsonLayout layout, const Sink& sink) {
  CheckText(record);
  BufferedSink buffered(sink);
  Writer(layout, &buffered).Object(record, 0);
  buffered.Write("\n");
  buffered.Flush();
}

}  // namespace calib
