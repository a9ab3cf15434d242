// Merging, copying and the check for required fields.
#include <algorithm>

#include "protogen/renderers.h"

namespace protogen {
namespace {

const char kMethods[] = R"(
void $class$::MergeFrom(const ::google::protobuf::Message& from) {
  if (&from == this) file::MergeFromFail(__LINE__);
  const $class$* source = file::Cast<$class$>(from);
  if (source == nullptr) {
    ::google::protobuf::internal::ReflectionOps::Merge(from, this);
  } else {
    MergeFrom(*source);
  }
}

void $class$::MergeFrom(const $class$& from) {
  if (&from == this) file::MergeFromFail(__LINE__);
$merges$  if (from._internal_metadata_.have_unknown_fields()) {
    internal::MergeUnknownFields(from._internal_metadata_, &_internal_metadata_);
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

$flat$bool $class$::IsInitialized() const {
$checks$}
)";

// Scalars that are usually all there or all absent are copied without a test of each if they are.
std::string MergeTogether(const std::vector<const Field*>& fields, const std::string& merges) {
  std::string copies;
  uint32_t mask = 0;
  for (const Field* field : fields) {
    copies += Fill("$name$_ = from.$name$_;\n", {{"name", field->name}});
    mask |= field->bit();
  }
  return Fill(
      R"(
if ((bits & $mask$) == $mask$) {
$copies$} else {
$merges$}
)",
      {{"mask", Hex(mask)}, {"copies", Indent(copies, 2)}, {"merges", Indent(merges, 2)}});
}

// Merged together are the required fields of a group, which always are scalars, and the fields of a
// group that has nothing but scalars.
std::vector<const Field*> Together(const Group& group) {
  std::vector<const Field*> required, scalars;
  for (const Field* field : group.fields) {
    if (field->required) required.push_back(field);
    if (field->is_scalar()) scalars.push_back(field);
  }
  std::vector<const Field*> together = required;
  if (required.empty() && scalars.size() == group.fields.size()) together = scalars;
  return together.size() < 2 ? std::vector<const Field*>() : together;
}

// In declaration order. Scalars get their has-bits behind the last of those that are neighbours,
// and so before any field that may throw.
std::string MergeGroup(const Group& group, const RenderedMessage& rendered) {
  const std::vector<const Field*> together = Together(group);
  std::string merges, merges_together;
  uint32_t copied = 0;  // scalars whose has-bits are still to be set
  const auto set_has_bits = [&] {
    if (copied != 0) merges += "_has_bits_[0] |= bits & " + Hex(copied) + ";\n";
    copied = 0;
  };
  for (const Field* field : group.fields) {
    if (!field->is_scalar()) set_has_bits();
    copied |= field->is_scalar() ? field->bit() : 0;
    if (std::find(together.begin(), together.end(), field) == together.end()) {
      merges += rendered.of(field).merge;
      continue;
    }
    merges_together += rendered.of(field).merge;
    if (field == together.back()) merges += MergeTogether(together, merges_together);
  }
  set_has_bits();
  const uint32_t all_eight = 0xFFu << (group.fields.front()->index / 8 * 8);
  return "if (bits & " + Hex(all_eight) + ") {\n" + Indent(merges, 2) + "}\n";
}

std::string InitializationChecks(const Message& message) {
  std::string checks;
  if (!message.required.empty()) {
    const Variables mask = {{"mask", Hex(message.required_mask())}};
    if (message.reaching_required.empty())
      return Fill("return (_has_bits_[0] & $mask$) == $mask$;\n", mask);
    checks += Fill("if ((_has_bits_[0] & $mask$) != $mask$) return false;\n", mask);
  }
  for (const Field* field : message.reaching_required) {
    checks +=
        Fill(field->repeated
                 ? R"(
for (int i = $name$_.size(); --i >= 0;) {
  if (!internal::IsInitialized($name$_.Get(i))) return false;
}
)"
                 : "if (has_$name$() && !internal::IsInitialized(this->$name$())) return false;\n",
             {{"name", field->name}});
  }
  return checks + "return true;\n";
}

}  // namespace

std::string RenderMerging(const RenderedMessage& rendered) {
  const Message& message = *rendered.message;
  std::string merges;
  for (const Field* field : message.repeated) merges += rendered.of(field).merge;
  if (!message.singular_groups.empty())
    merges += "const internal::uint32 bits = from._has_bits_[0];\n";
  for (const Group& group : message.singular_groups) merges += MergeGroup(group, rendered);
  const char* const flat = message.reaching_required.empty() ? "" : "__attribute__((flatten)) ";
  return Fill(kMethods, {{"class", message.name},
                         {"flat", flat},
                         {"merges", Indent(merges, 2)},
                         {"checks", Indent(InitializationChecks(message), 2)}});
}

}  // namespace protogen
