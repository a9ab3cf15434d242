// Merging, copying and the check for required fields.
#include "protogen/families.h"

namespace protogen {
namespace {

const char kMethods[] = R"(
void $class$::MergeFrom(const ::google::protobuf::Message& from) {
  if (&from == this) MergeFromFail(__LINE__);
  const $class$* source = dynamic_cast<const $class$*>(&from);
  if (source == nullptr) {
    ::google::protobuf::internal::ReflectionOps::Merge(from, this);
  } else {
    MergeFrom(*source);
  }
}

void $class$::MergeFrom(const $class$& from) {
  if (&from == this) MergeFromFail(__LINE__);
$merges$  if (from._internal_metadata_.have_unknown_fields()) {
    mutable_unknown_fields()->MergeFrom(from.unknown_fields());
  }
}

void $class$::CopyFrom(const ::google::protobuf::Message& from) {
  if (&from == this) return;
  Clear();
  MergeFrom(from);
}

void $class$::CopyFrom(const $class$& from) {
  if (&from == this) return;
  Clear();
  MergeFrom(from);
}

bool $class$::IsInitialized() const {
$checks$  return true;
}
)";

std::string MergeGroup(const Group& group, const RenderedMessage& rendered) {
  std::string merges;
  for (const Field* field : group.fields) merges += rendered.of(field).merge;
  const uint32_t all_eight = 0xFFu << (group.fields.front()->index / 8 * 8);
  return "if (from._has_bits_[0] & " + Hex(all_eight) + ") {\n" + Indent(merges, 2) + "}\n";
}

std::string InitializationChecks(const Message& message) {
  std::string checks;
  if (!message.required.empty()) {
    checks += Fill("if ((_has_bits_[0] & $mask$) != $mask$) return false;\n",
                   {{"mask", Hex(message.required_mask())}});
  }
  for (const Field* field : message.reaching) {
    checks +=
        Fill(field->repeated ? R"(
for (int i = $name$_size(); --i >= 0;) {
  if (!$name$(i).IsInitialized()) return false;
}
)"
                             : "if (has_$name$() && !$name$().IsInitialized()) return false;\n",
             {{"name", field->name}});
  }
  return checks;
}

}  // namespace

std::string RenderMerging(const RenderedMessage& rendered) {
  const Message& message = *rendered.message;
  std::string merges;
  for (const Field* field : message.repeated) merges += rendered.of(field).merge;
  for (const Group& group : message.singular_groups) merges += MergeGroup(group, rendered);
  return Fill(kMethods, {{"class", message.name},
                         {"merges", Indent(merges, 2)},
                         {"checks", Indent(InitializationChecks(message), 2)}});
}

}  // namespace protogen
