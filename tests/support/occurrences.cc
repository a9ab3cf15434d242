#include "tests/support/occurrences.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/unknown_field_set.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <utility>

#include "tests/support/random_numbers.h"
#include "tests/support/random_record.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::Message;
using ::google::protobuf::Reflection;
using ::google::protobuf::UnknownFieldSet;

constexpr WireType kWireTypes[] = {kVarint, kFixed64, kLengthDelimited, kStartGroup, kFixed32};
constexpr int kMaxGroupDepth = 3;

std::string RandomText(std::mt19937* random) {
  std::string text;
  for (int i = Below(random, 10); i > 0; --i) text.push_back(static_cast<char>(Below(random, 256)));
  return text;
}

bool IsNumber(Kind kind) {
  return kind != Kind::kString && kind != Kind::kBytes && kind != Kind::kMessage;
}

std::string NumberBytes(Kind kind, uint64_t value) {
  switch (WireTypeOf(kind)) {
    case kFixed64:
      return WireWriter().Fixed64(value).bytes();
    case kFixed32:
      return WireWriter().Fixed32(static_cast<uint32_t>(value)).bytes();
    default:
      return WireWriter().Varint(value).bytes();
  }
}

void SetNumber(const FieldRow& field, uint64_t value, Message* m) {
  const FieldDescriptor* f = m->GetDescriptor()->FindFieldByNumber(field.number);
  const Reflection* r = m->GetReflection();
  const bool add = field.repeated();
  switch (field.kind) {
    case Kind::kDouble:
      return add ? r->AddDouble(m, f, DoubleOf(value)) : r->SetDouble(m, f, DoubleOf(value));
    case Kind::kFloat: {
      const float number = FloatOf(static_cast<uint32_t>(value));
      return add ? r->AddFloat(m, f, number) : r->SetFloat(m, f, number);
    }
    case Kind::kInt32:
      return r->SetInt32(m, f, static_cast<int32_t>(value));
    case Kind::kInt64:
      return r->SetInt64(m, f, static_cast<int64_t>(value));
    case Kind::kBool:
      return r->SetBool(m, f, value != 0);
    default:
      std::cerr << "occurrences: " << field.name << " holds no number\n";
      std::abort();
  }
}

Occurrence KnownOccurrence(const FieldRow& field, WireType type, std::string value,
                           std::function<void(Message*)> apply) {
  return {field.number, WireWriter().Tag(field.number, type).bytes(), std::move(value),
          field.repeated() ? 0 : 1u << field.has_bit, std::move(apply)};
}

// A field of an unknown-field set: its value as bytes, and the call that adds it.
struct UnknownValue {
  std::string bytes;
  std::function<void(UnknownFieldSet*)> add;
};

UnknownValue RandomUnknownValue(std::mt19937* random, int number, WireType type, int depth) {
  switch (type) {
    case kVarint: {
      const uint64_t value = Random64(random) >> Below(random, 64);
      return {WireWriter().Varint(value).bytes(),
              [=](UnknownFieldSet* set) { set->AddVarint(number, value); }};
    }
    case kFixed64: {
      const uint64_t value = Random64(random);
      return {WireWriter().Fixed64(value).bytes(),
              [=](UnknownFieldSet* set) { set->AddFixed64(number, value); }};
    }
    case kFixed32: {
      const uint32_t value = static_cast<uint32_t>((*random)());
      return {WireWriter().Fixed32(value).bytes(),
              [=](UnknownFieldSet* set) { set->AddFixed32(number, value); }};
    }
    case kLengthDelimited: {
      const std::string text = RandomText(random);
      return {WireWriter().LengthDelimited(text).bytes(),
              [=](UnknownFieldSet* set) { set->AddLengthDelimited(number, text); }};
    }
    default: {
      WireWriter contents;
      std::vector<std::function<void(UnknownFieldSet*)>> adds;
      for (int i = Below(random, 4); i > 0; --i) {
        const int inner = 1 + Below(random, 40);
        WireType inner_type = kWireTypes[Below(random, 5)];
        if (inner_type == kStartGroup && depth == kMaxGroupDepth) inner_type = kVarint;
        const UnknownValue value = RandomUnknownValue(random, inner, inner_type, depth + 1);
        contents.Tag(inner, inner_type).Raw(value.bytes);
        adds.push_back(value.add);
      }
      return {contents.Tag(number, kEndGroup).bytes(), [=](UnknownFieldSet* set) {
                UnknownFieldSet* group = set->AddGroup(number);
                for (const auto& add : adds) add(group);
              }};
    }
  }
}

std::vector<uint64_t> BoundaryValues(Kind kind) {
  switch (kind) {
    case Kind::kDouble:
      return BoundaryDoubleBits();
    case Kind::kFloat:
      return {BoundaryFloatBits().begin(), BoundaryFloatBits().end()};
    case Kind::kInt32: {
      std::vector<uint64_t> values;
      for (const int32_t value : BoundaryInt32()) {
        values.push_back(static_cast<uint64_t>(int64_t{value}));
      }
      // Negative in 32 bits only; more bits than the field has.
      for (const uint64_t value : {0xFFFFFFFFull, 0x80000000ull, 0x100000005ull, 0x7ull << 61}) {
        values.push_back(value);
      }
      return values;
    }
    case Kind::kInt64: {
      std::vector<uint64_t> values;
      for (const int64_t value : BoundaryInt64()) values.push_back(static_cast<uint64_t>(value));
      return values;
    }
    case Kind::kBool:
      return {0, 1, 2, 127, 128, 1ull << 31, 1ull << 32, 1ull << 63, ~0ull};
    default:
      return {};
  }
}

uint64_t RandomNumber(std::mt19937* random, Kind kind) {
  const std::vector<uint64_t> values = BoundaryValues(kind);
  const int choice = Below(random, 2 * static_cast<int>(values.size()));
  const uint64_t value =
      choice < static_cast<int>(values.size()) ? values[choice] : Random64(random);
  if (kind == Kind::kDouble) return DoubleBits(value);
  return kind == Kind::kFloat ? FloatBits(static_cast<uint32_t>(value)) : value;
}

// A value that is small, not zero and differs for each n.
uint64_t CountedNumber(Kind kind, int n) {
  uint64_t bits = 0;
  if (kind == Kind::kDouble) {
    const double value = n + 0.25;
    std::memcpy(&bits, &value, sizeof value);
  } else if (kind == Kind::kFloat) {
    const float value = static_cast<float>(n) + 0.5f;
    std::memcpy(&bits, &value, sizeof value);
  } else {
    bits = kind == Kind::kBool ? 1 : static_cast<uint64_t>(n);
  }
  return bits;
}

Occurrence CountedOccurrence(const FieldRow& field, int* counter) {
  if (field.kind == Kind::kMessage) {
    return MessageOccurrence(field, FullOccurrences(FindMessage(field.message_type), counter));
  }
  const int n = ++*counter;
  if (IsNumber(field.kind)) return NumberOccurrence(field, CountedNumber(field.kind, n));
  return TextOccurrence(field, "t" + std::to_string(n));
}

Occurrence RandomOccurrence(std::mt19937* random, const MessageRow& message) {
  const FieldRow& field = message.fields[Below(random, message.field_count())];
  const int choice = Below(random, 100);
  if (choice < 10) {
    int number;
    do {
      number = 1 + Below(random, Below(random, 2) == 0 ? 30 : 70000);
    } while (FindField(message, number) != nullptr);
    return UnknownOccurrence(random, number, kWireTypes[Below(random, 5)]);
  }
  if (choice < 20) {
    const std::vector<WireType> types = WrongWireTypes(field);
    return UnknownOccurrence(random, field.number,
                             types[Below(random, static_cast<int>(types.size()))]);
  }
  if (field.kind == Kind::kMessage) {
    return MessageOccurrence(
        field, RandomOccurrences(random, FindMessage(field.message_type), Below(random, 5)));
  }
  if (!IsNumber(field.kind)) return TextOccurrence(field, RandomText(random));
  if (field.repeated() && choice < 60) {
    std::vector<uint64_t> values(Below(random, 4));
    for (uint64_t& value : values) value = RandomNumber(random, field.kind);
    return PackedOccurrence(field, values);
  }
  return NumberOccurrence(field, RandomNumber(random, field.kind));
}

}  // namespace

std::string BytesOf(const Occurrences& sequence) {
  std::string bytes;
  for (const Occurrence& occurrence : sequence) bytes += occurrence.bytes();
  return bytes;
}

uint32_t HasBitsOf(const Occurrences& sequence) {
  uint32_t bits = 0;
  for (const Occurrence& occurrence : sequence) bits |= occurrence.has_bits;
  return bits;
}

void Apply(const Occurrences& sequence, Message* record) {
  for (const Occurrence& occurrence : sequence) occurrence.apply(record);
}

Occurrence NumberOccurrence(const FieldRow& field, uint64_t value) {
  return KnownOccurrence(field, WireTypeOf(field.kind), NumberBytes(field.kind, value),
                         [field, value](Message* m) { SetNumber(field, value, m); });
}

Occurrence PackedOccurrence(const FieldRow& field, const std::vector<uint64_t>& values) {
  std::string run;
  for (const uint64_t value : values) run += NumberBytes(field.kind, value);
  return KnownOccurrence(field, kLengthDelimited, WireWriter().LengthDelimited(run).bytes(),
                         [field, values](Message* m) {
                           for (const uint64_t value : values) SetNumber(field, value, m);
                         });
}

Occurrence TextOccurrence(const FieldRow& field, const std::string& text) {
  return KnownOccurrence(field, kLengthDelimited, WireWriter().LengthDelimited(text).bytes(),
                         [field, text](Message* m) {
                           m->GetReflection()->SetString(
                               m, m->GetDescriptor()->FindFieldByNumber(field.number), text);
                         });
}

Occurrence MessageOccurrence(const FieldRow& field, const Occurrences& contents) {
  return KnownOccurrence(
      field, kLengthDelimited, WireWriter().LengthDelimited(BytesOf(contents)).bytes(),
      [field, contents](Message* m) {
        const Reflection* r = m->GetReflection();
        const FieldDescriptor* f = m->GetDescriptor()->FindFieldByNumber(field.number);
        Apply(contents, field.repeated() ? r->AddMessage(m, f) : r->MutableMessage(m, f));
      });
}

Occurrence UnknownOccurrence(std::mt19937* random, int number, WireType type) {
  const UnknownValue value = RandomUnknownValue(random, number, type, 1);
  return {number, WireWriter().Tag(number, type).bytes(), value.bytes, 0,
          [add = value.add](Message* m) { add(m->GetReflection()->MutableUnknownFields(m)); }};
}

std::vector<WireType> WrongWireTypes(const FieldRow& field) {
  std::vector<WireType> types;
  for (const WireType type : kWireTypes) {
    const bool packed = type == kLengthDelimited && field.repeated() && IsNumber(field.kind);
    if (type != WireTypeOf(field.kind) && !packed) types.push_back(type);
  }
  return types;
}

Occurrences BoundaryOccurrences(const FieldRow& field) {
  Occurrences all;
  if (field.kind == Kind::kMessage) {
    int counter = 0;
    all.push_back(MessageOccurrence(field, {}));
    all.push_back(
        MessageOccurrence(field, FullOccurrences(FindMessage(field.message_type), &counter)));
  } else if (IsNumber(field.kind)) {
    for (const uint64_t value : BoundaryValues(field.kind)) {
      all.push_back(NumberOccurrence(field, value));
    }
    if (field.repeated()) all.push_back(PackedOccurrence(field, BoundaryValues(field.kind)));
  } else {
    for (const int length : BoundaryLengths()) {
      // Every byte value, and no valid UTF-8.
      std::string text;
      for (int i = 0; i < length; ++i) text.push_back(static_cast<char>(255 - i % 256));
      all.push_back(TextOccurrence(field, text));
    }
  }
  return all;
}

Occurrences FullOccurrences(const MessageRow& message, int* counter) {
  Occurrences all;
  for (const FieldRow& field : message) {
    all.push_back(CountedOccurrence(field, counter));
    if (!field.repeated()) continue;
    all.push_back(CountedOccurrence(field, counter));
    if (field.kind == Kind::kMessage) continue;
    std::vector<uint64_t> run;
    for (int i = 0; i < 2; ++i) run.push_back(CountedNumber(field.kind, ++*counter));
    all.push_back(PackedOccurrence(field, run));
  }
  return all;
}

Occurrences RandomOccurrences(std::mt19937* random, const MessageRow& message, int count) {
  Occurrences all;
  for (int i = 0; i < count; ++i) all.push_back(RandomOccurrence(random, message));
  return all;
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
