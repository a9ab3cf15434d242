#include "calibration_common/internal/message_reader.h"

#include "calibration_common/internal/unknown_fields.h"

namespace zarvo {
namespace calibration_internal {

void UnknownFieldStore::Make() { fields_ = MutableUnknownFields(metadata_); }

const uint8* TakeUnknown(const uint8* p, const uint8* end, uint32 tags_end,
                         UnknownFieldStore* unknown, MessageReader* group_reader) {
  uint32 tag = PeekTag(p, end);
  do {
    const uint8* q = p + (tag < 0x80 ? 1 : 2);
    if (tag == 0) {
      uint64 long_tag;
      q = ReadVarint(p, end, &long_tag);
      if (q == nullptr) return p;
      // Longer than need be, it may be a tag that is known; in a group, none is.
      if (tags_end > 0 && (q - p > kMaxTagSize || q[-1] == 0 || long_tag > 0xFFFFFFFFu)) return p;
      tag = static_cast<uint32>(long_tag);
    }
    const int number = WireFormatLite::GetTagFieldNumber(tag);
    if (number == 0) return p;
    // Four cases and the default: with more, this would be a jump by a table, which takes longer.
    const WireFormatLite::WireType wire_type = WireFormatLite::GetTagWireType(tag);
    switch (wire_type) {
      case WireFormatLite::WIRETYPE_VARINT: {
        uint64 value;
        q = ReadVarint(q, end, &value);
        if (q == nullptr) return p;
        AddOrUndo(unknown->Get(), [&] { unknown->Get()->AddVarint(number, value); });
        break;
      }
      case WireFormatLite::WIRETYPE_FIXED64: {
        uint64 value;
        if (end - q < 8) return p;
        q = CodedInputStream::ReadLittleEndian64FromArray(q, &value);
        AddOrUndo(unknown->Get(), [&] { unknown->Get()->AddFixed64(number, value); });
        break;
      }
      case WireFormatLite::WIRETYPE_FIXED32: {
        uint32 value;
        if (end - q < 4) return p;
        q = CodedInputStream::ReadLittleEndian32FromArray(q, &value);
        AddOrUndo(unknown->Get(), [&] { unknown->Get()->AddFixed32(number, value); });
        break;
      }
      case WireFormatLite::WIRETYPE_LENGTH_DELIMITED: {
        size_t length;
        q = FindBody(q, end, &length);
        if (q == nullptr) return p;
        AddOrUndo(unknown->Get(), [&] {
          unknown->Get()->AddLengthDelimited(number)->assign(reinterpret_cast<const char*>(q),
                                                             length);
        });
        q += length;
        break;
      }
      case WireFormatLite::WIRETYPE_START_GROUP:
      case WireFormatLite::WIRETYPE_END_GROUP:
      default:
        if (group_reader == nullptr || wire_type != WireFormatLite::WIRETYPE_START_GROUP) return p;
        q = group_reader->TakeGroup(number, q, end, unknown);
        if (q == nullptr) return nullptr;
    }
    p = q;
    if (p == end) return p;
    tag = PeekTag(p, end);
  } while (tag >= tags_end);
  return p;
}

const uint8* MessageReader::TakeGroup(int number, const uint8* p, const uint8* end,
                                      UnknownFieldStore* unknown) {
  if (!input_->IncrementRecursionDepth()) return nullptr;
  UnknownFieldSet* group =
      AddOrUndo(unknown->Get(), [&] { return unknown->Get()->AddGroup(number); });
  UnknownFieldStore fields(group);
  if (p != end) p = TakeUnknown(p, end, 0, &fields, this);
  if (p == nullptr) return nullptr;
  uint64 tag;
  const uint8* behind = ReadVarint(p, end, &tag);
  if (behind == nullptr ||
      static_cast<uint32>(tag) !=
          WireFormatLite::MakeTag(number, WireFormatLite::WIRETYPE_END_GROUP)) {
    // The stream's calls cannot read the field at p, either, if the stream ends where the message
    // does; they keep what there is of it. The parse has failed, so the limit stays.
    if (MoveTo(p)) {
      input_->PushLimit(static_cast<int>(end - p));
      KeepUnknownField(input_, input_->ReadTag(), group);
    }
    return nullptr;
  }
  input_->UnsafeDecrementRecursionDepth();
  return behind;
}

bool MessageReader::MergeFromStream(void* message, CodedInputStream* input, const Parts& parts) {
  for (;;) {
    const void* data;
    int size;
    input->GetDirectBufferPointerInline(&data, &size);
    if (size > 0) {
      const uint8* begin = static_cast<const uint8*>(data);
      MessageReader reader(input, begin);
      const uint8* stop = parts.merge_buffered(message, begin, begin + size, &reader);
      if (stop != begin + size && stop != nullptr) {
        stop = reader.TakeMore(stop, begin + size, message, parts, nullptr);
      }
      if (stop == nullptr || !reader.MoveTo(stop)) return false;
    }
    if (input->ExpectAtEnd()) return !IsCutOff(*input);
    StreamField field;
    switch (field.Read(input, parts.metadata(message))) {
      case StreamField::kEnd:
        return field.tag != 0 || !IsCutOff(*input);
      case StreamField::kMalformed:
        return false;
      case StreamField::kKept:
        break;
      case StreamField::kLengthDelimited:
        if (!parts.merge_length_delimited(message, field.tag, input)) return false;
        break;
      case StreamField::kValue:
        // No sub-message, so it needs no reader.
        if (parts.merge_buffered(message, field.bytes, field.bytes + field.size, nullptr) ==
            field.bytes) {
          UnknownFieldStore unknown(parts.metadata(message));
          TakeUnknown(field.bytes, field.bytes + field.size, 0, &unknown, nullptr);
        }
        break;
    }
  }
}

bool MessageReader::ReadMessage(CodedInputStream* input, void* message, const Parts& parts) {
  return input->IncrementRecursionDepth() && ReadNested(input, message, parts);
}

bool MessageReader::ReadNested(CodedInputStream* input, void* message, const Parts& parts) {
  int length;
  if (!ReadLength(input, &length)) return false;
  NestedMessage nested;
  nested.Enter(input, length);
  if (!MergeFromStream(message, input, parts)) return false;
  input->UnsafeDecrementRecursionDepth();
  return nested.Leave(input);
}

const uint8* MessageReader::TakeMessage(int tag_size, const uint8* p, const uint8* end,
                                        void* message, const Parts& parts) {
  size_t length;
  const uint8* body = FindBody(p + tag_size, end, &length);
  if (body == nullptr) return p;
  if (!input_->IncrementRecursionDepth()) return nullptr;
  const uint8* const body_end = body + length;
  const uint8* stop = parts.merge_buffered(message, body, body_end, this);
  if (stop != body_end && stop != nullptr) {
    stop = Finish(stop, body_end, message, parts);
  }
  input_->UnsafeDecrementRecursionDepth();
  return stop;
}

const uint8* MessageReader::TakeMore(const uint8* p, const uint8* end, void* message,
                                     const Parts& parts, MessageReader* group_reader) {
  UnknownFieldStore unknown(parts.metadata(message));
  do {
    const uint8* behind = TakeUnknown(p, end, parts.tags_end, &unknown, group_reader);
    if (behind == p || behind == end || behind == nullptr) return behind;
    p = parts.merge_buffered(message, behind, end, this);
  } while (p != end && p != nullptr);
  return p;
}

const uint8* MessageReader::Finish(const uint8* p, const uint8* end, void* message,
                                   const Parts& parts) {
  p = TakeMore(p, end, message, parts, this);
  if (p == end || p == nullptr) return p;
  if (!MoveTo(p)) return nullptr;
  NestedMessage nested;
  nested.Enter(input_, static_cast<int>(end - p));
  position_ = end;
  const bool whole = MergeFromStream(message, input_, parts) && nested.Leave(input_);
  return whole ? end : nullptr;
}

bool MessageReader::MoveTo(const uint8* p) { return input_->Skip(static_cast<int>(p - position_)); }

}  // namespace calibration_internal
}  // namespace zarvo
