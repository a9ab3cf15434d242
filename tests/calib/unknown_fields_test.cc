// The record classes are known to calib by their types in two places, for speed: this holds both to
// the schema.
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "calib/fields/record_classes.h"
#include "calib/fields/unknown.h"

namespace calib {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::FileDescriptor;
using google::protobuf::Message;
using google::protobuf::MessageFactory;

const FileDescriptor* Schema() {
  return zarvo::calibration::RobotCalibration::descriptor()->file();
}

// Sets all messages in the message, two elements in each list, and lists them with their paths.
void Fill(Message* message, const std::string& path,
          std::vector<std::pair<Message*, std::string>>* all) {
  all->emplace_back(message, path);
  const auto* reflection = message->GetReflection();
  for (int i = 0; i < message->GetDescriptor()->field_count(); ++i) {
    const FieldDescriptor* field = message->GetDescriptor()->field(i);
    if (field->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) continue;
    const std::string name = (path.empty() ? "" : path + ".") + field->name();
    if (!field->is_repeated()) {
      Fill(reflection->MutableMessage(message, field), name, all);
      continue;
    }
    for (int element = 0; element < 2; ++element) {
      Fill(reflection->AddMessage(message, field), name + "[" + std::to_string(element) + "]", all);
    }
  }
}

TEST(UnknownFields, AreFoundInEachMessageOfEachType) {
  int messages = 0;
  for (int i = 0; i < Schema()->message_type_count(); ++i) {
    const Descriptor* type = Schema()->message_type(i);
    const std::unique_ptr<Message> record(
        MessageFactory::generated_factory()->GetPrototype(type)->New());
    std::vector<std::pair<Message*, std::string>> all;
    Fill(record.get(), "", &all);
    EXPECT_FALSE(HasUnknownFields(*record)) << type->name();
    for (const auto& [message, path] : all) {
      auto* unknown = message->GetReflection()->MutableUnknownFields(message);
      unknown->AddVarint(77, 5);
      EXPECT_TRUE(HasUnknownFields(*record)) << type->name() << ": " << path;
      const std::vector<UnknownField> found = FindUnknownFields(*record);
      ASSERT_EQ(found.size(), 1U) << type->name() << ": " << path;
      EXPECT_EQ(found[0].path, path);
      unknown->Clear();
      ++messages;
    }
  }
  EXPECT_GT(messages, 2 * Schema()->message_type_count());
}

template <typename Class>
struct NameOf {
  static const std::string& Do() { return Class::descriptor()->name(); }
};

TEST(RecordClasses, AreInTheOrderOfTheSchema) {
  for (int i = 0; i < Schema()->message_type_count(); ++i) {
    const Descriptor* type = Schema()->message_type(i);
    const auto name = CallFor<const std::string& (*)(), NameOf>(type);
    ASSERT_NE(name, nullptr) << type->name();
    EXPECT_EQ(name(), type->name());
  }
}

TEST(RecordClasses, AreNoOtherTypes) {
  EXPECT_EQ(
      (CallFor<const std::string& (*)(), NameOf>(google::protobuf::DescriptorProto::descriptor())),
      nullptr);
}

}  // namespace
}  // namespace calib
