#include "calib/formats/codec.h"

#include "calib/console/failure.h"
#include "calib/fields/unknown.h"
#include "calib/formats/binary_codec.h"
#include "calib/formats/json_codec.h"
#include "calib/formats/text_codec.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::Message;
using google::protobuf::MessageFactory;

namespace {

void CheckNothingUnknown(Format format, const Message& record) {
  const std::vector<UnknownField> unknown = FindUnknownFields(record);
  if (unknown.empty()) return;
  throw Failure(std::string("the record has a field that the ") + NameOf(format) +
                    " format cannot hold: " + Describe(unknown.front()),
                "Write it in the binary format, which keeps unknown fields, or leave them out "
                "with --drop-unknown.");
}

}  // namespace

std::unique_ptr<Message> Decode(Format format, const Descriptor* type, const std::string& name,
                                std::string_view bytes) {
  std::unique_ptr<Message> record(MessageFactory::generated_factory()->GetPrototype(type)->New());
  DecodeInto(format, name, bytes, record.get());
  return record;
}

void DecodeInto(Format format, const std::string& name, std::string_view bytes, Message* record) {
  switch (format) {
    case Format::kBinary:
      return DecodeBinary(name, bytes, record);
    case Format::kText:
      return DecodeText(name, bytes, record);
    case Format::kJson:
      return DecodeJson(name, bytes, record);
  }
}

std::unique_ptr<Message> DecodeIfFits(Format format, const Descriptor* type,
                                      std::string_view bytes) {
  try {
    if (format != Format::kJson) return Decode(format, type, "", bytes);
    std::unique_ptr<Message> record(MessageFactory::generated_factory()->GetPrototype(type)->New());
    return FitsJson(bytes, record.get()) ? std::move(record) : nullptr;
  } catch (const Failure&) {
    return nullptr;
  }
}

void Encode(Format format, const Message& record, const Sink& sink) {
  if (format == Format::kBinary) {
    const std::string bytes = EncodeBinary(record);
    return sink(bytes.data(), bytes.size());
  }
  CheckNothingUnknown(format, record);
  format == Format::kText ? EncodeText(record, sink)
                          : EncodeJson(record, JsonLayout::kIndented, sink);
}

std::string Encode(Format format, const Message& record) {
  std::string bytes;
  Encode(format, record, [&](const char* piece, size_t size) { bytes.append(piece, size); });
  return bytes;
}

void EncodeForFile(FileFormat format, const Message& record, const Sink& sink) {
  if (!format.many) return Encode(format.format, record, sink);
  if (format.format == Format::kBinary) {
    const std::string framed = FrameRecord(EncodeBinary(record));
    return sink(framed.data(), framed.size());
  }
  CheckNothingUnknown(format.format, record);
  EncodeJson(record, JsonLayout::kOneLine, sink);
}

}  // namespace calib
