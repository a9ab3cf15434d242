#include "calib/views/record_text.h"

#include "calib/console/terminal.h"
#include "calib/fields/unknown.h"
#include "calib/fields/value.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

namespace {

constexpr int kMostUnfolded = 16;
constexpr int kShownOfFolded = 4;

// How many of `size` elements are shown.
int ShownElements(int size, const TextOptions& options) {
  return options.full || size <= kMostUnfolded ? size : kShownOfFolded;
}

// What stands for the elements that are not shown: "<12 more, 16 in all>".
std::string FoldedElements(int shown, int size) {
  return "<" + std::to_string(size - shown) + " more, " + std::to_string(size) + " in all>";
}

// Items with commas between them, broken so that they fit; `column` is where the first one starts.
std::string Flow(const std::vector<std::string>& items, int column, const TextOptions& options) {
  const size_t margin = static_cast<size_t>(column);
  const size_t room = static_cast<size_t>(options.width) - 1;  // a comma or a bracket follows
  std::string flow;
  size_t used = margin;
  for (size_t i = 0; i < items.size(); ++i) {
    if (i > 0) {
      const bool fits = used + 2 + items[i].size() <= room;
      flow += fits ? ", " : ",\n" + std::string(margin, ' ');
      used = fits ? used + 2 : margin;
    }
    flow += items[i];
    used += items[i].size();
  }
  return flow;
}

class TextView {
 public:
  explicit TextView(const TextOptions& options) : options_(options) {}

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
  std::string Name(const FieldDescriptor* field) const {
    return Painted(field->name(), Color::kCyan, options_.color);
  }

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

  const TextOptions& options_;
  std::string text_;
};

}  // namespace

std::string TextOf(const Message& record, const TextOptions& options) {
  TextView view(options);
  view.Fields(record, 0);
  return view.text();
}

}  // namespace calib
