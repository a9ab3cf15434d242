// A singular string or bytes field: a StringField, which shares the run-time's empty string until
// first written and then keeps one string of its own for as long as the object lives.
#include "protogen/fragments.h"

namespace protogen {

Fragments RenderText(const Field& field, const Variables& field_variables) {
  Variables variables = field_variables;
  variables["pointer"] = field.kind == Kind::kBytes ? "const void*" : "const char*";
  variables["data"] = field.kind == Kind::kBytes ? "static_cast<const char*>(value)" : "value";

  Fragments out;
  out.member = Fill("::zarvo::calibration_internal::StringField $name$_;\n", variables);
  out.initialize = Fill("$name$_.Init();\n", variables);
  out.destroy = Fill("$name$_.Destroy();\n", variables);
  out.clear = Fill("if (has_$name$()) $name$_.Clear();\n", variables);
  out.swap = Fill("$name$_.Swap(&other->$name$_);\n", variables);

  out.declarations = Fill(R"(
bool has_$name$() const;
const ::std::string& $name$() const;
void set_$name$(const ::std::string& value);
void set_$name$(::std::string&& value);
void set_$name$(const char* value);
void set_$name$($pointer$ value, ::std::size_t size);
::std::string* mutable_$name$();
void clear_$name$();
::std::string* release_$name$();
void set_allocated_$name$(::std::string* value);
)",
                          variables);
  out.definitions = HasBitDefinitions(variables) + Fill(R"(
inline const ::std::string& $class$::$name$() const { return $name$_.Get(); }
inline void $class$::set_$name$(const ::std::string& value) {
  set_has_$name$();
  $name$_.Set(value);
}
inline void $class$::set_$name$(::std::string&& value) { *mutable_$name$() = ::std::move(value); }
inline void $class$::set_$name$(const char* value) { mutable_$name$()->assign(value); }
inline void $class$::set_$name$($pointer$ value, ::std::size_t size) {
  mutable_$name$()->assign($data$, size);
}
inline ::std::string* $class$::mutable_$name$() {
  set_has_$name$();
  return $name$_.Mutable();
}
inline void $class$::clear_$name$() {
  $name$_.Clear();
  clear_has_$name$();
}
inline ::std::string* $class$::release_$name$() {
  clear_has_$name$();
  return $name$_.Release();
}
inline void $class$::set_allocated_$name$(::std::string* value) {
  if (value != nullptr) {
    set_has_$name$();
  } else {
    clear_has_$name$();
  }
  $name$_.SetAllocated(value);
}
)",
                                                        variables);

  out.take = Fill(R"(
if (!internal::Advance(&p, internal::TakeString($tag_size$, p, end, mutable_$name$()))) return p;
)",
                  variables);
  out.read = Fill("return internal::ReadString(input, mutable_$name$());\n", variables);
  out.write_to_stream = Fill(
      "if (has_$name$()) internal::WireFormatLite::Write$Wire$MaybeAliased($number$, "
      "$name$_.Get(), output);\n",
      variables);
  out.write_to_array = Fill(
      "if (has_$name$()) target = internal::WriteTextToArray($number$, $name$_.Get(), target);\n",
      variables);
  out.size =
      Fill("if (has_$name$()) total_size += $tag_size$ + internal::StringSize($name$_.Get());\n",
           variables);
  out.merge = Fill(R"(
if (bits & $mask$) {
  set_has_$name$();
  $name$_.Assign(from.$name$_);
}
)",
                   variables);
  return out;
}

}  // namespace protogen
