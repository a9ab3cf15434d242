// Reading from the wire. Fields are expected in field-number order: after each, the parser tests
// for the next one's tag (the next-tag chain) before it goes back to reading tags.
#include "protogen/families.h"

namespace protogen {
namespace {

const char kMethod[] = R"(
bool $class$::MergePartialFromCodedStream(CodedInputStream* input) {
  for (;;) {
    const std::pair<uint32, bool> tag_and_flag = input->ReadTagWithCutoff($cutoff$u);
    const uint32 tag = tag_and_flag.first;
    if (!tag_and_flag.second) goto handle_unusual;
    switch (WireFormatLite::GetTagFieldNumber(tag)) {
$cases$      default:
        break;
    }
  handle_unusual:
    if (EndsMessage(tag)) return true;
    if (!wire::KeepUnknownField(input, tag, mutable_unknown_fields())) return false;
  }
}
)";

const char kCase[] = R"(
      // $declaration$
      case $number$: {
$body$        continue;
      }

)";

// Labels stand out by two columns to the left of the statements around them.
std::string OutdentLabels(const std::string& code) { return Replace(code, "  parse_", "parse_"); }

}  // namespace

std::string RenderParsing(const RenderedMessage& rendered) {
  const Message& message = *rendered.message;
  std::string cases;
  for (size_t i = 0; i < message.wire_order.size(); ++i) {
    const Field& field = *message.wire_order[i];
    const bool is_target = i > 0;
    std::string body = Fill(rendered.of(&field).parse,
                            {{"label", is_target ? "parse_" + field.name + ":\n" : ""}});
    if (i + 1 < message.wire_order.size()) {
      const Field& next = *message.wire_order[i + 1];
      body += "if (input->ExpectTag(" + std::to_string(next.tag()) + "u)) goto parse_" + next.name +
              ";\n";
    } else {
      body += "if (input->ExpectAtEnd()) return true;\n";
    }
    body = OutdentLabels(Indent(body, 8));
    cases += Fill(kCase, {{"declaration", field.declaration},
                          {"number", std::to_string(field.number)},
                          {"body", body}});
  }
  return Fill(
      kMethod,
      {{"class", message.name}, {"cutoff", std::to_string(message.tag_cutoff)}, {"cases", cases}});
}

}  // namespace protogen
