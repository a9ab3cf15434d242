// The generator's model: everything about a schema that the renderers need, computed once.
#ifndef PROTOGEN_MODEL_H_
#define PROTOGEN_MODEL_H_

#include <google/protobuf/descriptor.h>

#include <cstdint>
#include <string>
#include <vector>

namespace protogen {

enum class Kind { kDouble, kFloat, kInt32, kInt64, kBool, kString, kBytes, kMessage };

struct Field {
  std::string name;
  std::vector<std::string> comment;
  std::string declaration;  // as the schema writes it: "optional float x = 1;"
  Kind kind;
  bool repeated;
  bool required;
  int number;
  int index;                  // position in the declaration, which is the has-bit number
  std::string message_type;   // kMessage only
  std::string message_class;  // kMessage only: its class as no other name can hide it
  std::string default_value;  // a C++ literal; scalars only
  bool zero_default;          // a scalar that starts out as 0 or false

  uint32_t bit() const { return 1u << index; }
  bool is_scalar() const { return !repeated && kind <= Kind::kBool; }
  bool is_text() const { return kind == Kind::kString || kind == Kind::kBytes; }
  bool is_sub_message() const { return !repeated && kind == Kind::kMessage; }
  // The tag that the parser expects and the writers write, and the tag of a packed run.
  uint32_t tag() const;
  uint32_t packed_tag() const;
  int tag_size() const;
  // Bytes that a value takes on the wire where that does not depend on the value, otherwise 0.
  int fixed_size() const;
  // Bytes that the member takes in an object.
  int member_size() const;
};

// Fields whose has-bits are tested at once.
struct Group {
  uint32_t mask = 0;  // the has-bits of `fields`
  std::vector<const Field*> fields;
};

struct Message {
  std::string name;
  std::vector<std::string> comment;
  int index;
  std::vector<Field> fields;               // in declaration order
  std::vector<const Field*> wire_order;    // by ascending field number
  std::vector<const Field*> member_order;  // as the members stand in an object
  std::vector<const Field*> repeated;      // in declaration order
  std::vector<const Field*> sub_messages;  // singular ones, in declaration order
  std::vector<const Field*> required;
  // Up to eight fields each that are neighbours in the declaration.
  std::vector<Group> singular_groups;           // all singular fields
  std::vector<Group> optional_groups;           // singular fields that are not required
  std::vector<Group> runs;                      // see internal/runs.h; each of at least three
  bool has_texts;                               // string or bytes fields
  bool is_element;                              // the type of a repeated field
  bool reaches_required;                        // can be uninitialized
  std::vector<const Field*> reaching_required;  // the fields through which it can be uninitialized
  uint32_t tags_end;  // above the tags of all fields, whatever their wire type

  uint32_t required_mask() const;
};

struct File {
  std::string name;                     // "dir/name.proto"
  std::string base;                     // "dir/name"
  std::string identifier;               // the name as part of an identifier
  std::vector<std::string> namespaces;  // the package, piece by piece
  std::string serialized;               // the FileDescriptorProto's canonical encoding
  std::vector<Message> messages;
  int field_count;
};

// REQUIRES: FindRefusals() has nothing against `descriptor`.
File BuildModel(const google::protobuf::FileDescriptor& descriptor);

}  // namespace protogen

#endif  // PROTOGEN_MODEL_H_
