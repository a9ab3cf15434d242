#include "calibration_common/internal/stream_reader.h"

#include <google/protobuf/wire_format.h>

#include <algorithm>
#include <climits>
#include <cstring>

#include "calibration_common/internal/unknown_fields.h"

namespace zarvo {
namespace calibration_internal {

namespace {

// How many times as much as has arrived of a text room is made for.
const int kTrust = 16;

// Appends what has arrived, piece by piece. The stream's own ReadString() makes room for the whole
// length first, even if no such input ever comes; this makes room as far as what has arrived
// warrants, from the second piece on: for all of it as soon as may be, and for less when there is
// no more.
bool AppendBytes(CodedInputStream* input, int length, ::std::string* value) {
  const size_t whole = static_cast<size_t>(length);
  for (bool first = true; length > 0; first = false) {
    const void* data;
    int size;
    if (!input->GetDirectBufferPointer(&data, &size)) return false;
    const int count = ::std::min(length, size);
    const size_t piece = static_cast<size_t>(count);
    const size_t room = ::std::min(whole, value->size() * kTrust);
    const size_t needed = room == whole ? whole : value->size() + piece;
    if (!first && value->capacity() < needed) value->reserve(room);
    value->append(static_cast<const char*>(data), piece);
    if (!input->Skip(count)) return false;
    length -= count;
  }
  return true;
}

template <typename T>
bool ReadPackedValues(CodedInputStream* input, RepeatedField<T>* values) {
  const int width = static_cast<int>(sizeof(T));
  int length;
  if (!ReadLength(input, &length) || length % width != 0) return false;
  while (length > 0) {
    const void* data;
    int size;
    input->GetDirectBufferPointerInline(&data, &size);
    const int count = ::std::min(length, size) / width;
    if (count == 0) {  // the value straddles two of the stream's buffers, or the input ends
      T value;
      if (!input->ReadRaw(&value, width)) return false;
      values->Add(value);
      length -= width;
      continue;
    }
    ::std::memcpy(AppendNumbers(values, count), data, sizeof(T) * static_cast<size_t>(count));
    if (!input->Skip(count * width)) return false;
    length -= count * width;
  }
  return true;
}

bool KeepGroup(CodedInputStream* input, int number, UnknownFieldSet* unknown) {
  if (!input->IncrementRecursionDepth()) return false;
  UnknownFieldSet* group = AddOrUndo(unknown, [&] { return unknown->AddGroup(number); });
  for (;;) {
    const uint32 tag = input->ReadTag();
    if (tag == 0) return false;
    if (EndsMessage(tag)) break;
    if (!KeepUnknownField(input, tag, group)) return false;
  }
  input->UnsafeDecrementRecursionDepth();
  return input->LastTagWas(WireFormatLite::MakeTag(number, WireFormatLite::WIRETYPE_END_GROUP));
}

}  // namespace

bool ReadLength(CodedInputStream* input, int* length) {
  uint64 value;
  if (!input->ReadVarint64(&value) || value > static_cast<uint64>(INT_MAX)) return false;
  *length = static_cast<int>(value);
  return true;
}

bool ReadString(CodedInputStream* input, ::std::string* value) {
  value->clear();
  int length;
  return ReadLength(input, &length) && AppendBytes(input, length, value);
}

bool ReadPacked(CodedInputStream* input, RepeatedField<double>* values) {
  return ReadPackedValues(input, values);
}
bool ReadPacked(CodedInputStream* input, RepeatedField<float>* values) {
  return ReadPackedValues(input, values);
}

void NestedMessage::Enter(CodedInputStream* input, int length) {
  end_ = static_cast<int64>(input->CurrentPosition()) + length;
  limit_ = input->PushLimit(length);
}

bool NestedMessage::Leave(CodedInputStream* input) {
  return input->CheckEntireMessageConsumedAndPopLimit(limit_) && input->CurrentPosition() == end_;
}

bool KeepUnknownField(CodedInputStream* input, uint32 tag, UnknownFieldSet* unknown) {
  const int number = WireFormatLite::GetTagFieldNumber(tag);
  if (number == 0) return false;
  switch (WireFormatLite::GetTagWireType(tag)) {
    case WireFormatLite::WIRETYPE_LENGTH_DELIMITED: {
      int length;
      return ReadLength(input, &length) && AppendBytes(input, length, AddOrUndo(unknown, [&] {
                                                         return unknown->AddLengthDelimited(number);
                                                       }));
    }
    case WireFormatLite::WIRETYPE_START_GROUP:
      return KeepGroup(input, number, unknown);
    case WireFormatLite::WIRETYPE_VARINT:
    case WireFormatLite::WIRETYPE_FIXED64:
    case WireFormatLite::WIRETYPE_FIXED32:
    case WireFormatLite::WIRETYPE_END_GROUP:
    default:
      return AddOrUndo(unknown, [&] {
        return ::google::protobuf::internal::WireFormat::SkipField(input, tag, unknown);
      });
  }
}

StreamField::Kind StreamField::Read(CodedInputStream* input, Metadata* metadata) {
  tag = input->ReadTag();
  if (EndsMessage(tag)) return kEnd;
  if (WireFormatLite::GetTagFieldNumber(tag) == 0) return kMalformed;
  uint8* target = CodedOutputStream::WriteVarint32ToArray(tag, bytes);
  switch (WireFormatLite::GetTagWireType(tag)) {
    case WireFormatLite::WIRETYPE_LENGTH_DELIMITED:
      return kLengthDelimited;
    case WireFormatLite::WIRETYPE_START_GROUP:
      return KeepUnknownField(input, tag, MutableUnknownFields(metadata)) ? kKept : kMalformed;
    case WireFormatLite::WIRETYPE_VARINT: {
      uint64 value;
      if (!input->ReadVarint64(&value)) return kMalformed;
      target = CodedOutputStream::WriteVarint64ToArray(value, target);
      break;
    }
    case WireFormatLite::WIRETYPE_FIXED64:
      if (!input->ReadRaw(target, 8)) return kMalformed;
      target += 8;
      break;
    case WireFormatLite::WIRETYPE_FIXED32:
      if (!input->ReadRaw(target, 4)) return kMalformed;
      target += 4;
      break;
    case WireFormatLite::WIRETYPE_END_GROUP:
    default:  // 6 and 7, which do not exist
      return kMalformed;
  }
  size = static_cast<int>(target - bytes);
  return kValue;
}

}  // namespace calibration_internal
}  // namespace zarvo
