// How an object is born, cleared, swapped and destroyed.
#include "protogen/renderers.h"

namespace protogen {
namespace {

// A group of eight has-bits is worth a test before its fields are cleared, unless clearing them
// costs little more than that, as it does for numbers, which are zeroed together.
bool ClearsWithoutTest(const Group& group) {
  if (group.fields.size() == 1) return true;
  for (const Field* field : group.fields) {
    if (!field->is_scalar() || !field->zero_default) return false;
  }
  return true;
}

std::string ClearGroup(const Group& group, const RenderedMessage& rendered) {
  std::string clears;
  for (const Field* field : group.fields) clears += rendered.of(field).clear;
  if (ClearsWithoutTest(group)) return clears;
  return "if (_has_bits_[0] & " + Hex(group.mask) + ") {\n" + Indent(clears, 2) + "}\n";
}

std::string Links(const Message& message) {
  std::string links;
  for (const Field* field : message.sub_messages) {
    links += Fill("file::LinkToDefaultInstance(&default_instance_->$name$_);\n",
                  FieldVariables(message, *field));
  }
  return links;
}

// Where SharedDtor() has elements to delete and nothing else, most objects can do without it.
std::string CallOfSharedDtor(const Message& message) {
  std::string elements;
  for (const Field* field : message.repeated) {
    if (field->kind != Kind::kMessage) continue;
    elements += (elements.empty() ? "!" : " || !") + field->name + "_.empty()";
  }
  const bool only_elements =
      !elements.empty() && !message.has_texts && message.sub_messages.empty();
  return only_elements ? "if (" + elements + ") SharedDtor();" : "SharedDtor();";
}

}  // namespace

std::string RenderObjectModel(const RenderedMessage& rendered) {
  const Message& message = *rendered.message;
  Variables variables = {{"class", message.name}, {"i", std::to_string(message.index)}};

  std::string constants, initializes, text_destroys, sub_message_destroys, swaps, clears;
  for (const Field& field : message.fields) {
    const Fragments& fragments = rendered.of(&field);
    constants += Fill("const int $class$::k" + CamelCase(field.name) + "FieldNumber;\n", variables);
    initializes += fragments.initialize;
    (field.is_sub_message() ? sub_message_destroys : text_destroys) += fragments.destroy;
    swaps += fragments.swap;
  }
  for (const Group& group : message.singular_groups) clears += ClearGroup(group, rendered);
  for (const Field* field : message.repeated) clears += rendered.of(field).clear;

  if (message.has_texts)
    initializes = "internal::InitSharedEmptyString();\n_cached_size_ = 0;\n" + initializes;
  if (!message.has_texts) initializes = "_cached_size_ = 0;\n" + initializes;
  std::string destroys = text_destroys;
  if (!sub_message_destroys.empty()) {
    destroys += "if (this != default_instance_) {\n" + Indent(sub_message_destroys, 2) + "}\n";
  }

  variables["constants"] = constants;
  variables["initializes"] = Indent(initializes, 2);
  variables["destroy"] = CallOfSharedDtor(message);
  variables["destroys"] = destroys.empty() ? "" : "\n" + Indent(destroys, 2);
  variables["links"] = message.sub_messages.empty() ? "" : "\n" + Indent(Links(message), 2);
  variables["swaps"] = Indent(swaps, 2);
  variables["clears"] = Indent(clears, 2);
  return Fill(R"(
$constants$
$class$* $class$::default_instance_ = nullptr;

__attribute__((flatten)) $class$::$class$() { SharedCtor(); }

// The object counts as constructed before anything is merged, so that a merge that throws leaves
// nothing behind.
$class$::$class$(const $class$& from) : $class$() {
  MergeFrom(from);
}

$class$::~$class$() {
  $destroy$
  internal::DeleteUnknownFields(&_internal_metadata_);
}

void $class$::InitAsDefaultInstance() {$links$}

void $class$::SharedCtor() {
$initializes$  _has_bits_[0] = 0;
}

void $class$::SharedDtor() {$destroys$}

const ::google::protobuf::Descriptor* $class$::descriptor() {
  file::AssignDescriptorsOnce();
  return file::descriptors[$i$];
}

::google::protobuf::Metadata $class$::GetMetadata() const { return file::MetadataOf($i$); }

$class$* $class$::New() const { return New(nullptr); }

__attribute__((flatten)) $class$* $class$::New(::google::protobuf::Arena* arena) const {
  if (arena != nullptr) return internal::NewOwned(*default_instance_, arena);
  return new $class$;
}

int $class$::GetCachedSize() const { return _cached_size_; }

void $class$::SetCachedSize(int size) const { _cached_size_ = size; }

void $class$::Swap($class$* other) {
  if (other != this) InternalSwap(other);
}

__attribute__((noinline)) void $class$::InternalSwap($class$* other) {
$swaps$  ::std::swap(_has_bits_[0], other->_has_bits_[0]);
  internal::SwapUnknownFields(&_internal_metadata_, &other->_internal_metadata_);
  ::std::swap(_cached_size_, other->_cached_size_);
}

void $class$::Clear() {
$clears$  _has_bits_[0] = 0;
  if (_internal_metadata_.have_unknown_fields()) internal::ClearUnknownFields(&_internal_metadata_);
}
)",
              variables);
}

}  // namespace protogen
