// Field paths such as "camera[0].intrinsics.cy": how messages name a place in a record, and how
// users do. An index counts from 0. Users may also name elements of a repeated field by what they
// hold, camera[name=cam0], or all of them, camera[*].
#ifndef CALIB_FIELDS_FIELD_PATH_H_
#define CALIB_FIELDS_FIELD_PATH_H_

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <functional>
#include <string>
#include <vector>

#include "calib/console/failure.h"

namespace calib {

// One element of a path: "cy", or "camera[0]" for a repeated field.
std::string PathElement(const google::protobuf::FieldDescriptor* field, int index);

std::string JoinPath(const std::string& path, const std::string& element);

// A field, or one element of it.
struct Step {
  const google::protobuf::FieldDescriptor* field;
  int index;  // -1: the field as a whole
};

// The field of that name. Throws Failure if there is none; `where` is what its message begins with,
// such as "field path 'camera.nme'".
const google::protobuf::FieldDescriptor* FindField(const google::protobuf::Descriptor* type,
                                                   const std::string& name,
                                                   const std::string& where);

// A place in a record that a path leads to: a field of `message`, or one element of it. The field
// need not be set.
struct Place {
  const google::protobuf::Message* message;
  const google::protobuf::FieldDescriptor* field;
  int index;                // -1: the field as a whole
  std::string path;         // to it, with indices alone
  std::vector<Step> steps;  // the same, from the record on
};

// What becomes of a path that leads through a sub-message which is not set.
enum class Unset { kMissing, kEmpty };

// Calls `found` for each place in the record that a path leads to, and `missing` with the reason
// for each that would be one if the record held it: an element behind the last one or with a value
// that none has, or a field of a sub-message that is not set. Throws Failure where the path is no
// path of fields of this type. In a sub-message that is not set, but counts as empty, `message` is
// the default instance.
void ForEachPlace(const google::protobuf::Message& record, const std::string& path, Unset unset,
                  const std::function<void(const Place& place)>& found,
                  const std::function<void(const std::string& why)>& missing);

// Whether the field, or the element, is there.
bool IsSet(const Place& place);

// The message of the record that holds the field of a place in it. Sub-messages on the way become
// set.
google::protobuf::Message* MutableHolder(const Place& place, google::protobuf::Message* record);

}  // namespace calib

#endif  // CALIB_FIELDS_FIELD_PATH_H_
