#include "calib/fields/unknown.h"
#include "calib/fields/value.h"
#include "calib/views/view.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

namespace {

class TextView {
 public:
  explicit TextView(const ViewOptions& options) : options_(options) {}

  void Fields(const Message& message, int indent) {
    std::vector<const FieldDescriptor*> fields;
    message.GetReflection()->ListFields(message, &fields);
    for (const FieldDescriptor* field : fields) {
      const bool is_message = field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE;
      if (field->is_repeated()) {
        is_message ? Messages(message, field, indent) : List(message, field, indent);
      } else if (is_message) {
        SubMessage(message.GetReflection()->GetMessage(message, field), field, indent);
      } else {
        Line(indent, Name(field) + ": " + Value(message, field, -1));
      }
    }
    for (const UnknownField& unknown : OwnUnknownFields(message, "")) {
      Line(indent, "<" + Describe(unknown) + ">");
    }
  }

  const std::string& text() const { return text_; }

 private:
  std::string Name(const FieldDescriptor* field) const { return Colored(field->name(), options_); }

  std::string Value(const Message& message, const FieldDescriptor* field, int index) const {
    return options_.full ? FullValue(message, field, index) : ShortValue(message, field, index);
  }

  void Line(int indent, const std::string& line) {
    text_ += std::string(static_cast<size_t>(indent), ' ') + line + "\n";
  }

  void SubMessage(const Message& message, const FieldDescriptor* field, int indent) {
    Line(indent, Name(field) + " {");
    Fields(message, indent + 2);
    Line(indent, "}");
  }

  void Messages(const Message& message, const FieldDescriptor* field, int indent) {
    const Reflection* reflection = message.GetReflection();
    const int size = reflection->FieldSize(message, field);
    const int shown = ShownElements(size, options_);
    for (int i = 0; i < shown; ++i) {
      SubMessage(reflection->GetRepeatedMessage(message, field, i), field, indent);
    }
    if (shown < size) Line(indent, Name(field) + ": " + FoldedElements(shown, size));
  }

  void List(const Message& message, const FieldDescriptor* field, int indent) {
    const int size = message.GetReflection()->FieldSize(message, field);
    const int shown = ShownElements(size, options_);
    std::vector<std::string> items;
    items.reserve(static_cast<size_t>(shown) + 1);
    for (int i = 0; i < shown; ++i) items.push_back(Value(message, field, i));
    if (shown < size) items.push_back(FoldedElements(shown, size));
    const int column = indent + static_cast<int>(field->name().size()) + 3;
    Line(indent, Name(field) + ": [" + Flow(items, column, options_) + "]");
  }

  const ViewOptions& options_;
  std::string text_;
};

}  // namespace

std::string ViewAsText(const Message& record, const ViewOptions& options) {
  TextView view(options);
  view.Fields(record, 0);
  return view.text();
}

}  // namespace calib
