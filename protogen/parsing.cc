// Reading from the wire: what lies whole in the stream's buffer, and what has a length and does not
// (see calibration_common/internal/buffer_reader.h).
//
// From the buffer, fields are expected in field-number order: behind each, the code tests for the
// next one's tag and falls through to its case (the next-tag chain), and goes back to the switch
// only for another tag.
#include "protogen/renderers.h"

namespace protogen {
namespace {

const char kMethods[] = R"(
const internal::uint8* $class$::MergeBuffered(
    const internal::uint8* p, const internal::uint8* end, internal::MessageReader*$reader$) {
  while (p != end) {
    switch ($tag$) {
$takes$      default:
        return p;
    }
  }
  return p;
}

__attribute__((cold)) bool $class$::MergeLengthDelimited(
    internal::uint32 tag, internal::CodedInputStream* input) {
$reads$  return internal::KeepUnknownField(input, tag, mutable_unknown_fields());
}

bool $class$::MergePartialFromCodedStream(internal::CodedInputStream* input) {
  return internal::MessageReader::MergeFromStream(this, input);
}
)";

std::string Case(uint32_t tag, const std::string& comment, const std::string& body) {
  return "case " + std::to_string(tag) + ":  // " + comment + "\n" + Indent(body, 2);
}

// Takes the run that begins with `field`, if any does, whole.
std::string TakeRun(const Message& message, const Field* field) {
  for (const Group& run : message.runs) {
    if (run.fields.front() != field) continue;
    std::string members;
    for (const Field* member : run.fields) members += ", &" + member->name + "_";
    return Fill(
        R"(
if (internal::TakeRun<$tag$u>(&p, end$members$)) {
  _has_bits_[0] |= $mask$;
  continue;
}
)",
        {{"tag", std::to_string(field->tag())}, {"members", members}, {"mask", Hex(run.mask)}});
  }
  return "";
}

// The cases of MergeBuffered().
std::string Takes(const RenderedMessage& rendered) {
  const std::vector<const Field*>& fields = rendered.message->wire_order;
  std::string takes, packed_takes;
  for (size_t i = 0; i < fields.size(); ++i) {
    const Fragments& fragments = rendered.of(fields[i]);
    std::string next = "continue;\n";
    if (i + 1 < fields.size()) {
      next = "if (!internal::NextIs<" + std::to_string(fields[i + 1]->tag()) +
             "u>(p, end)) continue;\n// Fall through.\n";
    }
    takes += Case(fields[i]->tag(), fields[i]->name,
                  TakeRun(*rendered.message, fields[i]) + fragments.take + next);
    if (!fragments.take_packed.empty()) {
      packed_takes += Case(fields[i]->packed_tag(), fields[i]->name + " (packed)",
                           fragments.take_packed + "continue;\n");
    }
  }
  return takes + packed_takes;
}

// The switch of MergeLengthDelimited().
std::string Reads(const RenderedMessage& rendered) {
  std::string reads;
  for (const Field* field : rendered.message->wire_order) {
    const Fragments& fragments = rendered.of(field);
    if (fragments.read.empty()) continue;
    const uint32_t tag = fragments.take_packed.empty() ? field->tag() : field->packed_tag();
    reads += Case(tag, field->name, fragments.read);
  }
  return reads.empty() ? "" : "switch (tag) {\n" + Indent(reads, 2) + "}\n";
}

bool HasMessages(const Message& message) {
  for (const Field& field : message.fields) {
    if (field.kind == Kind::kMessage) return true;
  }
  return false;
}

}  // namespace

std::string RenderParsing(const RenderedMessage& rendered) {
  const Message& message = *rendered.message;
  return Fill(kMethods, {{"class", message.name},
                         {"reader", HasMessages(message) ? " reader" : ""},
                         {"tag", message.tags_end <= 0x80 ? "*p" : "internal::PeekTag(p, end)"},
                         {"takes", Indent(Takes(rendered), 6)},
                         {"reads", Indent(Reads(rendered), 2)}});
}

}  // namespace protogen
