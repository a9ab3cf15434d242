#include "calib/fields/value.h"

#include <google/protobuf/text_format.h>

#include "calib/console/number.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

namespace {

// ByteSizeLong() of newer run-times is ByteSize() of older ones.
template <typename M>
auto SizeOf(const M& message, int) -> decltype(static_cast<size_t>(message.ByteSizeLong())) {
  return message.ByteSizeLong();
}
template <typename M>
size_t SizeOf(const M& message, long) {
  return static_cast<size_t>(message.ByteSize());
}

}  // namespace

std::string FullValue(const Message& message, const FieldDescriptor* field, int index) {
  if (field->cpp_type() == FieldDescriptor::CPPTYPE_FLOAT) {
    const Reflection* reflection = message.GetReflection();
    const float value = index < 0 ? reflection->GetFloat(message, field)
                                  : reflection->GetRepeatedFloat(message, field, index);
    if (IsLargestFloat(value)) return Shortest(value);
  }
  std::string text;
  google::protobuf::TextFormat::PrintFieldValueToString(message, field, index, &text);
  return text;
}

const std::string& TextIn(const Message& message, const FieldDescriptor* field, int index,
                          std::string* scratch) {
  const Reflection* reflection = message.GetReflection();
  return index < 0 ? reflection->GetStringReference(message, field, scratch)
                   : reflection->GetRepeatedStringReference(message, field, index, scratch);
}

std::string RawString(const Message& message, const FieldDescriptor* field, int index) {
  std::string scratch;
  return TextIn(message, field, index, &scratch);
}

std::string ShortValue(const Message& message, const FieldDescriptor* field, int index) {
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_STRING: {
      std::string scratch;
      const size_t size = TextIn(message, field, index, &scratch).size();
      if (size > kFoldBytes) return "<" + std::to_string(size) + " bytes>";
      return FullValue(message, field, index);
    }
    case FieldDescriptor::CPPTYPE_MESSAGE: {
      const Reflection* reflection = message.GetReflection();
      const Message& inner = index < 0 ? reflection->GetMessage(message, field)
                                       : reflection->GetRepeatedMessage(message, field, index);
      return "<" + field->message_type()->name() + " of " + std::to_string(SizeOf(inner, 0)) +
             " bytes>";
    }
    default:
      return FullValue(message, field, index);
  }
}

}  // namespace calib
