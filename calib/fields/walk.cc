#include "calib/fields/walk.h"

#include <vector>

#include "calib/fields/field_path.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

namespace {

void Visit(const Message& message, const std::string& path, const MessageVisitor& visit) {
  visit(message, path);
  const Reflection* reflection = message.GetReflection();
  std::vector<const FieldDescriptor*> fields;
  reflection->ListFields(message, &fields);
  for (const FieldDescriptor* field : fields) {
    if (field->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) continue;
    if (!field->is_repeated()) {
      Visit(reflection->GetMessage(message, field), JoinPath(path, PathElement(field, 0)), visit);
      continue;
    }
    for (int i = 0; i < reflection->FieldSize(message, field); ++i) {
      Visit(reflection->GetRepeatedMessage(message, field, i),
            JoinPath(path, PathElement(field, i)), visit);
    }
  }
}

}  // namespace

void ForEachMessage(const Message& record, const MessageVisitor& visit) {
  Visit(record, "", visit);
}

}  // namespace calib
