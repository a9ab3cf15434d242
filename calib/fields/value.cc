#include "calib/fields/value.h"

#include <google/protobuf/text_format.h>

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

std::string FullValue(const Message& message, const FieldDescriptor* field, int index) {
  std::string text;
  google::protobuf::TextFormat::PrintFieldValueToString(message, field, index, &text);
  return text;
}

std::string RawString(const Message& message, const FieldDescriptor* field, int index) {
  const Reflection* reflection = message.GetReflection();
  return index < 0 ? reflection->GetString(message, field)
                   : reflection->GetRepeatedString(message, field, index);
}

std::string ShortValue(const Message& message, const FieldDescriptor* field, int index) {
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_STRING: {
      const size_t size = RawString(message, field, index).size();
      if (size > kFoldBytes) return "<" + std::to_string(size) + " bytes>";
      return FullValue(message, field, index);
    }
    case FieldDescriptor::CPPTYPE_MESSAGE: {
      const Reflection* reflection = message.GetReflection();
      const Message& inner = index < 0 ? reflection->GetMessage(message, field)
                                       : reflection->GetRepeatedMessage(message, field, index);
      return "<" + field->message_type()->name() + " of " +
             std::to_string(inner.SerializePartialAsString().size()) + " bytes>";
    }
    default:
      return FullValue(message, field, index);
  }
}

}  // namespace calib
