#include "tests/support/sample_values.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/random_record.h"
#include "tests/support/reflect.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::Message;
using ::google::protobuf::Reflection;
using ::google::protobuf::UnknownFieldSet;

constexpr int kFirstUnknownNumber = 200;

std::string Text(int length, char first) {
  std::string text(static_cast<size_t>(length), first);
  for (int i = 0; i < length; ++i) text[i] = static_cast<char>(first + i % 7);
  return text;
}

std::vector<SampleValue> MakeSamples(Kind kind) {
  std::vector<SampleValue> samples;
  switch (kind) {
    case Kind::kDouble:
      for (const uint64_t bits : BoundaryDoubleBits()) samples.push_back({bits, ""});
      break;
    case Kind::kFloat:
      for (const uint32_t bits : BoundaryFloatBits()) samples.push_back({bits, ""});
      break;
    case Kind::kInt32:
      for (const int64_t value : BoundaryInt32()) {
        samples.push_back({static_cast<uint64_t>(value), ""});
      }
      break;
    case Kind::kInt64:
      for (const int64_t value : BoundaryInt64()) {
        samples.push_back({static_cast<uint64_t>(value), ""});
      }
      break;
    case Kind::kBool:
      samples = {{1, ""}, {0, ""}};
      break;
    case Kind::kString:
      for (const int length : BoundaryLengths()) samples.push_back({0, Text(length, 'a')});
      break;
    case Kind::kBytes:
      for (const int length : BoundaryLengths()) samples.push_back({0, Text(length, '\xFD')});
      break;
    case Kind::kMessage:
      samples.push_back({0, ""});
      // With their tag of two bytes and their own length these make encodings of 127, 128, 16383
      // and 16384 bytes.
      for (const int length : {124, 125, 16379, 16380}) {
        const int number = kFirstUnknownNumber + static_cast<int>(samples.size());
        const WireWriter field =
            WireWriter().Tag(number, kLengthDelimited).LengthDelimited(Text(length, 'u'));
        samples.push_back({0, field.bytes()});
      }
      break;
  }
  return samples;
}

// `index` is -1 for a singular field.
SampleValue Get(const Message& m, const FieldDescriptor* f, int index) {
  const Reflection* r = m.GetReflection();
  const bool one = index < 0;
  SampleValue value;
  switch (f->cpp_type()) {
    case FieldDescriptor::CPPTYPE_DOUBLE: {
      const double number = one ? r->GetDouble(m, f) : r->GetRepeatedDouble(m, f, index);
      std::memcpy(&value.number, &number, sizeof number);
      break;
    }
    case FieldDescriptor::CPPTYPE_FLOAT: {
      const float number = one ? r->GetFloat(m, f) : r->GetRepeatedFloat(m, f, index);
      uint32_t bits;
      std::memcpy(&bits, &number, sizeof bits);
      value.number = bits;
      break;
    }
    case FieldDescriptor::CPPTYPE_INT32:
      value.number = static_cast<uint64_t>(
          int64_t{one ? r->GetInt32(m, f) : r->GetRepeatedInt32(m, f, index)});
      break;
    case FieldDescriptor::CPPTYPE_INT64:
      value.number =
          static_cast<uint64_t>(one ? r->GetInt64(m, f) : r->GetRepeatedInt64(m, f, index));
      break;
    case FieldDescriptor::CPPTYPE_BOOL:
      value.number = (one ? r->GetBool(m, f) : r->GetRepeatedBool(m, f, index)) ? 1 : 0;
      break;
    case FieldDescriptor::CPPTYPE_STRING:
      value.bytes = one ? r->GetString(m, f) : r->GetRepeatedString(m, f, index);
      break;
    case FieldDescriptor::CPPTYPE_MESSAGE:
      value.bytes = EncodeByTable(one ? r->GetMessage(m, f) : r->GetRepeatedMessage(m, f, index));
      break;
    default:
      ADD_FAILURE() << f->full_name() << ": a field of type " << f->cpp_type_name()
                    << " is not served here";
  }
  return value;
}

}  // namespace

const std::vector<SampleValue>& SamplesOf(Kind kind) {
  static const std::vector<std::vector<SampleValue>> samples = [] {
    std::vector<std::vector<SampleValue>> all;
    for (int i = 0; i <= static_cast<int>(Kind::kMessage); ++i) {
      all.push_back(MakeSamples(static_cast<Kind>(i)));
    }
    return all;
  }();
  return samples[static_cast<size_t>(kind)];
}

void Put(const FieldRow& field, const SampleValue& value, Message* record) {
  const Reflection* r = record->GetReflection();
  const FieldDescriptor* f = record->GetDescriptor()->FindFieldByNumber(field.number);
  const bool add = field.repeated();
  switch (field.kind) {
    case Kind::kDouble:
      return add ? r->AddDouble(record, f, DoubleOf(value.number))
                 : r->SetDouble(record, f, DoubleOf(value.number));
    case Kind::kFloat: {
      const float number = FloatOf(static_cast<uint32_t>(value.number));
      return add ? r->AddFloat(record, f, number) : r->SetFloat(record, f, number);
    }
    case Kind::kInt32: {
      const int32_t number = static_cast<int32_t>(value.number);
      return add ? r->AddInt32(record, f, number) : r->SetInt32(record, f, number);
    }
    case Kind::kInt64: {
      const int64_t number = static_cast<int64_t>(value.number);
      return add ? r->AddInt64(record, f, number) : r->SetInt64(record, f, number);
    }
    case Kind::kBool:
      return add ? r->AddBool(record, f, value.number != 0)
                 : r->SetBool(record, f, value.number != 0);
    case Kind::kString:
    case Kind::kBytes:
      return add ? r->AddString(record, f, value.bytes) : r->SetString(record, f, value.bytes);
    case Kind::kMessage: {
      Message* message = add ? r->AddMessage(record, f) : r->MutableMessage(record, f);
      if (value.bytes.empty()) return;
      UnknownFieldSet unknown;
      EXPECT_TRUE(unknown.ParseFromArray(value.bytes.data(), static_cast<int>(value.bytes.size())));
      message->GetReflection()->MutableUnknownFields(message)->MergeFrom(unknown);
    }
  }
}

std::string Encode(const FieldRow& field, const SampleValue& value) {
  WireWriter out;
  out.Tag(field.number, WireTypeOf(field.kind));
  switch (field.kind) {
    case Kind::kDouble:
      return out.Fixed64(value.number).bytes();
    case Kind::kFloat:
      return out.Fixed32(static_cast<uint32_t>(value.number)).bytes();
    case Kind::kInt32:
    case Kind::kInt64:
    case Kind::kBool:
      return out.Varint(value.number).bytes();
    case Kind::kString:
    case Kind::kBytes:
    case Kind::kMessage:
      return out.LengthDelimited(value.bytes).bytes();
  }
  ADD_FAILURE() << field.name << ": a field of an unknown kind";
  return "";
}

std::string EncodeByTable(const Message& record) {
  const Reflection* r = record.GetReflection();
  std::string bytes;
  for (const FieldRow* field : WireOrder(FindMessage(record.GetDescriptor()->name()))) {
    const FieldDescriptor* f = record.GetDescriptor()->FindFieldByNumber(field->number);
    if (field->repeated()) {
      const int size = r->FieldSize(record, f);
      for (int i = 0; i < size; ++i) bytes += Encode(*field, Get(record, f, i));
    } else if (r->HasField(record, f)) {
      bytes += Encode(*field, Get(record, f, -1));
    }
  }
  return bytes + EncodeUnknown(r->GetUnknownFields(record));
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
