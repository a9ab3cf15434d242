// What a record lacks.
#ifndef CALIB_FIELDS_PRESENCE_H_
#define CALIB_FIELDS_PRESENCE_H_

#include <google/protobuf/message.h>

#include <string>
#include <vector>

namespace calib {

// Whether no field at all is set, not even an unknown one.
bool IsEmpty(const google::protobuf::Message& record);

// The paths of required fields that are not set.
std::vector<std::string> MissingFields(const google::protobuf::Message& record);

}  // namespace calib

#endif  // CALIB_FIELDS_PRESENCE_H_
