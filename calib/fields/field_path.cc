#include "calib/fields/field_path.h"

#include <cstdlib>

#include "calib/console/closest.h"
#include "calib/fields/value.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

namespace {

// One element of a path, as it is written.
struct Element {
  enum class Selector { kNone, kIndex, kAll, kValue };

  std::string text;
  std::string name;
  Selector selector = Selector::kNone;
  int index = -1;
  std::string key, value;  // of [key=value]
};

// What messages call a path.
std::string Named(const std::string& path) { return "field path '" + path + "'"; }

[[noreturn]] void Fail(const std::string& path, const std::string& what,
                       const std::string& remedy) {
  throw Failure(Named(path) + ": " + what, remedy);
}

// What stands in the brackets of `element`.
void ParseSelector(const std::string& selector, const std::string& path, Element* element) {
  const size_t equals = selector.find('=');
  const bool digits = !selector.empty() && selector.size() < 10 &&
                      selector.find_first_not_of("0123456789") == std::string::npos;
  if (selector == "*") {
    element->selector = Element::Selector::kAll;
  } else if (digits) {
    element->selector = Element::Selector::kIndex;
    element->index = std::atoi(selector.c_str());
  } else if (equals != std::string::npos && equals > 0) {
    element->selector = Element::Selector::kValue;
    element->key = selector.substr(0, equals);
    element->value = selector.substr(equals + 1);
    std::string& value = element->value;
    if (value.size() > 1 && value.front() == '"') value = value.substr(1, value.size() - 2);
  } else {
    Fail(path, "'" + element->text + "' is no field with an index",
         "Write it like camera[0].intrinsics.cy, camera[*] or camera[name=cam0]; indices count "
         "from 0.");
  }
}

// Where a selector that begins behind `begin` ends: at its bracket, which may stand in quotes
// before.
size_t EndOfSelector(const std::string& path, size_t begin) {
  const size_t quote = path.find_first_of("\"]", begin);
  if (quote == std::string::npos || path[quote] == ']') return quote;
  return path.find("\"]", quote + 1) + 1;  // npos + 1, if there is none, is 0
}

std::vector<Element> ParsePath(const std::string& path) {
  if (path.empty()) {
    throw Failure("the field path is empty", "Name a field, such as camera[0].name.");
  }
  std::vector<Element> elements;
  for (size_t begin = 0; begin <= path.size();) {
    Element element;
    size_t end = std::min(path.find_first_of(".[", begin), path.size());
    element.name = path.substr(begin, end - begin);
    if (end < path.size() && path[end] == '[') {
      const size_t bracket = EndOfSelector(path, end + 1);
      const bool closed = bracket != std::string::npos && bracket > 0 &&
                          (bracket + 1 == path.size() || path[bracket + 1] == '.');
      const size_t behind = closed ? bracket + 1 : path.size();
      element.text = path.substr(begin, behind - begin);
      ParseSelector(closed ? path.substr(end + 1, bracket - end - 1) : "", path, &element);
      end = behind;
    }
    elements.push_back(element);
    begin = end + 1;
  }
  return elements;
}

bool IsMessage(const FieldDescriptor* field) {
  return field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE;
}

bool AreSameNumber(const std::string& a, const std::string& b) {
  char *a_end = nullptr, *b_end = nullptr;
  const double a_value = std::strtod(a.c_str(), &a_end), b_value = std::strtod(b.c_str(), &b_end);
  return a_end != a.c_str() && *a_end == '\0' && b_end != b.c_str() && *b_end == '\0' &&
         a_value == b_value;
}

bool Holds(const Message& message, const FieldDescriptor* field, const std::string& value) {
  if (!message.GetReflection()->HasField(message, field)) return false;
  if (field->cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
    return RawString(message, field, -1) == value;
  }
  const std::string held = FullValue(message, field, -1);
  return held == value || AreSameNumber(held, value);
}

// Follows a path; see ForEachPlace().
class Follower {
 public:
  Follower(const std::string& path, Unset unset, const std::function<void(const Place&)>& found,
           const std::function<void(const std::string&)>& missing)
      : path_(path), elements_(ParsePath(path)), unset_(unset), found_(found), missing_(missing) {}

  void Follow(const Message& message, size_t at) {
    const Element& element = elements_[at];
    const FieldDescriptor* field = FindField(message.GetDescriptor(), element.name, Named(path_));
    CheckShape(element, field, at + 1 == elements_.size());
    if (element.selector == Element::Selector::kNone) return Enter(message, field, -1, at);
    bool any = false;
    const int size = message.GetReflection()->FieldSize(message, field);
    for (int i = 0; i < size; ++i) {
      if (!IsSelected(message, field, i, element)) continue;
      any = true;
      Enter(message, field, i, at);
    }
    if (!any) Miss(WhyNone(field, element, size));
  }

 private:
  // What is wrong with a path for every record.
  void CheckShape(const Element& element, const FieldDescriptor* field, bool last) const {
    const bool selects = element.selector != Element::Selector::kNone;
    if (selects && !field->is_repeated()) {
      Fail(path_, field->name() + " is not repeated", "Leave the index out.");
    }
    if (!last && !IsMessage(field)) {
      Fail(path_, field->name() + " has no fields of its own", "End the path there.");
    }
    if (!last && field->is_repeated() && !selects) {
      Fail(path_, field->name() + " is repeated",
           "Say which one, such as " + field->name() + "[0].");
    }
    if (element.selector != Element::Selector::kValue) return;
    if (!IsMessage(field)) {
      Fail(path_, field->name() + " has no fields of its own", "Select an element by its index.");
    }
    const FieldDescriptor* key = FindField(field->message_type(), element.key, Named(path_));
    if (IsMessage(key) || key->is_repeated()) {
      Fail(path_, element.key + " is no single value", "Select elements by a number or a text.");
    }
  }

  static bool IsSelected(const Message& message, const FieldDescriptor* field, int index,
                         const Element& element) {
    if (element.selector == Element::Selector::kIndex) return index == element.index;
    if (element.selector == Element::Selector::kAll) return true;
    const Message& inner = message.GetReflection()->GetRepeatedMessage(message, field, index);
    return Holds(inner, field->message_type()->FindFieldByName(element.key), element.value);
  }

  static std::string WhyNone(const FieldDescriptor* field, const Element& element, int size) {
    if (element.selector == Element::Selector::kValue) {
      return "the record has no " + field->name() + " whose " + element.key + " is '" +
             element.value + "'";
    }
    return "the record has " + std::to_string(size) +
           (size == 1 ? " element of " : " elements of ") + field->name() +
           (element.selector == Element::Selector::kAll
                ? ""
                : ", so there is no [" + std::to_string(element.index) + "]");
  }

  // `index` is -1 for a field as a whole.
  void Enter(const Message& message, const FieldDescriptor* field, int index, size_t at) {
    const std::string before = spelled_;
    spelled_ = JoinPath(spelled_, index < 0 ? field->name() : PathElement(field, index));
    steps_.push_back({field, index});
    const google::protobuf::Reflection* reflection = message.GetReflection();
    if (at + 1 == elements_.size()) {
      found_({&message, field, index, spelled_, steps_});
    } else if (index >= 0) {
      Follow(reflection->GetRepeatedMessage(message, field, index), at + 1);
    } else if (reflection->HasField(message, field) || unset_ == Unset::kEmpty) {
      Follow(reflection->GetMessage(message, field), at + 1);
    } else {
      CheckRest(field->message_type(), at + 1);
      Miss((before.empty() ? "" : before + ".") + field->name() + " is not set in this record");
    }
    steps_.pop_back();
    spelled_ = before;
  }

  // A path that is none is told as such even where the record ends before it.
  void CheckRest(const Descriptor* type, size_t at) const {
    for (; at < elements_.size(); ++at) {
      const FieldDescriptor* field = FindField(type, elements_[at].name, Named(path_));
      CheckShape(elements_[at], field, at + 1 == elements_.size());
      type = field->message_type();
    }
  }

  void Miss(const std::string& why) const { missing_("field path '" + path_ + "': " + why); }

  const std::string& path_;
  const std::vector<Element> elements_;
  const Unset unset_;
  const std::function<void(const Place&)>& found_;
  const std::function<void(const std::string&)>& missing_;
  std::string spelled_;
  std::vector<Step> steps_;
};

}  // namespace

std::string PathElement(const FieldDescriptor* field, int index) {
  return field->is_repeated() ? field->name() + "[" + std::to_string(index) + "]" : field->name();
}

std::string JoinPath(const std::string& path, const std::string& element) {
  return path.empty() ? element : path + "." + element;
}

void ForEachPlace(const Message& record, const std::string& path, Unset unset,
                  const std::function<void(const Place& place)>& found,
                  const std::function<void(const std::string& why)>& missing) {
  Follower(path, unset, found, missing).Follow(record, 0);
}

const FieldDescriptor* FindField(const Descriptor* type, const std::string& name,
                                 const std::string& where) {
  if (const FieldDescriptor* field = type->FindFieldByName(name)) return field;
  std::vector<std::string> names;
  names.reserve(static_cast<size_t>(type->field_count()));
  for (int i = 0; i < type->field_count(); ++i) names.push_back(type->field(i)->name());
  throw Failure(
      where + ": " + type->name() + " has no field '" + name + "'",
      SuggestClosest(name, names) + "'calib types " + type->name() + "' lists its fields.");
}

bool IsSet(const Place& place) {
  if (place.index >= 0) return true;
  const google::protobuf::Reflection* reflection = place.message->GetReflection();
  return place.field->is_repeated() ? reflection->FieldSize(*place.message, place.field) > 0
                                    : reflection->HasField(*place.message, place.field);
}

Message* MutableHolder(const Place& place, Message* record) {
  for (size_t i = 0; i + 1 < place.steps.size(); ++i) {
    const Step& step = place.steps[i];
    const google::protobuf::Reflection* reflection = record->GetReflection();
    record = step.index < 0 ? reflection->MutableMessage(record, step.field)
                            : reflection->MutableRepeatedMessage(record, step.field, step.index);
  }
  return record;
}

}  // namespace calib
