// A value is read into a message of its own, in which the field alone is set; from there the
// run-time merges it into the record, whatever its type.
#include "calib/fields/assignment.h"

#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/text_format.h>
#include <google/protobuf/unknown_field_set.h>

#include <cmath>
#include <memory>

#include "calib/console/failure.h"
#include "calib/console/printable.h"
#include "calib/fields/compare.h"
#include "calib/fields/field_path.h"
#include "calib/fields/value.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

namespace {

class FirstError : public google::protobuf::io::ErrorCollector {
 public:
  void AddError(int, int, const std::string& message) override {
    if (message_.empty()) message_ = message;
  }
  void AddWarning(int, int, const std::string&) override {}

  const std::string& message() const { return message_; }

 private:
  std::string message_;
};

// Values of an assignment for a field, which is read by its type.
class ValueReader {
 public:
  ValueReader(const Assignment& assignment, const Place& place)
      : assignment_(assignment),
        field_(place.field),
        whole_list_(place.field->is_repeated() && place.index < 0),
        parsed_(place.message->New()) {}

  std::unique_ptr<Message> Read() {
    const std::string& value = assignment_.value;
    if (whole_list_ && !value.empty() && value.front() == '[') {
      ReadText(field_->name() + ": " + value);
    } else if (whole_list_ && assignment_.kind == Assignment::Kind::kSet) {
      Fail("a list such as [" + Example() + "]", "Write " + field_->name() + "[0]=" + Example() +
                                                     " for an element, and " + field_->name() +
                                                     "+=" + Example() + " to append one.");
    } else {
      ReadOne(value);
    }
    return std::move(parsed_);
  }

 private:
  [[noreturn]] void Fail(const std::string& expected, const std::string& remedy) const {
    throw Failure(
        "'" + assignment_.text + "': is '" + assignment_.value + "', expected " + expected, remedy);
  }

  std::string TypeName() const {
    return field_->message_type() == nullptr ? field_->type_name() : field_->message_type()->name();
  }

  std::string Example() const { return field_->message_type() == nullptr ? "0.1" : "{...}"; }

  void ReadOne(const std::string& value) {
    const Reflection* reflection = parsed_->GetReflection();
    switch (field_->cpp_type()) {
      case FieldDescriptor::CPPTYPE_STRING:
        if (field_->type() == FieldDescriptor::TYPE_STRING && !IsUtf8(value)) {
          Fail("text in UTF-8", "JSON could not hold it.");
        }
        field_->is_repeated() ? reflection->AddString(parsed_.get(), field_, value)
                              : reflection->SetString(parsed_.get(), field_, value);
        break;
      case FieldDescriptor::CPPTYPE_MESSAGE:
        ReadText(field_->name() + (value.front() == '{' ? " " + value : " {" + value + "}"));
        break;
      default:
        ReadNumber(value);
    }
  }

  void ReadNumber(const std::string& value) {
    // What follows a 0 would be read as octal.
    const size_t digit = value.find_first_not_of('-');
    const bool octal = digit != std::string::npos && value[digit] == '0' &&
                       digit + 1 < value.size() && std::isdigit(value[digit + 1]);
    FirstError error;
    google::protobuf::TextFormat::Parser parser;
    parser.RecordErrorsTo(&error);
    const bool good =
        !octal && parser.ParseFieldValueFromString(value, field_, parsed_.get()) && IsExact(value);
    if (!good) Fail("a value of type " + TypeName(), "");
  }

  // Numbers that are too large become infinite in silence.
  bool IsExact(const std::string& value) const {
    const std::string held = FullValue(*parsed_, field_, field_->is_repeated() ? 0 : -1);
    const bool infinite = held.find("inf") != std::string::npos;
    return !infinite || value.find_first_of("iI") != std::string::npos;
  }

  // Reads the field with its value, and nothing else behind it.
  void ReadText(const std::string& text) {
    FirstError error;
    google::protobuf::TextFormat::Parser parser;
    parser.RecordErrorsTo(&error);
    parser.AllowPartialMessage(true);
    const bool good = parser.ParseFromString(text, parsed_.get());
    std::vector<const FieldDescriptor*> fields;
    parsed_->GetReflection()->ListFields(*parsed_, &fields);
    const bool one = whole_list_ || !field_->is_repeated() ||
                     parsed_->GetReflection()->FieldSize(*parsed_, field_) == 1;
    if (good && one && (fields.empty() || (fields.size() == 1 && fields[0] == field_))) return;
    Fail((whole_list_ ? "a list of " : "a ") + TypeName() + " in the text format",
         good ? "" : error.message());
  }

  const Assignment& assignment_;
  const FieldDescriptor* field_;
  const bool whole_list_;
  std::unique_ptr<Message> parsed_;
};

void SetElement(const Message& value, const Place& place, Message* holder) {
  const Reflection* reflection = holder->GetReflection();
  holder->MergeFrom(value);  // behind the others
  const int last = reflection->FieldSize(*holder, place.field) - 1;
  reflection->SwapElements(holder, place.field, place.index, last);
  reflection->RemoveLast(holder, place.field);
}

// Those behind it move up.
void RemoveElement(const Place& place, Message* holder) {
  const Reflection* reflection = holder->GetReflection();
  const int last = reflection->FieldSize(*holder, place.field) - 1;
  for (int i = place.index; i < last; ++i) {
    reflection->SwapElements(holder, place.field, i, i + 1);
  }
  reflection->RemoveLast(holder, place.field);
}

void Clear(const Place& place, Message* record) {
  if (place.index < 0 && !IsSet(place)) return;  // nor are the messages around it to be set
  Message* holder = MutableHolder(place, record);
  place.index < 0 ? holder->GetReflection()->ClearField(holder, place.field)
                  : RemoveElement(place, holder);
}

// The places of the path; those that are missing are a Failure.
std::vector<Place> PlacesOf(const Assignment& assignment, const Message& record) {
  std::vector<Place> places;
  ForEachPlace(
      record, assignment.path, Unset::kEmpty, [&](const Place& place) { places.push_back(place); },
      [&](const std::string& why) {
        throw Failure(why, "PATH+=VALUE appends to a repeated field.");
      });
  return places;
}

bool AreEqual(const Message& value, const Place& place) {
  const std::unique_ptr<Message> held(place.message->New());
  const Reflection* reflection = held->GetReflection();
  held->CopyFrom(*place.message);
  std::vector<const FieldDescriptor*> fields;
  reflection->ListFields(*held, &fields);
  for (const FieldDescriptor* field : fields) {
    if (field != place.field) reflection->ClearField(held.get(), field);
  }
  reflection->MutableUnknownFields(held.get())->Clear();
  if (place.index >= 0) {
    reflection->SwapElements(held.get(), place.field, 0, place.index);
    while (reflection->FieldSize(*held, place.field) > 1) {
      reflection->RemoveLast(held.get(), place.field);
    }
  }
  return Compare(*held, value, Tolerance()).empty();
}

// The value that is there, or that was read, as a finding shows it.
std::string Shown(const Message& message, const FieldDescriptor* field, int index) {
  if (!field->is_repeated() || index >= 0) return ShortValue(message, field, index);
  const int size = message.GetReflection()->FieldSize(message, field);
  std::string list;
  constexpr int kMost = 16;
  for (int i = 0; i < size && i < kMost; ++i) {
    list += (i == 0 ? "" : ", ") + ShortValue(message, field, i);
  }
  if (size > kMost) list += ", <" + std::to_string(size) + " in all>";
  return "[" + list + "]";
}

}  // namespace

Assignment ParseAssignment(const std::string& text) {
  size_t equals = 0;
  bool inside = false, quoted = false;  // of the brackets of a path, and of quotes in these
  for (; equals < text.size() && (inside || text[equals] != '='); ++equals) {
    const char c = text[equals];
    if (inside && c == '"') quoted = !quoted;
    if (!quoted && (c == '[' || c == ']')) inside = c == '[';
  }
  if (equals == text.size() || equals == 0) {
    throw Failure("'" + text + "': is no PATH=VALUE",
                  "Write it like camera[0].name=left, k+=0.1 or camera[0].serial= (nothing).");
  }
  Assignment assignment = {text, text.substr(0, equals), Assignment::Kind::kSet,
                           text.substr(equals + 1)};
  if (assignment.path.back() == '+') {
    assignment.path.pop_back();
    assignment.kind = Assignment::Kind::kAppend;
  } else if (assignment.value.empty()) {
    assignment.kind = Assignment::Kind::kClear;
  }
  return assignment;
}

void Apply(const Assignment& assignment, Message* record) {
  const std::vector<Place> places = PlacesOf(assignment, *record);
  // The last first: an element that is taken out moves those behind it.
  for (size_t i = places.size(); i-- > 0;) {
    const Place& place = places[i];
    if (assignment.kind == Assignment::Kind::kClear) {
      Clear(place, record);
      continue;
    }
    const bool append = assignment.kind == Assignment::Kind::kAppend;
    if (append && (!place.field->is_repeated() || place.index >= 0)) {
      throw Failure("'" + assignment.text + "': " + place.path + " is no repeated field",
                    "Write = in place of +=.");
    }
    const std::unique_ptr<Message> value = ValueReader(assignment, place).Read();
    Message* holder = MutableHolder(place, record);
    if (place.index >= 0) {
      SetElement(*value, place, holder);
      continue;
    }
    if (!append) holder->GetReflection()->ClearField(holder, place.field);
    holder->MergeFrom(*value);
  }
}

std::vector<Unmet> FindUnmet(const Assignment& assignment, const Message& record) {
  std::vector<Unmet> unmet;
  const bool clear = assignment.kind == Assignment::Kind::kClear;
  const auto check = [&](const Place& place) {
    const std::string held = IsSet(place) ? Shown(*place.message, place.field, place.index) : "";
    if (clear) {
      if (IsSet(place)) unmet.push_back({place.path, held, ""});
      return;
    }
    const std::unique_ptr<Message> value = ValueReader(assignment, place).Read();
    if (IsSet(place) && AreEqual(*value, place)) return;
    unmet.push_back({place.path, held, Shown(*value, place.field, place.index < 0 ? -1 : 0)});
  };
  ForEachPlace(record, assignment.path, Unset::kEmpty, check, [&](const std::string&) {
    if (!clear) unmet.push_back({assignment.path, "", "'" + assignment.value + "'"});
  });
  return unmet;
}

}  // namespace calib
