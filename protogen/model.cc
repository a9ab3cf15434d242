#include "protogen/model.h"

#include <google/protobuf/descriptor.pb.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "protogen/schema.h"
#include "protogen/text.h"

namespace protogen {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::FileDescriptor;
using google::protobuf::SourceLocation;

enum WireType { kVarint = 0, kFixed64 = 1, kLengthDelimited = 2, kFixed32 = 5 };

WireType WireTypeOf(Kind kind) {
  switch (kind) {
    case Kind::kDouble:
      return kFixed64;
    case Kind::kFloat:
      return kFixed32;
    case Kind::kInt32:
    case Kind::kInt64:
    case Kind::kBool:
      return kVarint;
    default:
      return kLengthDelimited;
  }
}

Kind KindOf(const FieldDescriptor& field) {
  switch (field.type()) {
    case FieldDescriptor::TYPE_DOUBLE:
      return Kind::kDouble;
    case FieldDescriptor::TYPE_FLOAT:
      return Kind::kFloat;
    case FieldDescriptor::TYPE_INT32:
      return Kind::kInt32;
    case FieldDescriptor::TYPE_INT64:
      return Kind::kInt64;
    case FieldDescriptor::TYPE_BOOL:
      return Kind::kBool;
    case FieldDescriptor::TYPE_STRING:
      return Kind::kString;
    case FieldDescriptor::TYPE_BYTES:
      return Kind::kBytes;
    default:
      return Kind::kMessage;
  }
}

// The comment above a declaration, line by line.
template <typename D>
std::vector<std::string> LeadingComment(const D& descriptor) {
  std::vector<std::string> lines;
  SourceLocation location;
  if (!descriptor.GetSourceLocation(&location)) return lines;
  const std::string& text = location.leading_comments;
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find('\n', start), text.size());
    std::string line = text.substr(start, end - start);
    if (!line.empty() && line[0] == ' ') line.erase(0, 1);
    lines.push_back(line);
    start = end + 1;
  }
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
  return lines;
}

void SetDefault(const FieldDescriptor& descriptor, Field* field) {
  switch (field->kind) {
    case Kind::kDouble:
      field->zero_default = descriptor.default_value_double() == 0 &&
                            !std::signbit(descriptor.default_value_double());
      field->default_value =
          field->zero_default ? "0" : DoubleLiteral(descriptor.default_value_double());
      break;
    case Kind::kFloat:
      field->zero_default =
          descriptor.default_value_float() == 0 && !std::signbit(descriptor.default_value_float());
      field->default_value =
          field->zero_default ? "0" : FloatLiteral(descriptor.default_value_float());
      break;
    case Kind::kInt32:
      field->zero_default = descriptor.default_value_int32() == 0;
      field->default_value = Int32Literal(descriptor.default_value_int32());
      break;
    case Kind::kInt64:
      field->zero_default = descriptor.default_value_int64() == 0;
      field->default_value = Int64Literal(descriptor.default_value_int64());
      break;
    case Kind::kBool:
      field->zero_default = !descriptor.default_value_bool();
      field->default_value = field->zero_default ? "false" : "true";
      break;
    default:
      field->zero_default = false;
  }
}

// "optional float wheel_base = 1 [default = 0.4064];"
std::string Declaration(const FieldDescriptor& descriptor, const Field& field) {
  const char* label = field.repeated ? "repeated" : field.required ? "required" : "optional";
  const std::string type =
      field.kind == Kind::kMessage ? field.message_type : descriptor.type_name();
  google::protobuf::FieldDescriptorProto proto;
  descriptor.CopyTo(&proto);
  const std::string suffix =
      proto.has_default_value() ? " [default = " + proto.default_value() + "]" : "";
  return std::string(label) + " " + type + " " + field.name + " = " + std::to_string(field.number) +
         suffix + ";";
}

Field BuildField(const FieldDescriptor& descriptor) {
  Field field;
  field.name = descriptor.name();
  field.comment = LeadingComment(descriptor);
  field.kind = KindOf(descriptor);
  field.repeated = descriptor.is_repeated();
  field.required = descriptor.is_required();
  field.number = descriptor.number();
  field.index = descriptor.index();
  if (field.kind == Kind::kMessage) {
    field.message_type = descriptor.message_type()->name();
    field.message_class = "::" + Replace(descriptor.message_type()->full_name(), ".", "::");
  }
  SetDefault(descriptor, &field);
  field.declaration = Declaration(descriptor, field);
  return field;
}

// Members stand in declaration order, but so that no padding is needed between them: 4-byte members
// go in pairs, at the place of the first, and what is left alone or smaller stands at the end.
std::vector<const Field*> MemberOrder(const std::vector<Field>& fields) {
  std::vector<const Field*> order, alone;
  const Field* waiting = nullptr;
  ptrdiff_t waiting_place = 0;
  for (const Field& field : fields) {
    if (field.member_size() == 8) {
      order.push_back(&field);
    } else if (field.member_size() < 4) {
      alone.push_back(&field);
    } else if (waiting == nullptr) {
      waiting = &field;
      waiting_place = static_cast<ptrdiff_t>(order.size());
    } else {
      order.insert(order.begin() + waiting_place, {waiting, &field});
      waiting = nullptr;
    }
  }
  if (waiting != nullptr) order.push_back(waiting);
  order.insert(order.end(), alone.begin(), alone.end());
  return order;
}

template <typename Predicate>
std::vector<Group> GroupsOfEight(const std::vector<Field>& fields, Predicate belongs) {
  std::vector<Group> groups((fields.size() + 7) / 8);
  for (const Field& field : fields) {
    if (!belongs(field)) continue;
    groups[field.index / 8].mask |= field.bit();
    groups[field.index / 8].fields.push_back(&field);
  }
  groups.erase(std::remove_if(groups.begin(), groups.end(),
                              [](const Group& group) { return group.mask == 0; }),
               groups.end());
  return groups;
}

std::vector<Group> Runs(const std::vector<const Field*>& wire_order) {
  std::vector<Group> runs;
  const Field* before = nullptr;
  for (const Field* field : wire_order) {
    if (field->repeated || field->number >= 16 ||
        (field->kind != Kind::kDouble && field->kind != Kind::kFloat)) {
      before = nullptr;
      continue;
    }
    if (before == nullptr || before->kind != field->kind || before->required != field->required ||
        before->number + 1 != field->number) {
      runs.emplace_back();
    }
    runs.back().mask |= field->bit();
    runs.back().fields.push_back(field);
    before = field;
  }
  runs.erase(std::remove_if(runs.begin(), runs.end(),
                            [](const Group& run) { return run.fields.size() < 3; }),
             runs.end());
  return runs;
}

// `earlier` holds the messages declared before, which are all that a field can refer to. The
// message is built in place, since it keeps pointers to its own fields.
void BuildMessage(const Descriptor& descriptor, const std::vector<Message>& earlier,
                  Message* message) {
  message->name = descriptor.name();
  message->comment = LeadingComment(descriptor);
  message->index = descriptor.index();
  for (int i = 0; i < descriptor.field_count(); ++i)
    message->fields.push_back(BuildField(*descriptor.field(i)));

  int highest_number = 0;
  message->has_texts = false;
  message->is_element = false;
  for (const Field& field : message->fields) {
    message->wire_order.push_back(&field);
    if (field.repeated) message->repeated.push_back(&field);
    if (field.required) message->required.push_back(&field);
    if (field.is_sub_message()) message->sub_messages.push_back(&field);
    if (field.is_text()) message->has_texts = true;
    if (field.kind == Kind::kMessage &&
        earlier[descriptor.field(field.index)->message_type()->index()].reaches_required) {
      message->reaching_required.push_back(&field);
    }
    highest_number = std::max(highest_number, field.number);
  }
  std::sort(message->wire_order.begin(), message->wire_order.end(),
            [](const Field* a, const Field* b) { return a->number < b->number; });
  message->runs = Runs(message->wire_order);
  message->member_order = MemberOrder(message->fields);
  message->singular_groups =
      GroupsOfEight(message->fields, [](const Field& field) { return !field.repeated; });
  message->optional_groups = GroupsOfEight(
      message->fields, [](const Field& field) { return !field.repeated && !field.required; });
  message->reaches_required = !message->required.empty() || !message->reaching_required.empty();
  message->tags_end = static_cast<uint32_t>(highest_number + 1) << 3;
}

}  // namespace

uint32_t Field::tag() const { return static_cast<uint32_t>(number) << 3 | WireTypeOf(kind); }
uint32_t Field::packed_tag() const { return static_cast<uint32_t>(number) << 3 | kLengthDelimited; }
int Field::tag_size() const { return number < 16 ? 1 : 2; }

int Field::fixed_size() const {
  switch (kind) {
    case Kind::kDouble:
      return 8;
    case Kind::kFloat:
      return 4;
    case Kind::kBool:
      return 1;
    default:
      return 0;
  }
}

int Field::member_size() const {
  if (repeated) return 8;  // a container, aligned like a pointer
  switch (kind) {
    case Kind::kFloat:
    case Kind::kInt32:
      return 4;
    case Kind::kBool:
      return 1;
    default:
      return 8;
  }
}

uint32_t Message::required_mask() const {
  uint32_t mask = 0;
  for (const Field* field : required) mask |= field->bit();
  return mask;
}

File BuildModel(const FileDescriptor& descriptor) {
  File file;
  file.name = descriptor.name();
  file.base = file.name.substr(0, file.name.rfind(".proto"));
  file.identifier = FileIdentifier(file.name);
  const std::string& package = descriptor.package();
  for (size_t start = 0; start <= package.size();) {
    const size_t end = std::min(package.find('.', start), package.size());
    file.namespaces.push_back(package.substr(start, end - start));
    start = end + 1;
  }
  google::protobuf::FileDescriptorProto proto;
  descriptor.CopyTo(&proto);
  proto.SerializeToString(&file.serialized);

  file.messages.resize(descriptor.message_type_count());
  file.field_count = 0;
  for (int i = 0; i < descriptor.message_type_count(); ++i) {
    Message& message = file.messages[i];
    BuildMessage(*descriptor.message_type(i), file.messages, &message);
    for (const Field* field : message.repeated) {
      if (field->kind != Kind::kMessage) continue;
      const Descriptor& type = *descriptor.message_type(i)->field(field->index)->message_type();
      file.messages[type.index()].is_element = true;
    }
    file.field_count += static_cast<int>(message.fields.size());
  }
  return file;
}

}  // namespace protogen
