// Unknown fields: what a record holds under field numbers that the schema does not have, or under a
// wire type that is not the field's.
#ifndef CALIB_FIELDS_UNKNOWN_H_
#define CALIB_FIELDS_UNKNOWN_H_

#include <google/protobuf/message.h>
#include <google/protobuf/unknown_field_set.h>

#include <string>
#include <vector>

namespace calib {

struct UnknownField {
  std::string path;  // of the message that holds it; empty for the record itself
  int number;
  std::string what;  // "varint 5", "12 bytes", ...
};

// Whether the record may have any; false if it has none.
bool HasUnknownFields(const google::protobuf::Message& record);

// The unknown fields of the whole record, the outermost first.
std::vector<UnknownField> FindUnknownFields(const google::protobuf::Message& record);

// The unknown fields of the message itself, without those of its sub-messages; `path` leads to it.
std::vector<UnknownField> OwnUnknownFields(const google::protobuf::Message& message,
                                           const std::string& path);

// The value of an unknown field, such as "varint 5".
std::string DescribeValue(const google::protobuf::UnknownField& field);

// Place, number and value: "camera[0].intrinsics: unknown field 77 (varint 5)".
std::string Describe(const UnknownField& unknown);

}  // namespace calib

#endif  // CALIB_FIELDS_UNKNOWN_H_
