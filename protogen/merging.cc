// Merging, copying and the check for required fields.
#include "protogen/families.h"

namespace protogen {
namespace {

const char kMethods[] = R"(
void $class$::MergeFrom(const ::google::protobuf::Message& from) {
  if (&from == this) MergeFromFail(__LINE__);
  const $class$* source = Cast<$class$>(from);
  if (source == nullptr) {
    ::google::protobuf::internal::ReflectionOps::Merge(from, this);
  } else {
    MergeFrom(*source);
  }
}

void $class$::MergeFrom(const $class$& from) {
  if (&from == this) MergeFromFail(__LINE__);
$merges$  if (from._internal_metadata_.have_unknown_fields()) {
    runtime::MergeUnknownFields(from._internal_metadata_, &_internal_metadata_);
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
$checks$}
)";

// Optional scalars are usually all there or all absent, and copied without a test of each if they
// are.
std::string MergeGroup(const Group& group, const RenderedMessage& rendered) {
  std::string merges, copies;
  uint32_t scalars = 0;
  bool has_required = false;
  for (const Field* field : group.fields) {
    merges += rendered.of(field).merge;
    copies += Fill("$name$_ = from.$name$_;\n", {{"name", field->name}});
    scalars |= field->is_scalar() ? field->bit() : 0;
    has_required = has_required || field->required;
  }
  if (scalars == group.mask && group.fields.size() > 1 && !has_required) {
    merges = Fill(
        R"(
if ((bits & $mask$) == $mask$) {
$copies$} else {
$merges$}
)",
        {{"mask", Hex(group.mask)}, {"copies", Indent(copies, 2)}, {"merges", Indent(merges, 2)}});
  }
  if (scalars != 0) merges += "_has_bits_[0] |= bits & " + Hex(scalars) + ";\n";
  const uint32_t all_eight = 0xFFu << (group.fields.front()->index / 8 * 8);
  return "if (bits & " + Hex(all_eight) + ") {\n" + Indent(merges, 2) + "}\n";
}

std::string InitializationChecks(const Message& message) {
  std::string checks;
  if (!message.required.empty()) {
    const Variables mask = {{"mask", Hex(message.required_mask())}};
    if (message.reaching.empty()) return Fill("return (_has_bits_[0] & $mask$) == $mask$;\n", mask);
    checks += Fill("if ((_has_bits_[0] & $mask$) != $mask$) return false;\n", mask);
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
  return checks + "return true;\n";
}

}  // namespace

std::string RenderMerging(const RenderedMessage& rendered) {
  const Message& message = *rendered.message;
  std::string merges;
  for (const Field* field : message.repeated) merges += rendered.of(field).merge;
  if (!message.singular_groups.empty()) merges += "const uint32 bits = from._has_bits_[0];\n";
  for (const Group& group : message.singular_groups) merges += MergeGroup(group, rendered);
  return Fill(kMethods, {{"class", message.name},
                         {"merges", Indent(merges, 2)},
                         {"checks", Indent(InitializationChecks(message), 2)}});
}

}  // namespace protogen
