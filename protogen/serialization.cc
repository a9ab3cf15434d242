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
    target = wire::WriteUnknownFieldsToArray(unknown_fields(), target);
  }
  return target;
}

int $class$::ByteSize() const {
  uint32 total_size = 0;
$sizes$  if (_internal_metadata_.have_unknown_fields()) {
    return wire::SizeWithUnknownFields(total_size, _internal_metadata_, &_cached_size_);
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

// What all of the fields take together, tags included, or 0 if the size of one varies.
int FixedSize(const std::vector<const Field*>& fields) {
  int size = 0;
  for (const Field* field : fields) {
    if (field->fixed_size() == 0) return 0;
    size += field->tag_size() + field->fixed_size();
  }
  return size;
}

// The usual case is that all fields of a group are present; if their size is fixed, it is one
// constant.
std::string SizeOfGroup(const Group& group, const RenderedMessage& rendered) {
  std::string sizes;
  for (const Field* field : group.fields) sizes += rendered.of(field).size;
  if (group.fields.size() == 1) return sizes;
  std::string any = "if (_has_bits_[0] & " + Hex(group.mask) + ") {\n" + Indent(sizes, 2) + "}\n";
  const int all = FixedSize(group.fields);
  if (all == 0) return any;
  return Fill(R"(
if ((_has_bits_[0] & $mask$) == $mask$) {
  total_size += $all$;
} else )",
              {{"mask", Hex(group.mask)}, {"all", std::to_string(all)}}) +
         any;
}

// Required fields have a fixed size.
std::string SizeOfRequired(const Message& message) {
  return Fill(R"(
if ((_has_bits_[0] & $mask$) == $mask$) {
  total_size += $all$;
} else {
  total_size += RequiredFieldsByteSizeFallback();
}
)",
              {{"mask", Hex(message.required_mask())},
               {"all", std::to_string(FixedSize(message.required))}});
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
