// Visits every message of a record.
#ifndef CALIB_FIELDS_WALK_H_
#define CALIB_FIELDS_WALK_H_

#include <google/protobuf/message.h>

#include <functional>
#include <string>

namespace calib {

using MessageVisitor =
    std::function<void(const google::protobuf::Message& message, const std::string& path)>;

// Calls `visit` for the record itself (with the path "") and for every sub-message that is set,
// outer ones first, in the order of field numbers and indices.
void ForEachMessage(const google::protobuf::Message& record, const MessageVisitor& visit);

}  // namespace calib

#endif  // CALIB_FIELDS_WALK_H_
