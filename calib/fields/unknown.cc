#include "calib/fields/unknown.h"

#include "calib/fields/field_path.h"
#include "calib/fields/walk.h"

namespace calib {
std::string DescribeValue(const google::protobuf::UnknownField& field) {
  switch (field.type()) {
    case google::protobuf::UnknownField::TYPE_VARINT:
      return "varint " + std::to_string(field.varint());
    case google::protobuf::UnknownField::TYPE_FIXED32:
      return "4 bytes of fixed width";
    case google::protobuf::UnknownField::TYPE_FIXED64:
      return "8 bytes of fixed width";
    case google::protobuf::UnknownField::TYPE_LENGTH_DELIMITED:
      return std::to_string(field.length_delimited().size()) + " bytes";
    default:
      return "group of " + std::to_string(field.group().field_count()) + " fields";
  }
}

std::vector<UnknownField> OwnUnknownFields(const google::protobuf::Message& message,
                                           const std::string& path) {
  const google::protobuf::UnknownFieldSet& set = message.GetReflection()->GetUnknownFields(message);
  std::vector<UnknownField> result;
  for (int i = 0; i < set.field_count(); ++i) {
    const int number = set.field(i).number();
    const auto* field = message.GetDescriptor()->FindFieldByNumber(number);
    result.push_back({path, number,
                      DescribeValue(set.field(i)) +
                          (field == nullptr ? "" : ", no value for " + field->name())});
  }
  return result;
}

std::vector<UnknownField> FindUnknownFields(const google::protobuf::Message& record) {
  std::vector<UnknownField> result;
  // Most records have none, and finding that out takes no paths.
  if (!HasUnknownFields(record)) return result;
  ForEachMessage(record, [&](const google::protobuf::Message& message, const std::string& path) {
    for (UnknownField& unknown : OwnUnknownFields(message, path)) {
      result.push_back(std::move(unknown));
    }
  });
  return result;
}

std::string Describe(const UnknownField& unknown) {
  return (unknown.path.empty() ? "" : unknown.path + ": ") + "unknown field " +
         std::to_string(unknown.number) + " (" + unknown.what + ")";
}

}  // namespace calib
