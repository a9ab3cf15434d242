// Fields of a type as columns of a table: paths such as "intrinsics.k[0]", found out once for all
// records, and what a message has there as a cell.
#ifndef CALIB_FIELDS_COLUMN_H_
#define CALIB_FIELDS_COLUMN_H_

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <functional>
#include <string>
#include <vector>

namespace calib {

// Where a path leads from a message of one of our classes, without a look at any.
struct ColumnPath {
  struct Step {
    const google::protobuf::FieldDescriptor* field;
    int index;  // -1: not repeated, or all of a list of numbers or texts, with which a path ends
    const google::protobuf::Reflection* reflection;  // of the message that holds it
  };
  std::vector<Step> steps;
};

// Throws Failure if the path is none of the type's, or ends at a message.
ColumnPath FindColumn(const google::protobuf::Descriptor* type, const std::string& path);

// The paths of all fields of the type that are single values, those of its single messages
// included; but for bytes.
std::vector<std::string> ScalarPaths(const google::protobuf::Descriptor* type);

// The message that holds the column's last field: an empty one if one on the way is not set, null
// if there is no element of its index.
const google::protobuf::Message* HolderOf(const google::protobuf::Message& message,
                                          const ColumnPath& column);

// The repeated messages that a path such as "camera.intrinsics.sample_points" leads to.
struct EachPath {
  std::vector<const google::protobuf::FieldDescriptor*> fields;
};
EachPath FindEach(const google::protobuf::Descriptor* type, const std::string& path);

// Calls `visit` for each element, in order, with the indices on the way to it: "0.17".
void ForEachElement(const google::protobuf::Message& record, const EachPath& each,
                    const std::function<void(const google::protobuf::Message& element,
                                             const std::string& index)>& visit);

}  // namespace calib

#endif  // CALIB_FIELDS_COLUMN_H_
