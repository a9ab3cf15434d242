#include "calib/fields/text_fields.h"

#include <algorithm>
#include <vector>

#include "calib/fields/field_path.h"
#include "calib/fields/value.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

namespace {

bool CanHoldText(const Descriptor* type, std::vector<const Descriptor*>* seen) {
  if (std::find(seen->begin(), seen->end(), type) != seen->end()) return false;
  seen->push_back(type);
  for (int i = 0; i < type->field_count(); ++i) {
    const FieldDescriptor* field = type->field(i);
    if (field->cpp_type() == FieldDescriptor::CPPTYPE_STRING) return true;
    const Descriptor* inner = field->message_type();
    if (inner != nullptr && CanHoldText(inner, seen)) return true;
  }
  return false;
}

bool CanHoldText(const FieldDescriptor* field) {
  if (field->message_type() == nullptr) {
    return field->cpp_type() == FieldDescriptor::CPPTYPE_STRING;
  }
  std::vector<const Descriptor*> seen;
  return CanHoldText(field->message_type(), &seen);
}

class Walker {
 public:
  explicit Walker(const TextVisitor& visit) : visit_(visit) {}

  void Walk(const Message& message) {
    std::vector<const FieldDescriptor*> fields;
    message.GetReflection()->ListFields(message, &fields);
    for (const FieldDescriptor* field : fields) {
      if (!CanHoldText(field)) continue;
      const int size =
          field->is_repeated() ? message.GetReflection()->FieldSize(message, field) : 1;
      for (int i = 0; i < size; ++i) {
        steps_.push_back({field, field->is_repeated() ? i : -1});
        Enter(message, steps_.back());
        steps_.pop_back();
      }
    }
  }

 private:
  void Enter(const Message& message, const Step& step) {
    const Reflection* reflection = message.GetReflection();
    if (step.field->message_type() == nullptr) {
      std::string scratch;
      return visit_(step.field, TextIn(message, step.field, step.index, &scratch),
                    [this] { return Path(); });
    }
    Walk(step.index < 0 ? reflection->GetMessage(message, step.field)
                        : reflection->GetRepeatedMessage(message, step.field, step.index));
  }

  std::string Path() const {
    std::string path;
    for (const Step& step : steps_) path = JoinPath(path, PathElement(step.field, step.index));
    return path;
  }

  const TextVisitor& visit_;
  std::vector<Step> steps_;
};

}  // namespace

void ForEachText(const Message& record, const TextVisitor& visit) { Walker(visit).Walk(record); }

}  // namespace calib
