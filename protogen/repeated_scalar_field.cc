// A repeated double or float: a RepeatedField. Read one element a tag or as a packed run, always
// written one a tag.
#include "protogen/fragments.h"

namespace protogen {

Fragments RenderRepeatedScalar(const Field& field, const Variables& field_variables) {
  Variables variables = field_variables;
  variables["element_size"] = std::to_string(field.tag_size() + field.fixed_size());

  Fragments out;
  out.member = Fill("::google::protobuf::RepeatedField<$type$> $name$_;\n", variables);
  out.clear = Fill("$name$_.Clear();\n", variables);
  out.swap = Fill("$name$_.UnsafeArenaSwap(&other->$name$_);\n", variables);

  out.declarations = Fill(R"(
int $name$_size() const;
$type$ $name$(int index) const;
void set_$name$(int index, $type$ value);
void add_$name$($type$ value);
const ::google::protobuf::RepeatedField<$type$>& $name$() const;
::google::protobuf::RepeatedField<$type$>* mutable_$name$();
void clear_$name$();
)",
                          variables);
  out.definitions = Fill(R"(
inline int $class$::$name$_size() const { return $name$_.size(); }
inline $type$ $class$::$name$(int index) const { return $name$_.Get(index); }
inline void $class$::set_$name$(int index, $type$ value) { $name$_.Set(index, value); }
inline void $class$::add_$name$($type$ value) { $name$_.Add(value); }
inline const ::google::protobuf::RepeatedField<$type$>& $class$::$name$() const { return $name$_; }
inline ::google::protobuf::RepeatedField<$type$>* $class$::mutable_$name$() { return &$name$_; }
inline void $class$::clear_$name$() { $name$_.Clear(); }
)",
                         variables);

  out.take = Fill(R"(
if (!internal::Advance(&p, internal::TakeElements<$tag$>(p, end, &$name$_))) return p;
)",
                  variables);
  out.take_packed = Fill(R"(
if (!internal::Advance(&p, internal::TakePacked($tag_size$, p, end, &$name$_))) return p;
)",
                         variables);
  out.read = Fill("return internal::ReadPacked(input, &$name$_);\n", variables);
  out.write_to_stream = Fill(R"(
internal::WriteElements<$tag$>($name$_, output);
)",
                             variables);
  out.write_to_array = Fill(R"(
target = internal::WriteElementsToArray<$tag$>($name$_, target);
)",
                            variables);
  out.size = Fill("total_size += $element_size$ * static_cast<internal::uint64>($name$_.size());\n",
                  variables);
  out.merge = Fill("$name$_.MergeFrom(from.$name$_);\n", variables);
  return out;
}

}  // namespace protogen
