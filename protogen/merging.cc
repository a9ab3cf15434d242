// Merging, copying and the check for required fields.
#include <algorithm>
#include <set>
#include <string>
#include <vector>

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
$check$}
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

std::string InitializationCheck(const Message& message) {
  if (!message.reaching_required.empty())
    return "return file::RequiredFields::ArePresent(*this) || "
           "file::RequiredFields::AreFound(*this);\n";
  if (message.required.empty()) return "return true;\n";
  return Fill("return (_has_bits_[0] & $mask$) == $mask$;\n",
              {{"mask", Hex(message.required_mask())}});
}

// How an object's required fields are looked for, and those of its sub-messages.
std::string FindRequiredFields(const Message& message) {
  std::string finds;
  if (!message.required.empty()) {
    finds += Fill("if ((message._has_bits_[0] & $mask$) != $mask$) return false;\n",
                  {{"mask", Hex(message.required_mask())}});
  }
  for (const Field* field : message.reaching_required) {
    finds +=
        Fill(field->repeated
                 ? R"(
for (int i = message.$name$_.size(); --i >= 0;) {
  if (!message.$name$_.Get(i).IsInitialized()) return false;
}
)"
                 : "if (message.has_$name$() && !message.$name$().IsInitialized()) return false;\n",
             {{"name", field->name}});
  }
  return Fill(R"(
__attribute__((cold, noinline)) static bool AreFound(const $class$& message) {
$finds$  return true;
}
)",
              {{"class", message.name}, {"finds", Indent(finds, 2)}});
}

// How they are counted in.
std::string AddRequiredFields(const Message& message) {
  std::string adds;
  if (!message.required.empty())
    adds += Fill("in_$class$ &= message._has_bits_[0];\n", {{"class", message.name}});
  for (const Field* field : message.reaching_required) {
    adds +=
        Fill(field->repeated ? "if (!AddElements(known_$message$, message.$name$_)) return false;\n"
                             : R"(
if (message.$name$_ == nullptr) {
  if (message.has_$name$()) return false;
} else if (!AddKnown(known_$message$, *message.$name$_)) {
  return false;
}
)",
             {{"name", field->name}, {"message", field->message_type}});
  }
  return Fill("bool Add(const $class$& message) {\n$adds$  return true;\n}\n",
              {{"class", message.name}, {"adds", Indent(adds, 2)}});
}

const char kRequiredFields[] = R"(

// Whether required fields are present can mostly be told at a glance: where the classes of all
// objects in a record are known, by the has-bits that those of a class have in common. Sub-messages
// that were cleared are counted in, too; if they are what lacks a field, it takes a second look.
// The classes' friend, since their members are private.
struct protobuf_RequiredFields_$id$ {
  // At a glance. False if it cannot be told so.
  template <typename T>
  static bool ArePresent(const T& message) {
    protobuf_RequiredFields_$id$ all;
    return all.Add(message)$present$;
  }

  // One message after the other, each by its own function.
$finds$
 private:
$adds$
  template <typename T>
  bool AddKnown(const internal::KnownClass<T>& known, const T& message) {
    return __builtin_expect(known.Has(message), true) && Add(message);
  }
  template <typename T>
  bool AddElements(const internal::KnownClass<T>& known,
                   const ::google::protobuf::RepeatedPtrField<T>& elements) {
    for (::std::ptrdiff_t i = elements.size(); i > 0; --i) {
      const T* const* const all = elements.data();
      if (all == nullptr) __builtin_unreachable();  // need not be looked at
      if (!AddKnown(known, *all[i - 1])) return false;
    }
    return true;
  }

$known$
$has_bits$};

)";

}  // namespace

std::string RenderRequiredFields(const File& file) {
  Variables all = {{"id", file.identifier}};
  std::set<std::string> sub_messages;
  for (const Message& message : file.messages) {
    if (!message.reaches_required) continue;
    const Variables one = {{"class", message.name}, {"mask", Hex(message.required_mask())}};
    if (!message.reaching_required.empty()) all["finds"] += Indent(FindRequiredFields(message), 2);
    all["adds"] += Indent(AddRequiredFields(message), 2);
    for (const Field* field : message.reaching_required) sub_messages.insert(field->message_type);
    if (message.required.empty()) continue;
    all["present"] += Fill(" && all.in_$class$ == $mask$", one);
    all["has_bits"] += Fill("  internal::uint32 in_$class$ = $mask$;\n", one);
  }
  for (const std::string& name : sub_messages) {
    all["known"] +=
        Fill("  const internal::KnownClass<$class$> known_$class$;\n", {{"class", name}});
  }
  return all.count("finds") != 0 ? Fill(kRequiredFields, all) : "";
}

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
                         {"check", Indent(InitializationCheck(message), 2)}});
}

}  // namespace protogen
