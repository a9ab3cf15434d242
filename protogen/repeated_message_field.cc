// A repeated sub-message: a RepeatedPtrField, which owns its elements and keeps cleared ones for
// reuse.
#include "protogen/fragments.h"

namespace protogen {

Fragments RenderRepeatedMessage(const Variables& variables) {
  Fragments out;
  out.member = Fill("::google::protobuf::RepeatedPtrField<$type$> $name$_;\n", variables);
  out.destroy = Fill("internal::DeleteElements(&$name$_);\n", variables);
  out.clear = Fill("internal::ClearElements(&$name$_);\n", variables);
  out.swap = Fill("$name$_.UnsafeArenaSwap(&other->$name$_);\n", variables);

  out.declarations = Fill(R"(
int $name$_size() const;
const $type$& $name$(int index) const;
$type$* mutable_$name$(int index);
$type$* add_$name$();
const ::google::protobuf::RepeatedPtrField<$type$>& $name$() const;
::google::protobuf::RepeatedPtrField<$type$>* mutable_$name$();
void clear_$name$();
)",
                          variables);
  out.definitions = Fill(R"(
inline int $class$::$name$_size() const { return $name$_.size(); }
inline const $type$& $class$::$name$(int index) const { return $name$_.Get(index); }
inline $type$* $class$::mutable_$name$(int index) { return $name$_.Mutable(index); }
inline $type$* $class$::add_$name$() {
  return ::zarvo::calibration_internal::AppendElement(&$name$_);
}
inline const ::google::protobuf::RepeatedPtrField<$type$>& $class$::$name$() const {
  return $name$_;
}
inline ::google::protobuf::RepeatedPtrField<$type$>* $class$::mutable_$name$() { return &$name$_; }
inline void $class$::clear_$name$() { $name$_.Clear(); }
)",
                         variables);

  out.take = Fill(R"(
if (!internal::Advance(&p, reader->TakeElements<$tag$>(p, end, &$name$_))) return p;
)",
                  variables);
  out.read = Fill("return internal::MessageReader::ReadElement(input, &$name$_);\n", variables);
  out.write_to_stream = Fill(R"(
for (const auto& element : $name$_) internal::WriteMessage($number$, element, output);
)",
                             variables);
  out.write_to_array = Fill(R"(
for (const auto& element : $name$_) {
  target = internal::WriteMessageToArray($number$, element, target);
}
)",
                            variables);
  out.size = Fill(R"(
total_size += $tag_size$ * static_cast<internal::uint64>($name$_.size());
for (const auto& element : $name$_) total_size += internal::MessageSize(element);
)",
                  variables);
  out.merge = Fill("internal::MergeElements(from.$name$_, &$name$_);\n", variables);
  return out;
}

}  // namespace protogen
