// The table of the schema (schema.def) as data.
#ifndef CALIBRATION_TESTS_SUPPORT_SCHEMA_TABLE_H_
#define CALIBRATION_TESTS_SUPPORT_SCHEMA_TABLE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zarvo {
namespace calibration {
namespace testing {

constexpr char kSchemaFile[] = "calibration_common/calibration.proto";
constexpr char kPackage[] = "zarvo.calibration";

// NOLINTBEGIN(bugprone-macro-parentheses): these are terms of sums.
constexpr int kMessageCount = 0
#define MESSAGE(Class) +1
#include "tests/support/schema.def"
    ;

constexpr int kFieldCount = 0
#define FIELD(label, type, name, Constant, number) +1
#include "tests/support/schema.def"
    ;

// What EncodedSchema() must come to.
constexpr size_t kEncodedSchemaSize = 0
#define ENCODED_SIZE(bytes) +bytes
#include "tests/support/schema.def"
    ;
// NOLINTEND(bugprone-macro-parentheses)

enum class Label { kOptional, kRequired, kRepeated };
enum class Kind { kDouble, kFloat, kInt32, kInt64, kBool, kString, kBytes, kMessage };

// Values as they stand in the low three bits of a tag.
enum WireType : uint32_t {
  kVarint = 0,
  kFixed64 = 1,
  kLengthDelimited = 2,
  kStartGroup = 3,
  kEndGroup = 4,
  kFixed32 = 5,
};

struct FieldRow {
  const char* name;
  int number;
  Label label;
  Kind kind;
  int has_bit = 0;                     // declaration position; a repeated field's bit is never set
  const char* message_type = nullptr;  // kMessage only: the message's plain name
  const char* default_text = nullptr;  // as the descriptor stores it; null where none is declared
  uint32_t default_bits = 0;           // the declared float default, bit for bit

  constexpr bool repeated() const { return label == Label::kRepeated; }
};

struct MessageRow {
  const char* name;
  int index;  // position in the file descriptor
  std::vector<FieldRow> fields;

  int field_count() const { return static_cast<int>(fields.size()); }
  const FieldRow* begin() const { return fields.data(); }
  const FieldRow* end() const { return fields.data() + fields.size(); }
};

// All messages, in file order.
const std::vector<MessageRow>& Schema();

std::vector<const char*> MessageNames();

// REQUIRES: the message exists.
const MessageRow& FindMessage(const std::string& name);
const MessageRow& FindMessage(const char* name);

// Null where the message declares no such field.
const FieldRow* FindField(const MessageRow& message, int number);
const FieldRow* FindField(const MessageRow& message, const std::string& name);

// The fields in the order in which they are written: by ascending number.
std::vector<const FieldRow*> WireOrder(const MessageRow& message);

// The wire type under which one value of the kind travels (a packed run comes under
// kLengthDelimited instead).
WireType WireTypeOf(Kind kind);

// The tag of one value of the field.
uint32_t TagOf(const FieldRow& field);

// "zarvo.calibration.CameraIntrinsics"
std::string FullName(const MessageRow& message);

// The table as a serialized FileDescriptorProto, in which each record's fields stand by ascending
// number and nothing that is not declared: file name 1, package 2, messages 4; in a message its
// name 1 and fields 2; in a field name 1, number 3, label 4, type 5, type name 6, default 7.
std::string EncodedSchema();

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_SCHEMA_TABLE_H_
