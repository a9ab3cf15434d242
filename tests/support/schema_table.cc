#include "tests/support/schema_table.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

// The words that the table has for labels and types.
namespace words {
constexpr Label optional_ = Label::kOptional;
constexpr Label required_ = Label::kRequired;
constexpr Label repeated_ = Label::kRepeated;
constexpr Kind double_ = Kind::kDouble;
constexpr Kind float_ = Kind::kFloat;
constexpr Kind int32_ = Kind::kInt32;
constexpr Kind int64_ = Kind::kInt64;
constexpr Kind bool_ = Kind::kBool;
constexpr Kind string_ = Kind::kString;
constexpr Kind bytes_ = Kind::kBytes;
}  // namespace words

// A field's has-bit is its position in the declaration.
void AddField(FieldRow row, std::vector<MessageRow>* schema) {
  std::vector<FieldRow>& fields = schema->back().fields;
  row.has_bit = static_cast<int>(fields.size());
  fields.push_back(row);
}

std::vector<MessageRow> MakeSchema() {
  std::vector<MessageRow> schema;
#define MESSAGE(Class) schema.push_back({#Class, static_cast<int>(schema.size()), {}});
#define FIELD(label, type, name, Constant, number) \
  AddField({#name, number, words::label##_, words::type##_}, &schema);
#define NUMBER_WITH_DEFAULT(label, type, name, Constant, number, text, bits) \
  AddField({#name, number, words::label##_, words::type##_, 0, nullptr, text, bits}, &schema);
#define SUB_MESSAGE(label, type, name, Constant, number) \
  AddField({#name, number, words::label##_, Kind::kMessage, 0, #type}, &schema);
#define SUB_MESSAGES(label, type, name, Constant, number) \
  SUB_MESSAGE(label, type, name, Constant, number)
#include "tests/support/schema.def"
  return schema;
}

// Labels and types by the numbers that descriptors are encoded with.
int NumberOf(Label label) {
  switch (label) {
    case Label::kOptional:
      return 1;
    case Label::kRequired:
      return 2;
    case Label::kRepeated:
      return 3;
  }
  return 0;
}

int NumberOf(Kind kind) {
  switch (kind) {
    case Kind::kDouble:
      return 1;
    case Kind::kFloat:
      return 2;
    case Kind::kInt64:
      return 3;
    case Kind::kInt32:
      return 5;
    case Kind::kBool:
      return 8;
    case Kind::kString:
      return 9;
    case Kind::kMessage:
      return 11;
    case Kind::kBytes:
      return 12;
  }
  return 0;
}

}  // namespace

const std::vector<MessageRow>& Schema() {
  static const std::vector<MessageRow> schema = MakeSchema();
  return schema;
}

std::vector<const char*> MessageNames() {
  std::vector<const char*> names;
  for (const MessageRow& message : Schema()) names.push_back(message.name);
  return names;
}

const MessageRow& FindMessage(const std::string& name) { return FindMessage(name.c_str()); }

const MessageRow& FindMessage(const char* name) {
  for (const MessageRow& message : Schema()) {
    if (std::strcmp(name, message.name) == 0) return message;
  }
  std::cerr << "schema_table: no message named '" << name << "'\n";
  std::abort();
}

const FieldRow* FindField(const MessageRow& message, int number) {
  for (const FieldRow& field : message) {
    if (field.number == number) return &field;
  }
  return nullptr;
}

const FieldRow* FindField(const MessageRow& message, const std::string& name) {
  for (const FieldRow& field : message) {
    if (name == field.name) return &field;
  }
  return nullptr;
}

std::vector<const FieldRow*> WireOrder(const MessageRow& message) {
  std::vector<const FieldRow*> fields;
  for (const FieldRow& field : message) fields.push_back(&field);
  std::sort(fields.begin(), fields.end(),
            [](const FieldRow* a, const FieldRow* b) { return a->number < b->number; });
  return fields;
}

WireType WireTypeOf(Kind kind) {
  switch (kind) {
    case Kind::kDouble:
      return WireType::kFixed64;
    case Kind::kFloat:
      return WireType::kFixed32;
    case Kind::kInt32:
    case Kind::kInt64:
    case Kind::kBool:
      return WireType::kVarint;
    case Kind::kString:
    case Kind::kBytes:
    case Kind::kMessage:
      return WireType::kLengthDelimited;
  }
  std::cerr << "schema_table: no wire type for the kind " << static_cast<int>(kind) << "\n";
  std::abort();
}

uint32_t TagOf(const FieldRow& field) {
  return static_cast<uint32_t>(field.number) << 3 | WireTypeOf(field.kind);
}

std::string FullName(const MessageRow& message) {
  return std::string(kPackage) + "." + message.name;
}

std::string EncodedSchema() {
  WireWriter file;
  file.Tag(1, kLengthDelimited).LengthDelimited(kSchemaFile);
  file.Tag(2, kLengthDelimited).LengthDelimited(kPackage);
  for (const MessageRow& message : Schema()) {
    WireWriter type;
    type.Tag(1, kLengthDelimited).LengthDelimited(message.name);
    for (const FieldRow& row : message) {
      WireWriter field;
      field.Tag(1, kLengthDelimited).LengthDelimited(row.name);
      field.Tag(3, kVarint).Varint(row.number);
      field.Tag(4, kVarint).Varint(NumberOf(row.label));
      field.Tag(5, kVarint).Varint(NumberOf(row.kind));
      if (row.message_type != nullptr) {
        field.Tag(6, kLengthDelimited)
            .LengthDelimited(std::string(".") + kPackage + "." + row.message_type);
      }
      if (row.default_text != nullptr) {
        field.Tag(7, kLengthDelimited).LengthDelimited(row.default_text);
      }
      type.Tag(2, kLengthDelimited).LengthDelimited(field.bytes());
    }
    file.Tag(4, kLengthDelimited).LengthDelimited(type.bytes());
  }
  return file.bytes();
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
