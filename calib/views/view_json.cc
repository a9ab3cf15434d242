#include <array>
#include <cstdint>
#include <cstdio>

#include "calib/fields/unknown.h"
#include "calib/fields/value.h"
#include "calib/views/view.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

namespace {

std::string Base64(const std::string& octets) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string digits;
  for (size_t i = 0; i < octets.size(); i += 3) {
    uint32_t bits = 0;
    for (size_t j = i; j < i + 3; ++j) {
      bits = bits << 8 | (j < octets.size() ? static_cast<uint8_t>(octets[j]) : 0u);
    }
    const size_t used = octets.size() - i < 3 ? octets.size() - i + 1 : 4;
    for (size_t j = 0; j < 4; ++j) digits += j < used ? kDigits[bits >> (18 - 6 * j) & 63] : '=';
  }
  return digits;
}

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += std::string("\\") + c;
    } else if (static_cast<uint8_t>(c) < 0x20) {
      std::array<char, 8> escape;
      std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
      quoted += escape.data();
    } else {
      quoted += c;
    }
  }
  return quoted + "\"";
}

class JsonView {
 public:
  explicit JsonView(const ViewOptions& options) : options_(options) {}

  std::string Object(const Message& message, int indent) const {
    std::vector<const FieldDescriptor*> fields;
    message.GetReflection()->ListFields(message, &fields);
    std::vector<std::string> members;
    for (const FieldDescriptor* field : fields) {
      const std::string& name = field->camelcase_name();
      members.push_back(Colored(Quoted(name), options_) + ": " + Member(message, field, indent));
    }
    for (const UnknownField& unknown : OwnUnknownFields(message, "")) {
      members.push_back(Quoted("<unknown field " + std::to_string(unknown.number) + ">") + ": " +
                        Quoted("<" + unknown.what + ">"));
    }
    return Lines('{', members, '}', indent);
  }

 private:
  static std::string Lines(char open, const std::vector<std::string>& lines, char close,
                           int indent) {
    if (lines.empty()) return {open, close};
    std::string text = {open};
    const std::string margin = "\n" + std::string(static_cast<size_t>(indent), ' ');
    for (const std::string& line : lines) {
      text += &line == &lines[0] ? "" : ",";
      text += margin;
      text += "  ";
      text += line;
    }
    return text + margin + close;
  }

  std::string Member(const Message& message, const FieldDescriptor* field, int indent) const {
    const Reflection* reflection = message.GetReflection();
    const bool is_message = field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE;
    if (!field->is_repeated()) {
      return is_message ? Object(reflection->GetMessage(message, field), indent + 2)
                        : Value(message, field, -1);
    }
    const int size = reflection->FieldSize(message, field);
    const int shown = ShownElements(size, options_);
    std::vector<std::string> items;
    items.reserve(static_cast<size_t>(shown) + 1);
    for (int i = 0; i < shown; ++i) {
      items.push_back(is_message
                          ? Object(reflection->GetRepeatedMessage(message, field, i), indent + 4)
                          : Value(message, field, i));
    }
    if (shown < size) items.push_back(Quoted(FoldedElements(shown, size)));
    if (is_message) return Lines('[', items, ']', indent + 2);
    const int column = indent + 2 + static_cast<int>(field->camelcase_name().size()) + 5;
    return "[" + Flow(items, column, options_) + "]";
  }

  std::string Value(const Message& message, const FieldDescriptor* field, int index) const {
    switch (field->cpp_type()) {
      case FieldDescriptor::CPPTYPE_STRING: {
        const std::string raw = RawString(message, field, index);
        if (!options_.full && raw.size() > kFoldBytes) {
          return Quoted("<" + std::to_string(raw.size()) + " bytes>");
        }
        return Quoted(field->type() == FieldDescriptor::TYPE_BYTES ? Base64(raw) : raw);
      }
      case FieldDescriptor::CPPTYPE_INT64:
      case FieldDescriptor::CPPTYPE_UINT64:
        return Quoted(FullValue(message, field, index));
      default: {
        const std::string value = FullValue(message, field, index);
        if (value == "nan") return Quoted("NaN");
        if (value == "inf") return Quoted("Infinity");
        return value == "-inf" ? Quoted("-Infinity") : value;
      }
    }
  }

  const ViewOptions& options_;
};

}  // namespace

std::string ViewAsJson(const Message& record, const ViewOptions& options) {
  return JsonView(options).Object(record, 0) + "\n";
}

}  // namespace calib
