// The string and bytes fields of a record, found without a look at messages that can hold none,
// of which there may be millions.
#ifndef CALIB_FIELDS_TEXT_FIELDS_H_
#define CALIB_FIELDS_TEXT_FIELDS_H_

#include <google/protobuf/message.h>

#include <functional>
#include <string>

namespace calib {

// Calls `visit` for each value of a string or bytes field, with a function that spells its path.
using TextVisitor =
    std::function<void(const google::protobuf::FieldDescriptor* field, const std::string& text,
                       const std::function<std::string()>& path)>;
void ForEachText(const google::protobuf::Message& record, const TextVisitor& visit);

}  // namespace calib

#endif  // CALIB_FIELDS_TEXT_FIELDS_H_
