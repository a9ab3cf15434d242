// calib types [NAME]
#include <google/protobuf/message.h>

#include <memory>

#include "calib/commands/commands.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/terminal.h"
#include "calib/fields/value.h"
#include "calib/formats/names.h"
#include "calib/formats/schema.h"

namespace calib {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::MessageFactory;

std::string FirstSentence(const std::string& comment) {
  const size_t end = comment.find(". ");
  return end == std::string::npos ? comment : comment.substr(0, end + 1);
}

std::string ListTypes(const Schema& schema) {
  std::string list;
  for (const Descriptor* type : RecordTypes()) {
    list += type->name() + "\n" + Wrap(FirstSentence(schema.Comment(type)), 4, OutputWidth());
  }
  return list;
}

std::string Declaration(const FieldDescriptor* field) {
  const char* label = field->is_required()   ? "required"
                      : field->is_repeated() ? "repeated"
                                             : "optional";
  const bool message = field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE;
  std::string declaration = std::string(label) + " " +
                            (message ? field->message_type()->name() : field->type_name()) + " " +
                            field->name() + " = " + std::to_string(field->number());
  if (field->has_default_value()) {
    const auto* defaults =
        MessageFactory::generated_factory()->GetPrototype(field->containing_type());
    declaration += " [default = " + FullValue(*defaults, field, -1) + "]";
  }
  return declaration;
}

std::string DescribeType(const Schema& schema, const Descriptor* type) {
  const int width = OutputWidth();
  std::string text = type->name() + "\n" + Wrap(schema.Comment(type), 4, width);
  for (int i = 0; i < type->field_count(); ++i) {
    text += "\n  " + Declaration(type->field(i)) + "\n" +
            Wrap(schema.Comment(type->field(i)), 6, width);
  }
  return text;
}

}  // namespace

void AddTypes(Command* program, int* status) {
  Command* command = program->AddCommand("types", "Lists the record types, or shows one");
  const auto name = std::make_shared<std::string>();
  command->AddOption("NAME", *name, "The type whose fields are shown");
  command->Footer(
      "Shows each field's label, type, name, number and default, and what the schema says of "
      "it.\n\n"
      "Examples:\n"
      "  calib types\n"
      "  calib types CameraIntrinsics");
  command->Callback([name, status] {
    const Schema schema;
    Print(name->empty() ? ListTypes(schema) : DescribeType(schema, RecordType(*name)));
    *status = kFine;
  });
}

}  // namespace calib
