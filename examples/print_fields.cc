// Prints every field of any record, by reflection: works on all types, those of later schemas too.
//
//   print_fields TYPE FILE        such as: print_fields BaseCalibrationProto base.binpb

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "calibration_common/calibration.pb.h"

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

void PrintFields(const Message& record, const std::string& path);

// An index below 0 stands for a field that is not repeated.
void PrintField(const Message& record, const FieldDescriptor* field, int index,
                const std::string& path) {
  const Reflection* r = record.GetReflection();
  const bool one = index < 0;
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_INT32:
      std::cout << path << " = "
                << (one ? r->GetInt32(record, field) : r->GetRepeatedInt32(record, field, index));
      break;
    case FieldDescriptor::CPPTYPE_INT64:
      std::cout << path << " = "
                << (one ? r->GetInt64(record, field) : r->GetRepeatedInt64(record, field, index));
      break;
    case FieldDescriptor::CPPTYPE_FLOAT:
      std::cout << path << " = "
                << (one ? r->GetFloat(record, field) : r->GetRepeatedFloat(record, field, index));
      break;
    case FieldDescriptor::CPPTYPE_DOUBLE:
      std::cout << path << " = "
                << (one ? r->GetDouble(record, field) : r->GetRepeatedDouble(record, field, index));
      break;
    case FieldDescriptor::CPPTYPE_BOOL:
      std::cout << path << " = "
                << (one ? r->GetBool(record, field) : r->GetRepeatedBool(record, field, index));
      break;
    case FieldDescriptor::CPPTYPE_STRING: {
      const std::string text =
          one ? r->GetString(record, field) : r->GetRepeatedString(record, field, index);
      if (field->type() == FieldDescriptor::TYPE_BYTES) {
        std::cout << path << " = " << text.size() << " bytes";
      } else {
        std::cout << path << " = \"" << text << "\"";
      }
      break;
    }
    case FieldDescriptor::CPPTYPE_MESSAGE:
      PrintFields(one ? r->GetMessage(record, field) : r->GetRepeatedMessage(record, field, index),
                  path + ".");
      return;
    default:
      std::cout << path << " is of a type that no record has: " << field->type_name();
  }
  std::cout << "\n";
}

void PrintFields(const Message& record, const std::string& path) {
  // The fields that are present, in the order of their numbers.
  std::vector<const FieldDescriptor*> fields;
  record.GetReflection()->ListFields(record, &fields);
  for (const FieldDescriptor* field : fields) {
    if (!field->is_repeated()) {
      PrintField(record, field, -1, path + field->name());
      continue;
    }
    for (int i = 0; i < record.GetReflection()->FieldSize(record, field); ++i) {
      PrintField(record, field, i, path + field->name() + "[" + std::to_string(i) + "]");
    }
  }
}

// An empty record of the type; null if there is none of that name.
std::unique_ptr<Message> NewRecord(const std::string& type) {
  const google::protobuf::Descriptor* descriptor =
      zarvo::calibration::RobotCalibration::descriptor()->file()->FindMessageTypeByName(type);
  if (descriptor == nullptr) return nullptr;
  return std::unique_ptr<Message>(
      google::protobuf::MessageFactory::generated_factory()->GetPrototype(descriptor)->New());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: print_fields TYPE FILE\n";
    return 2;
  }
  const std::unique_ptr<Message> record = NewRecord(argv[1]);
  if (record == nullptr) {
    std::cerr << "print_fields: " << argv[1] << ": is no type of record\n";
    return 1;
  }
  std::ifstream file(argv[2], std::ios::binary);
  if (!file || !record->ParseFromIstream(&file)) {
    std::cerr << "print_fields: " << argv[2] << ": holds no " << argv[1] << "\n";
    return 1;
  }
  PrintFields(*record, "");
  return 0;
}
