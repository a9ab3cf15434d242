#include "calib/fields/column.h"

#include <cstdlib>
#include <sstream>

#include "calib/console/failure.h"
#include "calib/fields/field_path.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

namespace {

bool IsMessage(const FieldDescriptor* field) {
  return field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE;
}

// What messages call a column.
std::string Named(const std::string& path) { return "column '" + path + "'"; }

[[noreturn]] void Refuse(const std::string& path, const std::string& what,
                         const std::string& remedy) {
  throw Failure(Named(path) + ": " + what, remedy);
}

const Reflection* ReflectionOf(const Descriptor* type) {
  return google::protobuf::MessageFactory::generated_factory()->GetPrototype(type)->GetReflection();
}

// "k[0]" as the field's name and the index; -1 if there is none.
int TakeIndex(std::string* element, const std::string& path) {
  const size_t bracket = element->find('[');
  if (bracket == std::string::npos) return -1;
  const std::string digits = element->substr(bracket + 1, element->size() - bracket - 2);
  const bool closed = element->back() == ']' && !digits.empty() && digits.size() < 10 &&
                      digits.find_first_not_of("0123456789") == std::string::npos;
  if (!closed) Refuse(path, "'" + *element + "' is no field with an index", "Write it like k[0].");
  element->resize(bracket);
  return std::atoi(digits.c_str());
}

void AddScalarPaths(const Descriptor* type, const std::string& path,
                    std::vector<std::string>* paths) {
  for (int i = 0; i < type->field_count(); ++i) {
    const FieldDescriptor* field = type->field(i);
    if (field->is_repeated() || field->type() == FieldDescriptor::TYPE_BYTES) continue;
    const std::string inner = JoinPath(path, field->name());
    if (IsMessage(field)) {
      AddScalarPaths(field->message_type(), inner, paths);
    } else {
      paths->push_back(inner);
    }
  }
}

using ElementVisitor = std::function<void(const Message& element, const std::string& index)>;

void Visit(const Message& message, const EachPath& each, size_t depth, const std::string& index,
           const ElementVisitor& visit) {
  if (depth == each.fields.size()) return visit(message, index);
  const FieldDescriptor* field = each.fields[depth];
  const Reflection* reflection = message.GetReflection();
  if (!field->is_repeated()) {
    if (!reflection->HasField(message, field)) return;
    return Visit(reflection->GetMessage(message, field), each, depth + 1, index, visit);
  }
  const int size = reflection->FieldSize(message, field);
  for (int i = 0; i < size; ++i) {
    Visit(reflection->GetRepeatedMessage(message, field, i), each, depth + 1,
          (index.empty() ? "" : index + ".") + std::to_string(i), visit);
  }
}

}  // namespace

ColumnPath FindColumn(const Descriptor* type, const std::string& path) {
  ColumnPath column;
  std::istringstream elements(path);
  for (std::string element; std::getline(elements, element, '.');) {
    const int index = TakeIndex(&element, path);
    if (type == nullptr) Refuse(path, "goes on behind a single value", "End the path there.");
    const FieldDescriptor* field = FindField(type, element, Named(path));
    if (index >= 0 && !field->is_repeated()) {
      Refuse(path, element + " is not repeated", "Leave the index out.");
    }
    if (index < 0 && field->is_repeated() && IsMessage(field)) {
      Refuse(path, element + " is repeated",
             "Say which one, such as " + element + "[0], or make a row of each with --each.");
    }
    column.steps.push_back({field, index, ReflectionOf(type)});
    type = IsMessage(field) ? field->message_type() : nullptr;
  }
  if (column.steps.empty() || type != nullptr) {
    Refuse(path, "is no single value", "Name one of its fields.");
  }
  return column;
}

std::vector<std::string> ScalarPaths(const Descriptor* type) {
  std::vector<std::string> paths;
  AddScalarPaths(type, "", &paths);
  return paths;
}

const Message* HolderOf(const Message& message, const ColumnPath& column) {
  const Message* holder = &message;
  for (size_t i = 0; i + 1 < column.steps.size(); ++i) {
    const auto [field, index, reflection] = column.steps[i];
    if (index < 0) {
      holder = &reflection->GetMessage(*holder, field);
    } else if (index < reflection->FieldSize(*holder, field)) {
      holder = &reflection->GetRepeatedMessage(*holder, field, index);
    } else {
      return nullptr;
    }
  }
  return holder;
}

EachPath FindEach(const Descriptor* type, const std::string& path) {
  EachPath each;
  bool repeated = false;
  std::istringstream elements(path);
  for (std::string element; std::getline(elements, element, '.');) {
    const FieldDescriptor* field = FindField(type, element, Named(path));
    if (!IsMessage(field)) {
      Refuse(path, element + " is no message", "Name a repeated message, such as camera.");
    }
    repeated |= field->is_repeated();
    each.fields.push_back(field);
    type = field->message_type();
  }
  if (!repeated) Refuse(path, "is not repeated", "Name a repeated message, such as camera.");
  return each;
}

void ForEachElement(const Message& record, const EachPath& each, const ElementVisitor& visit) {
  Visit(record, each, 0, "", visit);
}

}  // namespace calib
