// One value of a record as text.
#ifndef CALIB_FIELDS_VALUE_H_
#define CALIB_FIELDS_VALUE_H_

#include <google/protobuf/message.h>

#include <string>

namespace calib {

// Text and bytes that are longer than this are folded to their size, such as "<360960 bytes>".
constexpr size_t kFoldBytes = 64;

// The value of a field, or of its element `index` (-1 if it is not repeated), in the text format.
// ShortValue() folds what is long, and spells a sub-message as its type and size.
std::string ShortValue(const google::protobuf::Message& message,
                       const google::protobuf::FieldDescriptor* field, int index);
std::string FullValue(const google::protobuf::Message& message,
                      const google::protobuf::FieldDescriptor* field, int index);

// What a string or bytes field holds, as it is: where it stands, if it stands somewhere, else in
// `scratch`. The one without a scratch is a copy.
const std::string& TextIn(const google::protobuf::Message& message,
                          const google::protobuf::FieldDescriptor* field, int index,
                          std::string* scratch);
std::string RawString(const google::protobuf::Message& message,
                      const google::protobuf::FieldDescriptor* field, int index);

}  // namespace calib

#endif  // CALIB_FIELDS_VALUE_H_
