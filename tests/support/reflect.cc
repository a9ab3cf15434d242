#include "tests/support/reflect.h"

#include <google/protobuf/dynamic_message.h>

#include <cstdint>
#include <cstring>

#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Descriptor;
using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::Message;
using ::google::protobuf::Reflection;
using ::google::protobuf::UnknownField;
using ::google::protobuf::UnknownFieldSet;

// One value as bytes: equal bytes mean equal values.
template <class T>
std::string Bits(T value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(&bytes[0], &value, sizeof value);
  return bytes;
}

// `index` is -1 for a singular field. Sub-messages are not served.
std::string ValueBits(const Message& m, const FieldDescriptor* f, int index) {
  const Reflection* r = m.GetReflection();
  const bool one = index < 0;
  switch (f->cpp_type()) {
    case FieldDescriptor::CPPTYPE_DOUBLE:
      return Bits<double>(one ? r->GetDouble(m, f) : r->GetRepeatedDouble(m, f, index));
    case FieldDescriptor::CPPTYPE_FLOAT:
      return Bits<float>(one ? r->GetFloat(m, f) : r->GetRepeatedFloat(m, f, index));
    case FieldDescriptor::CPPTYPE_INT32:
      return Bits<int32_t>(one ? r->GetInt32(m, f) : r->GetRepeatedInt32(m, f, index));
    case FieldDescriptor::CPPTYPE_INT64:
      return Bits<int64_t>(one ? r->GetInt64(m, f) : r->GetRepeatedInt64(m, f, index));
    case FieldDescriptor::CPPTYPE_BOOL:
      return Bits<bool>(one ? r->GetBool(m, f) : r->GetRepeatedBool(m, f, index));
    case FieldDescriptor::CPPTYPE_STRING:
      return one ? r->GetString(m, f) : r->GetRepeatedString(m, f, index);
    default:
      ADD_FAILURE() << f->full_name() << ": a field of type " << f->cpp_type_name()
                    << " is not served here";
      return "";
  }
}

const Message& SubMessage(const Message& m, const FieldDescriptor* f, int index) {
  const Reflection* r = m.GetReflection();
  return index < 0 ? r->GetMessage(m, f) : r->GetRepeatedMessage(m, f, index);
}

std::string Escaped(const std::string& bytes) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const unsigned char c : bytes.substr(0, 64)) {
    text += kDigits[c >> 4];
    text += kDigits[c & 15];
  }
  return text + (bytes.size() > 64 ? "..." : "");
}

// Empty, or what differs first, with the path to it.
std::string FirstDifference(const Message& a, const Message& b, const std::string& path) {
  const Descriptor* descriptor = a.GetDescriptor();
  if (descriptor != b.GetDescriptor()) {
    return path + ": a " + descriptor->full_name() + " and a " + b.GetDescriptor()->full_name();
  }
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const FieldDescriptor* f = descriptor->field(i);
    const std::string here = path + "." + f->name();
    int first = -1;
    int end = 0;
    if (f->is_repeated()) {
      first = 0;
      end = a.GetReflection()->FieldSize(a, f);
      const int other = b.GetReflection()->FieldSize(b, f);
      if (end != other) {
        return here + ": " + std::to_string(end) + " and " + std::to_string(other) + " elements";
      }
    } else {
      const bool has = a.GetReflection()->HasField(a, f);
      if (has != b.GetReflection()->HasField(b, f)) {
        return here + ": present in the " + (has ? "first" : "second") + " only";
      }
      if (!has) continue;
    }
    for (int index = first; index < end; ++index) {
      const std::string there = index < 0 ? here : here + "[" + std::to_string(index) + "]";
      if (f->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
        const std::string inner =
            FirstDifference(SubMessage(a, f, index), SubMessage(b, f, index), there);
        if (!inner.empty()) return inner;
        continue;
      }
      const std::string in_a = ValueBits(a, f, index);
      const std::string in_b = ValueBits(b, f, index);
      if (in_a != in_b) {
        return there + ": bytes in memory " + Escaped(in_a) + " and " + Escaped(in_b);
      }
    }
  }
  const std::string unknown_a = EncodeUnknown(a.GetReflection()->GetUnknownFields(a));
  const std::string unknown_b = EncodeUnknown(b.GetReflection()->GetUnknownFields(b));
  if (unknown_a != unknown_b) {
    return path + ": unknown fields " + Escaped(unknown_a) + " and " + Escaped(unknown_b);
  }
  return "";
}

void CopyValue(const Message& from, const FieldDescriptor* f, int index, Message* to) {
  const Reflection* in = from.GetReflection();
  const Reflection* out = to->GetReflection();
  const bool one = index < 0;
  switch (f->cpp_type()) {
    case FieldDescriptor::CPPTYPE_DOUBLE:
      return one ? out->SetDouble(to, f, in->GetDouble(from, f))
                 : out->AddDouble(to, f, in->GetRepeatedDouble(from, f, index));
    case FieldDescriptor::CPPTYPE_FLOAT:
      return one ? out->SetFloat(to, f, in->GetFloat(from, f))
                 : out->AddFloat(to, f, in->GetRepeatedFloat(from, f, index));
    case FieldDescriptor::CPPTYPE_INT32:
      return one ? out->SetInt32(to, f, in->GetInt32(from, f))
                 : out->AddInt32(to, f, in->GetRepeatedInt32(from, f, index));
    case FieldDescriptor::CPPTYPE_INT64:
      return one ? out->SetInt64(to, f, in->GetInt64(from, f))
                 : out->AddInt64(to, f, in->GetRepeatedInt64(from, f, index));
    case FieldDescriptor::CPPTYPE_BOOL:
      return one ? out->SetBool(to, f, in->GetBool(from, f))
                 : out->AddBool(to, f, in->GetRepeatedBool(from, f, index));
    case FieldDescriptor::CPPTYPE_STRING:
      return one ? out->SetString(to, f, in->GetString(from, f))
                 : out->AddString(to, f, in->GetRepeatedString(from, f, index));
    case FieldDescriptor::CPPTYPE_MESSAGE:
      return CopyByReflection(SubMessage(from, f, index),
                              one ? out->MutableMessage(to, f) : out->AddMessage(to, f));
    default:
      ADD_FAILURE() << f->full_name() << ": a field of type " << f->cpp_type_name()
                    << " is not served here";
  }
}

std::unique_ptr<::google::protobuf::DynamicMessageFactory>& DynamicClasses() {
  static auto factory = std::make_unique<::google::protobuf::DynamicMessageFactory>();
  return factory;
}

}  // namespace

::testing::AssertionResult EqualByReflection(const Message& a, const Message& b) {
  const std::string difference = FirstDifference(a, b, a.GetDescriptor()->name());
  if (difference.empty()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << difference;
}

void CopyByReflection(const Message& from, Message* to) {
  const Descriptor* descriptor = from.GetDescriptor();
  const Reflection* in = from.GetReflection();
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const FieldDescriptor* f = descriptor->field(i);
    if (f->is_repeated()) {
      const int size = in->FieldSize(from, f);
      for (int index = 0; index < size; ++index) CopyValue(from, f, index, to);
    } else if (in->HasField(from, f)) {
      CopyValue(from, f, -1, to);
    }
  }
  const UnknownFieldSet& unknown = in->GetUnknownFields(from);
  if (!unknown.empty()) to->GetReflection()->MutableUnknownFields(to)->MergeFrom(unknown);
}

std::unique_ptr<Message> NewDynamic(const Descriptor* descriptor) {
  return std::unique_ptr<Message>(DynamicClasses()->GetPrototype(descriptor)->New());
}

void ForgetDynamicClasses() { DynamicClasses().reset(); }

std::unique_ptr<Message> DynamicTwin(const Message& message) {
  std::unique_ptr<Message> twin = NewDynamic(message.GetDescriptor());
  CopyByReflection(message, twin.get());
  return twin;
}

std::string EncodeUnknown(const UnknownFieldSet& fields) {
  WireWriter out;
  for (int i = 0; i < fields.field_count(); ++i) {
    const UnknownField& field = fields.field(i);
    const int number = field.number();
    switch (field.type()) {
      case UnknownField::TYPE_VARINT:
        out.Tag(number, kVarint).Varint(field.varint());
        break;
      case UnknownField::TYPE_FIXED32:
        out.Tag(number, kFixed32).Fixed32(field.fixed32());
        break;
      case UnknownField::TYPE_FIXED64:
        out.Tag(number, kFixed64).Fixed64(field.fixed64());
        break;
      case UnknownField::TYPE_LENGTH_DELIMITED:
        out.Tag(number, kLengthDelimited).LengthDelimited(field.length_delimited());
        break;
      case UnknownField::TYPE_GROUP:
        out.Group(number, EncodeUnknown(field.group()));
        break;
    }
  }
  return out.bytes();
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
