// Field paths such as "camera[0].intrinsics.cy": how messages name a place in a record, and how
// users do. An index counts from 0.
#ifndef CALIB_FIELD_PATH_H_
#define CALIB_FIELD_PATH_H_

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <string>

namespace calib {

// "cy", or "camera[0]" for a repeated field.
std::string PathElement(const google::protobuf::FieldDescriptor* field, int index);

std::string JoinPath(const std::string& path, const std::string& element);

// A place in a record that a path leads to: a field of `message`, or one element of it. The field
// need not be set.
struct Place {
  const google::protobuf::Message* message;
  const google::protobuf::FieldDescriptor* field;
  int index;  // -1: the field as a whole
};

// Throws Failure where the path leads nowhere: a field that the type does not have, an index that
// the record does not have, or a sub-message that is not set on the way.
Place FindPlace(const google::protobuf::Message& record, const std::string& path);

}  // namespace calib

#endif  // CALIB_FIELD_PATH_H_
