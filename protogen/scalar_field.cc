// A singular double, float, int32, int64 or bool: the value stands in the object, presence in its
// has-bit.
#include "protogen/fragments.h"

namespace protogen {

Fragments RenderScalar(const Field& field, const Variables& variables) {
  Fragments out;
  out.member = Fill("$type$ $name$_;\n", variables);
  out.initialize = Fill("$name$_ = $default$;\n", variables);
  out.clear = out.initialize;
  out.swap = Fill("::std::swap($name$_, other->$name$_);\n", variables);

  out.declarations = Fill(R"(
bool has_$name$() const;
$type$ $name$() const;
void set_$name$($type$ value);
void clear_$name$();
)",
                          variables);
  out.definitions = HasBitDefinitions(variables) + Fill(R"(
inline $type$ $class$::$name$() const { return $name$_; }
inline void $class$::set_$name$($type$ value) {
  set_has_$name$();
  $name$_ = value;
}
inline void $class$::clear_$name$() {
  $name$_ = $default$;
  clear_has_$name$();
}
)",
                                                        variables);

  out.take = Fill(R"(
if (!internal::Advance(&p, internal::TakeValue<$tag_size$>(p, end, &$name$_))) return p;
set_has_$name$();
)",
                  variables);
  out.write_to_stream =
      Fill("if (has_$name$()) internal::WireFormatLite::Write$Wire$($number$, $name$_, output);\n",
           variables);
  // An integer's varint takes much code inline.
  const std::string writer = field.fixed_size() != 0 ? "internal::WireFormatLite::" : "internal::";
  out.write_to_array = Fill(
      "if (has_$name$()) target = " + writer + "Write$Wire$ToArray($number$, $name$_, target);\n",
      variables);
  if (field.fixed_size() != 0) {
    out.size = Fill("if (has_$name$()) total_size += $tag_size$ + " +
                        std::to_string(field.fixed_size()) + ";\n",
                    variables);
  } else {
    out.size = Fill("if (has_$name$()) total_size += $tag_size$ + internal::$Wire$Size($name$_);\n",
                    variables);
  }
  out.merge = Fill("if (bits & $mask$) $name$_ = from.$name$_;\n", variables);
  return out;
}

}  // namespace protogen
