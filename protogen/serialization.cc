// Sizing, and writing in field-number order.
#include "protogen/families.h"

namespace protogen {
namespace {

const char kMethods[] = R"(
void $class$::SerializeWithCachedSizes(CodedOutputStream* output) const {
$to_stream$  if (_internal_metadata_.have_unknown_fields()) {
    WireFormat::SerializeUnknownFields(unknown_fields(), output);
  }
}

uint8* $class$::SerializeWithCachedSizesToArray(uint8* target) const {
$to_array$  if (_internal_metadata_.have_unknown_fields()) {
    target = WireFormat::SerializeUnknownFieldsToArray(unknown_fields(), target);
  }
  return target;
}

int $class$::ByteSize() const {
  uint32 total_size = 0;
$sizes$  if (_internal_metadata_.have_unknown_fields()) {
    total_size += static_cast<uint32>(WireFormat::ComputeUnknownFieldsSize(unknown_fields()));
  }
  _cached_size_ = static_cast<int>(total_size);
  return _cached_size_;
}
)";

const char kRequiredFallback[] = R"(

uint32 $class$::RequiredFieldsByteSizeFallback() const {
  uint32 total_size = 0;
$sizes$  return total_size;
}
)";

std::string SizeOfGroup(const Group& group, const RenderedMessage& rendered) {
  std::string sizes;
  for (const Field* field : group.fields) sizes += rendered.of(field).size;
  if (group.fields.size() == 1) return sizes;
  return "if (_has_bits_[0] & " + Hex(group.mask) + ") {\n" + Indent(sizes, 2) + "}\n";
}

// Required fields have a fixed size, so that their sum is one constant where all are present, which
// is the usual case.
std::string SizeOfRequired(const Message& message) {
  int all = 0;
  for (const Field* field : message.required) all += field->tag_size() + field->fixed_size();
  return Fill(R"(
if ((_has_bits_[0] & $mask$) == $mask$) {
  total_size += $all$;
} else {
  total_size += RequiredFieldsByteSizeFallback();
}
)",
              {{"mask", Hex(message.required_mask())}, {"all", std::to_string(all)}});
}

}  // namespace

std::string RenderSerialization(const RenderedMessage& rendered) {
  const Message& message = *rendered.message;
  std::string to_stream, to_array, sizes, required_sizes;
  for (const Field* field : message.wire_order) {
    to_stream += rendered.of(field).write_to_stream;
    to_array += rendered.of(field).write_to_array;
  }
  if (!message.required.empty()) sizes += SizeOfRequired(message);
  for (const Group& group : message.optional_groups) sizes += SizeOfGroup(group, rendered);
  for (const Field* field : message.repeated) sizes += rendered.of(field).size;
  std::string out = Fill(kMethods, {{"class", message.name},
                                    {"to_stream", Indent(to_stream, 2)},
                                    {"to_array", Indent(to_array, 2)},
                                    {"sizes", Indent(sizes, 2)}});
  if (message.required.empty()) return out;
  for (const Field* field : message.required) required_sizes += rendered.of(field).size;
  return out +
         Fill(kRequiredFallback, {{"class", message.name}, {"sizes", Indent(required_sizes, 2)}});
}

}  // namespace protogen
