#include "calib/fields/field_path.h"

#include <cstdlib>
#include <sstream>
#include <vector>

#include "calib/console/closest.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

namespace {

struct Element {
  std::string name;
  int index = -1;
};

Element ParseElement(const std::string& text, const std::string& path) {
  Element element;
  const size_t bracket = text.find('[');
  element.name = text.substr(0, bracket);
  if (bracket == std::string::npos) return element;
  const std::string digits = text.substr(bracket + 1, text.size() - bracket - 2);
  const bool closed = text.back() == ']' && !digits.empty() && digits.size() < 10 &&
                      digits.find_first_not_of("0123456789") == std::string::npos;
  if (!closed) {
    throw Failure("field path '" + path + "': '" + text + "' is no field with an index",
                  "Write it like camera[0].intrinsics.cy; indices count from 0.");
  }
  element.index = std::atoi(digits.c_str());
  return element;
}

const FieldDescriptor* FindField(const Descriptor* type, const std::string& name,
                                 const std::string& path) {
  if (const FieldDescriptor* field = type->FindFieldByName(name)) return field;
  std::vector<std::string> names;
  names.reserve(static_cast<size_t>(type->field_count()));
  for (int i = 0; i < type->field_count(); ++i) names.push_back(type->field(i)->name());
  throw Failure(
      "field path '" + path + "': " + type->name() + " has no field '" + name + "'",
      SuggestClosest(name, names) + "'calib types " + type->name() + "' lists its fields.");
}

void CheckIndex(const Message& message, const FieldDescriptor* field, int index,
                const std::string& path) {
  if (index < 0) return;
  if (!field->is_repeated()) {
    throw Failure("field path '" + path + "': " + field->name() + " is not repeated",
                  "Leave the index out.");
  }
  const int size = message.GetReflection()->FieldSize(message, field);
  if (index >= size) {
    throw NotInRecord("field path '" + path + "': the record has " + std::to_string(size) +
                      (size == 1 ? " element of " : " elements of ") + field->name() +
                      ", so there is no [" + std::to_string(index) + "]");
  }
}

const Message& Descend(const Place& place, const std::string& path) {
  const google::protobuf::Reflection* reflection = place.message->GetReflection();
  const std::string& name = place.field->name();
  if (place.field->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) {
    throw Failure("field path '" + path + "': " + name + " has no fields of its own",
                  "End the path there.");
  }
  if (place.field->is_repeated()) {
    if (place.index < 0) {
      throw Failure("field path '" + path + "': " + name + " is repeated",
                    "Say which one, such as " + name + "[0].");
    }
    return reflection->GetRepeatedMessage(*place.message, place.field, place.index);
  }
  if (!reflection->HasField(*place.message, place.field)) {
    throw NotInRecord("field path '" + path + "': " + name + " is not set in this record");
  }
  return reflection->GetMessage(*place.message, place.field);
}

}  // namespace

std::string PathElement(const FieldDescriptor* field, int index) {
  return field->is_repeated() ? field->name() + "[" + std::to_string(index) + "]" : field->name();
}

std::string JoinPath(const std::string& path, const std::string& element) {
  return path.empty() ? element : path + "." + element;
}

Place FindPlace(const Message& record, const std::string& path) {
  std::istringstream elements(path);
  Place place = {&record, nullptr, -1};
  for (std::string text; std::getline(elements, text, '.');) {
    const Element element = ParseElement(text, path);
    if (place.field != nullptr) place.message = &Descend(place, path);
    place.field = FindField(place.message->GetDescriptor(), element.name, path);
    place.index = element.index;
    CheckIndex(*place.message, place.field, place.index, path);
  }
  if (place.field == nullptr) {
    throw Failure("the field path is empty", "Name a field, such as camera[0].name.");
  }
  return place;
}

}  // namespace calib
