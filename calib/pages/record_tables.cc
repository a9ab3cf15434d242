#include "calib/pages/record_tables.h"

#include <vector>

#include "calib/charts/svg.h"
#include "calib/fields/field_path.h"
#include "calib/fields/unknown.h"
#include "calib/fields/value.h"
#include "calib/pages/html.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

namespace {

constexpr int kMostInCell = 64;         // numbers of a list
constexpr size_t kMostOfTable = 60000;  // bytes

bool IsMessage(const FieldDescriptor* field) {
  return field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE;
}

// Whether all of a type's fields are single values, so that its elements are rows of one table.
bool IsFlat(const Descriptor* type) {
  for (int i = 0; i < type->field_count(); ++i) {
    if (IsMessage(type->field(i)) || type->field(i)->is_repeated()) return false;
  }
  return true;
}

std::string ValueText(const Message& message, const FieldDescriptor* field) {
  if (!field->is_repeated()) return ShortValue(message, field, -1);
  const int size = message.GetReflection()->FieldSize(message, field);
  std::string text;
  for (int i = 0; i < size && i < kMostInCell; ++i) {
    text += (i == 0 ? "" : ", ") + ShortValue(message, field, i);
  }
  if (size > kMostInCell) text += ", ... " + std::to_string(size) + " in all";
  return text;
}

class Tables {
 public:
  Tables(const FieldComment& comment, size_t most_bytes)
      : comment_(comment), most_bytes_(most_bytes) {}

  void Add(const Message& message, const std::string& path) {
    if (html_.size() > most_bytes_) {
      ++left_out_;
      return;
    }
    std::vector<const FieldDescriptor*> fields;
    message.GetReflection()->ListFields(message, &fields);
    AddValues(message, fields, path);
    for (const FieldDescriptor* field : fields) {
      if (!IsMessage(field)) continue;
      if (field->is_repeated()) {
        AddList(message, field, path);
      } else {
        Add(message.GetReflection()->GetMessage(message, field), JoinPath(path, field->name()));
      }
    }
  }

  std::string html() const {
    if (left_out_ == 0) return html_;
    return html_ + Paragraph(std::to_string(left_out_) +
                             " more tables are left out: calib show --full prints all.");
  }

 private:
  void AddValues(const Message& message, const std::vector<const FieldDescriptor*>& fields,
                 const std::string& path) {
    std::vector<std::vector<std::string>> rows;
    for (const FieldDescriptor* field : fields) {
      if (IsMessage(field)) continue;
      rows.push_back({field->name(), ValueText(message, field), comment_(field)});
    }
    for (const UnknownField& unknown : OwnUnknownFields(message, "")) {
      rows.push_back({Describe(unknown), "", "not known to this schema"});
    }
    if (rows.empty()) return;
    html_ += TableOf(path.empty() ? message.GetDescriptor()->name() : path,
                     {"field", "value", "what it is"}, rows, kMostOfTable);
  }

  void AddList(const Message& message, const FieldDescriptor* field, const std::string& path) {
    const Reflection* reflection = message.GetReflection();
    const int size = reflection->FieldSize(message, field);
    const Descriptor* type = field->message_type();
    if (!IsFlat(type)) {
      for (int i = 0; i < size; ++i) {
        Add(reflection->GetRepeatedMessage(message, field, i),
            JoinPath(path, PathElement(field, i)));
      }
      return;
    }
    std::vector<std::string> columns = {"index"};
    for (int i = 0; i < type->field_count(); ++i) columns.push_back(type->field(i)->name());
    std::vector<std::vector<std::string>> rows(static_cast<size_t>(size));
    for (int i = 0; i < size; ++i) {
      const Message& element = reflection->GetRepeatedMessage(message, field, i);
      std::vector<std::string>& row = rows[static_cast<size_t>(i)];
      // No more rows are shown, but they are counted.
      if (static_cast<size_t>(i) > kMostOfTable / 10) continue;
      row.push_back(std::to_string(i));
      for (int j = 0; j < type->field_count(); ++j) {
        const bool set = element.GetReflection()->HasField(element, type->field(j));
        row.push_back(set ? ShortValue(element, type->field(j), -1) : "");
      }
    }
    const std::string name = JoinPath(path, field->name());
    html_ += Tag("details", "",
                 Tag("summary", "", XmlText(name + ": " + std::to_string(size))) +
                     TableOf(name, columns, rows, kMostOfTable));
  }

  const FieldComment& comment_;
  const size_t most_bytes_;
  std::string html_;
  size_t left_out_ = 0;
};

}  // namespace

std::string RecordTables(const Message& record, const FieldComment& comment, size_t most_bytes) {
  Tables tables(comment, most_bytes);
  tables.Add(record, "");
  return tables.html();
}

}  // namespace calib
