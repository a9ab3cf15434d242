// Field paths such as "camera[0].intrinsics.cy": how messages name a place in a record, and how
// users do. An index counts from 0.
#ifndef CALIB_FIELDS_FIELD_PATH_H_
#define CALIB_FIELDS_FIELD_PATH_H_

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <string>

#include "calib/console/failure.h"

namespace calib {

// One element of a path: "cy", or "camera[0]" for a repeated field.
std::string PathElement(const google::protobuf::FieldDescriptor* field, int index);

std::string JoinPath(const std::string& path, const std::string& element);

// A place in a record that a path leads to: a field of `message`, or one element of it. The field
// need not be set.
struct Place {
  const google::protobuf::Message* message;
  const google::protobuf::FieldDescriptor* field;
  int index;  // -1: the field as a whole
};

// Says that a path is a right one, but leads to what this record does not hold: an element behind
// the last one, or a field of a sub-message that is not set.
class NotInRecord : public Failure {
 public:
  using Failure::Failure;
};

// The place in the record that a path leads to. Throws NotInRecord, or Failure where the path is no
// path of fields of this type.
Place FindPlace(const google::protobuf::Message& record, const std::string& path);

}  // namespace calib

#endif  // CALIB_FIELDS_FIELD_PATH_H_
