// Sizing, and writing in field-number order.
#include <algorithm>

#include "protogen/renderers.h"

namespace protogen {
namespace {

const char kMethods[] = R"(
void $class$::SerializeWithCachedSizes(internal::CodedOutputStream* output) const {
$to_stream$  if (_internal_metadata_.have_unknown_fields()) {
    ::google::protobuf::internal::WireFormat::SerializeUnknownFields(unknown_fields(), output);
  }
}

internal::uint8* $class$::SerializeWithCachedSizesToArray(internal::uint8* target) const {
  if (internal::kAskedToWriteTooLarge && _cached_size_ < 0) return target;
$to_array$  if (_internal_metadata_.have_unknown_fields()) {
    target = internal::WriteUnknownFieldsToArray(unknown_fields(), target);
  }
  return target;
}

int $class$::ByteSize() const {
  internal::uint$bits$ total_size = 0;
$sizes$  if (_internal_metadata_.have_unknown_fields()) {
    return internal::SizeWithUnknownFields(total_size, _internal_metadata_, &_cached_size_);
  }
  _cached_size_ = $size$;
  return _cached_size_;
}
)";

const char kRequiredFallback[] = R"(

internal::uint32 $class$::RequiredFieldsByteSizeFallback() const {
  internal::uint32 total_size = 0;
$sizes$  return total_size;
}
)";

std::string WriteRun(const Group& run, const RenderedMessage& rendered) {
  std::string values, writes;
  for (const Field* field : run.fields) {
    values += ", " + field->name + "_";
    writes += rendered.of(field).write_to_array;
  }
  return Fill(R"(
if ((_has_bits_[0] & $mask$) == $mask$) {
  target = internal::WriteRunToArray<$tag$u>(target$values$);
} else {
$writes$}
)",
              {{"mask", Hex(run.mask)},
               {"tag", std::to_string(run.fields.front()->tag())},
               {"values", values},
               {"writes", Indent(writes, 2)}});
}

// Code that writes one field, or one run at once.
struct ArrayWrite {
  Group group;
  std::string code;
};

std::vector<ArrayWrite> ArrayWrites(const RenderedMessage& rendered) {
  const std::vector<const Field*>& fields = rendered.message->wire_order;
  std::vector<ArrayWrite> writes;
  auto run = rendered.message->runs.begin();
  for (size_t i = 0; i < fields.size();) {
    if (run != rendered.message->runs.end() && run->fields.front() == fields[i]) {
      i += run->fields.size();
      writes.push_back({*run, WriteRun(*run, rendered)});
      ++run;
    } else {
      writes.push_back({{fields[i]->bit(), {fields[i]}}, rendered.of(fields[i]).write_to_array});
      ++i;
    }
  }
  return writes;
}

// Many optional fields behind others are usually all absent, or nearly all present: one test comes
// first. Where a message begins with them, some are present, or why would it be there?
std::string WritesToArray(const RenderedMessage& rendered) {
  const size_t kMany = 8;
  const auto is_optional = [](const ArrayWrite& write) {
    const Field& field = *write.group.fields.front();
    return !field.repeated && !field.required;
  };
  const std::vector<ArrayWrite> writes = ArrayWrites(rendered);
  std::string all;
  for (auto write = writes.begin(); write != writes.end();) {
    std::string code;
    size_t count = 0;
    uint32_t mask = 0;
    const bool optional = is_optional(*write);
    for (; write != writes.end() && is_optional(*write) == optional; ++write) {
      code += write->code;
      count += write->group.fields.size();
      mask |= write->group.mask;
    }
    if (optional && !all.empty() && count >= kMany) {
      code = "if (_has_bits_[0] & " + Hex(mask) + ") {\n" + Indent(code, 2) + "}\n";
    }
    all += code;
  }
  return all;
}

// The encoded size of all of the fields together, tags included, or 0 if the size of one varies.
int FixedSize(const std::vector<const Field*>& fields) {
  int size = 0;
  for (const Field* field : fields) {
    if (field->fixed_size() == 0) return 0;
    size += field->tag_size() + field->fixed_size();
  }
  return size;
}

// The usual case is that all fields of a group are present; what of them has a fixed size is then
// one constant.
std::string SizeOfGroup(const Group& group, const RenderedMessage& rendered) {
  std::vector<const Field*> fixed;
  std::string sizes, fixed_sizes, other_sizes;
  uint32_t fixed_mask = 0;
  for (const Field* field : group.fields) {
    const std::string& size = rendered.of(field).size;
    sizes += size;
    (field->fixed_size() != 0 ? fixed_sizes : other_sizes) += size;
    if (field->fixed_size() == 0) continue;
    fixed.push_back(field);
    fixed_mask |= field->bit();
  }
  if (group.fields.size() == 1) return sizes;
  const auto if_any = [&](const std::string& any) {
    return "if (_has_bits_[0] & " + Hex(group.mask) + ") {\n" + Indent(any, 2) + "}\n";
  };
  if (fixed.size() < 3) return if_any(sizes);
  const std::string if_all =
      Fill("if ((_has_bits_[0] & $mask$) == $mask$) {\n  total_size += $all$;\n} else ",
           {{"mask", Hex(fixed_mask)}, {"all", std::to_string(FixedSize(fixed))}});
  if (other_sizes.empty()) return if_all + if_any(sizes);
  return if_any(if_all + "{\n" + Indent(fixed_sizes, 2) + "}\n" + other_sizes);
}

// Whether all values of the message's own fields fit into 32 bits together.
bool IsBounded(const Message& message) {
  return std::all_of(message.fields.begin(), message.fields.end(),
                     [](const Field& field) { return !field.repeated && field.is_scalar(); });
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
  std::string to_stream, sizes, required_sizes;
  for (const Field* field : message.wire_order) to_stream += rendered.of(field).write_to_stream;
  if (!message.required.empty()) sizes += SizeOfRequired(message);
  for (const Group& group : message.optional_groups) sizes += SizeOfGroup(group, rendered);
  for (const Field* field : message.repeated) sizes += rendered.of(field).size;
  const bool bounded = IsBounded(message);
  std::string out = Fill(kMethods, {{"class", message.name},
                                    {"bits", bounded ? "32" : "64"},
                                    {"size", bounded ? "static_cast<int>(total_size)"
                                                     : "internal::SizeOrTooLarge(total_size)"},
                                    {"to_stream", Indent(to_stream, 2)},
                                    {"to_array", Indent(WritesToArray(rendered), 2)},
                                    {"sizes", Indent(sizes, 2)}});
  if (message.required.empty()) return out;
  for (const Field* field : message.required) required_sizes += rendered.of(field).size;
  return out +
         Fill(kRequiredFallback, {{"class", message.name}, {"sizes", Indent(required_sizes, 2)}});
}

}  // namespace protogen
