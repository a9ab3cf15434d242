#include "calib/fields/presence.h"

#include "calib/fields/unknown.h"

namespace calib {

using google::protobuf::Message;

bool IsEmpty(const Message& record) {
  std::vector<const google::protobuf::FieldDescriptor*> fields;
  record.GetReflection()->ListFields(record, &fields);
  return fields.empty() && OwnUnknownFields(record, "").empty();
}

std::vector<std::string> MissingFields(const Message& record) {
  std::vector<std::string> missing;
  if (!record.IsInitialized()) record.FindInitializationErrors(&missing);
  return missing;
}

}  // namespace calib
