#include "protogen/fragments.h"

namespace protogen {
namespace {

struct KindNames {
  const char* type;
  const char* wire;
};

KindNames NamesOf(Kind kind) {
  switch (kind) {
    case Kind::kDouble:
      return {"double", "Double"};
    case Kind::kFloat:
      return {"float", "Float"};
    case Kind::kInt32:
      return {"::google::protobuf::int32", "Int32"};
    case Kind::kInt64:
      return {"::google::protobuf::int64", "Int64"};
    case Kind::kBool:
      return {"bool", "Bool"};
    case Kind::kString:
      return {"::std::string", "String"};
    case Kind::kBytes:
      return {"::std::string", "Bytes"};
    case Kind::kMessage:
      break;
  }
  return {"", "Message"};
}

}  // namespace

Variables FieldVariables(const Message& message, const Field& field) {
  const KindNames names = NamesOf(field.kind);
  return {
      {"class", message.name},
      {"name", field.name},
      {"number", std::to_string(field.number)},
      {"tag", std::to_string(field.tag()) + "u"},
      {"tag_size", std::to_string(field.tag_size())},
      {"mask", Hex(field.bit())},
      {"type", field.kind == Kind::kMessage ? field.message_class : names.type},
      {"message", field.message_type},
      {"Wire", names.wire},
      {"default", field.default_value},
  };
}

std::string HasBitDefinitions(const Variables& variables) {
  return Fill(R"(
inline bool $class$::has_$name$() const { return (_has_bits_[0] & $mask$) != 0; }
inline void $class$::set_has_$name$() { _has_bits_[0] |= $mask$; }
inline void $class$::clear_has_$name$() { _has_bits_[0] &= ~$mask$; }
)",
              variables);
}

Fragments RenderField(const Message& message, const Field& field) {
  const Variables variables = FieldVariables(message, field);
  if (field.kind == Kind::kMessage) {
    return field.repeated ? RenderRepeatedMessage(variables) : RenderSubMessage(variables);
  }
  if (field.repeated) return RenderRepeatedScalar(field, variables);
  return field.is_text() ? RenderText(field, variables) : RenderScalar(field, variables);
}

}  // namespace protogen
