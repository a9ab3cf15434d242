// A repeated sub-message: a RepeatedPtrField, which owns its elements and keeps cleared ones for
// reuse.
#include "protogen/fragments.h"

namespace protogen {

Fragments RenderRepeatedMessage(const Variables& variables) {
  Fragments out;
  out.member = Fill("::google::protobuf::RepeatedPtrField<$type$> $name$_;\n", variables);
  out.clear = Fill("$name$_.Clear();\n", variables);
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
inline $type$* $class$::add_$name$() { return runtime::AddElement(&$name$_); }
inline const ::google::protobuf::RepeatedPtrField<$type$>& $class$::$name$() const {
  return $name$_;
}
inline ::google::protobuf::RepeatedPtrField<$type$>* $class$::mutable_$name$() { return &$name$_; }
inline void $class$::clear_$name$() { $name$_.Clear(); }
)",
                         variables);

  out.parse = Fill(R"(
if (tag != $tag$) goto handle_unusual;
$label$if (!input->IncrementRecursionDepth()) return false;
do {
  if (!wire::ReadElement(input, add_$name$())) return false;
} while (input->ExpectTag($tag$));
input->UnsafeDecrementRecursionDepth();
)",
                   variables);
  out.write_to_stream = Fill(R"(
for (int i = 0, n = $name$_size(); i < n; ++i) runtime::WriteMessage($number$, $name$(i), output);
)",
                             variables);
  out.write_to_array = Fill(R"(
for (int i = 0, n = $name$_size(); i < n; ++i) {
  target = wire::WriteMessageToArray($number$, $name$(i), target);
}
)",
                            variables);
  out.size = Fill(R"(
total_size += $tag_size$ * static_cast<uint32>($name$_size());
for (int i = 0, n = $name$_size(); i < n; ++i) total_size += wire::MessageSize(&$name$(i));
)",
                  variables);
  out.merge = Fill("runtime::MergeElements(from.$name$_, &$name$_);\n", variables);
  return out;
}

}  // namespace protogen
