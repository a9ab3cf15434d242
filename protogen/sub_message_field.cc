// A singular sub-message: an owned pointer, null until first needed; a default instance points at
// the default instances of its fields' types instead and does not own them. A has-bit without an
// object is what an allocation that failed leaves behind; it reads, and is written, as an empty
// sub-message.
#include "protogen/fragments.h"

namespace protogen {

Fragments RenderSubMessage(const Variables& variables) {
  Fragments out;
  out.member = Fill("$type$* $name$_;\n", variables);
  out.initialize = Fill("$name$_ = nullptr;\n", variables);
  out.destroy = Fill("delete $name$_;\n", variables);
  out.clear =
      Fill("if (has_$name$() && $name$_ != nullptr) $name$_->$message$::Clear();\n", variables);
  out.swap = Fill("::std::swap($name$_, other->$name$_);\n", variables);

  out.declarations = Fill(R"(
bool has_$name$() const;
const $type$& $name$() const;
$type$* mutable_$name$();
void clear_$name$();
$type$* release_$name$();
void set_allocated_$name$($type$* value);
)",
                          variables);
  out.definitions = HasBitDefinitions(variables) + Fill(R"(
inline const $type$& $class$::$name$() const {
  return $name$_ != nullptr ? *$name$_ : *default_instance_->$name$_;
}
inline $type$* $class$::mutable_$name$() {
  set_has_$name$();
  if ($name$_ == nullptr) $name$_ = new $type$;
  return $name$_;
}
inline void $class$::clear_$name$() {
  if ($name$_ != nullptr) $name$_->Clear();
  clear_has_$name$();
}
inline $type$* $class$::release_$name$() {
  clear_has_$name$();
  $type$* released = $name$_;
  $name$_ = nullptr;
  return released;
}
inline void $class$::set_allocated_$name$($type$* value) {
  delete $name$_;
  $name$_ = value;
  if (value != nullptr) {
    set_has_$name$();
  } else {
    clear_has_$name$();
  }
}
)",
                                                        variables);

  out.take = Fill(R"(
if (!internal::Advance(&p, reader->TakeMessage<$tag_size$>(p, end, mutable_$name$()))) return p;
)",
                  variables);
  out.read =
      Fill("return internal::MessageReader::ReadMessage(input, mutable_$name$());\n", variables);
  out.write_to_stream = Fill(
      "if (has_$name$()) internal::WriteMessage($number$, this->$name$(), output);\n", variables);
  out.write_to_array = Fill(
      "if (has_$name$()) target = internal::WriteMessageToArray($number$, this->$name$(), "
      "target);\n",
      variables);
  out.size =
      Fill("if (has_$name$()) total_size += $tag_size$ + internal::MessageSize(this->$name$());\n",
           variables);
  out.merge = Fill("if (bits & $mask$) mutable_$name$()->MergeFrom(from.$name$());\n", variables);
  return out;
}

}  // namespace protogen
