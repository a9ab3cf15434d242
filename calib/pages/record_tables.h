// All that a record holds, as tables: one for each message, and one for each list of messages.
#ifndef CALIB_PAGES_RECORD_TABLES_H_
#define CALIB_PAGES_RECORD_TABLES_H_

#include <google/protobuf/message.h>

#include <functional>
#include <string>

namespace calib {

// What the schema says of a field.
using FieldComment = std::function<std::string(const google::protobuf::FieldDescriptor*)>;

// The tables below one another, with headings that are paths, in about so many bytes: of what is
// more than that, it is told how much is left out.
std::string RecordTables(const google::protobuf::Message& record, const FieldComment& comment,
                         size_t most_bytes);

}  // namespace calib

#endif  // CALIB_PAGES_RECORD_TABLES_H_
