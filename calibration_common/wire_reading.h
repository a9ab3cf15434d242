// How the parsers read what has a length, and what they do not know.
//
// The run-time's own calls forgive too much: a length that cannot be read counts as 0, one beyond
// 32 bits is cut off, and one that runs past the enclosing message shrinks to fit. Here a length is
// what the wire says, and a nested message must end exactly where it was announced to end;
// everything else is malformed and makes the parse fail. All calls return false for malformed or
// truncated input and then leave in place what they have read so far. None allocates more than the
// input that has arrived warrants, whatever length it announces.
#ifndef CALIBRATION_COMMON_WIRE_READING_H_
#define CALIBRATION_COMMON_WIRE_READING_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/repeated_field.h>
#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/wire_format.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>
#include <utility>

#include "calibration_common/runtime.h"

namespace zarvo {
namespace calibration {
namespace wire {

using ::google::protobuf::RepeatedField;
using ::google::protobuf::UnknownFieldSet;
using ::google::protobuf::internal::WireFormat;
using ::google::protobuf::internal::WireFormatLite;
using ::google::protobuf::io::CodedInputStream;

inline bool ReadLength(CodedInputStream* input, int* length) {
  ::google::protobuf::uint64 value;
  if (!input->ReadVarint64(&value) || value > static_cast< ::google::protobuf::uint64>(INT_MAX))
    return false;
  *length = static_cast<int>(value);
  return true;
}

// Reads one value of fixed width or a varint. Leaves `value` as it was on failure.
inline bool ReadValue(CodedInputStream* input, double* value) {
  return WireFormatLite::ReadPrimitive<double, WireFormatLite::TYPE_DOUBLE>(input, value);
}
inline bool ReadValue(CodedInputStream* input, float* value) {
  return WireFormatLite::ReadPrimitive<float, WireFormatLite::TYPE_FLOAT>(input, value);
}
inline bool ReadValue(CodedInputStream* input, ::google::protobuf::int32* value) {
  return WireFormatLite::ReadPrimitive< ::google::protobuf::int32, WireFormatLite::TYPE_INT32>(
      input, value);
}
inline bool ReadValue(CodedInputStream* input, ::google::protobuf::int64* value) {
  return WireFormatLite::ReadPrimitive< ::google::protobuf::int64, WireFormatLite::TYPE_INT64>(
      input, value);
}
inline bool ReadValue(CodedInputStream* input, bool* value) {
  return WireFormatLite::ReadPrimitive<bool, WireFormatLite::TYPE_BOOL>(input, value);
}

// Reads the element of a repeated field behind `tag`, and those that follow under the same tag as
// far as they are buffered and the field has room for them.
inline bool ReadElements(int tag_size, ::google::protobuf::uint32 tag, CodedInputStream* input,
                         RepeatedField<double>* values) {
  return WireFormatLite::ReadRepeatedPrimitive<double, WireFormatLite::TYPE_DOUBLE>(tag_size, tag,
                                                                                    input, values);
}
inline bool ReadElements(int tag_size, ::google::protobuf::uint32 tag, CodedInputStream* input,
                         RepeatedField<float>* values) {
  return WireFormatLite::ReadRepeatedPrimitive<float, WireFormatLite::TYPE_FLOAT>(tag_size, tag,
                                                                                  input, values);
}

// Reads a string or bytes value, replacing what `value` held.
inline bool ReadString(CodedInputStream* input, ::std::string* value) {
  int length;
  return ReadLength(input, &length) && input->ReadString(value, length);
}

// Reads a singular sub-message, which takes one unit of the stream's depth budget.
template <typename T>
bool ReadMessage(CodedInputStream* input, T* message) {
  int length;
  if (!ReadLength(input, &length)) return false;
  const int start = input->CurrentPosition();
  const ::std::pair<CodedInputStream::Limit, int> limit_and_depth =
      input->IncrementRecursionDepthAndPushLimit(length);
  return limit_and_depth.second >= 0 && message->T::MergePartialFromCodedStream(input) &&
         input->DecrementRecursionDepthAndPopLimit(limit_and_depth.first) &&
         input->CurrentPosition() - start == length;
}

// Reads one element of a repeated sub-message. The depth budget is the caller's: a run of elements
// takes one unit.
template <typename T>
bool ReadElement(CodedInputStream* input, T* element) {
  int length;
  if (!ReadLength(input, &length)) return false;
  const int start = input->CurrentPosition();
  const CodedInputStream::Limit limit = input->PushLimit(length);
  return element->T::MergePartialFromCodedStream(input) &&
         input->CheckEntireMessageConsumedAndPopLimit(limit) &&
         input->CurrentPosition() - start == length;
}

// Reads a packed run of fixed-width values (T is double or float) and appends them to `values`.
template <typename T>
bool ReadPacked(CodedInputStream* input, RepeatedField<T>* values) {
  const int width = static_cast<int>(sizeof(T));
  int length;
  if (!ReadLength(input, &length) || length % width != 0) return false;
  while (length > 0) {
    const void* buffer;
    int available;
    input->GetDirectBufferPointerInline(&buffer, &available);
    const int count = ::std::min(length, available) / width;
    if (count == 0) {  // the value straddles two of the stream's buffers, or the input ends
      T value;
      if (!ReadValue(input, &value)) return false;
      values->Add(value);
      length -= width;
      continue;
    }
    const int old_size = values->size();
    values->Resize(old_size + count, T());
    ::std::memcpy(values->mutable_data() + old_size, buffer, static_cast<size_t>(count * width));
    input->Skip(count * width);
    length -= count * width;
  }
  return true;
}

// Keeps a field that the message does not know, or whose wire type it does not expect, in
// `unknown`. Field number 0 and wire types that do not exist are malformed.
inline bool KeepUnknownField(CodedInputStream* input, ::google::protobuf::uint32 tag,
                             UnknownFieldSet* unknown) {
  const int number = WireFormatLite::GetTagFieldNumber(tag);
  if (number == 0) return false;
  switch (WireFormatLite::GetTagWireType(tag)) {
    case WireFormatLite::WIRETYPE_LENGTH_DELIMITED:
      return ReadString(input, unknown->AddLengthDelimited(number));
    case WireFormatLite::WIRETYPE_START_GROUP: {
      if (!input->IncrementRecursionDepth()) return false;
      UnknownFieldSet* group = unknown->AddGroup(number);
      for (;;) {
        const ::google::protobuf::uint32 inner_tag = input->ReadTag();
        if (inner_tag == 0) return false;
        if (WireFormatLite::GetTagWireType(inner_tag) == WireFormatLite::WIRETYPE_END_GROUP) break;
        if (!KeepUnknownField(input, inner_tag, group)) return false;
      }
      input->UnsafeDecrementRecursionDepth();
      return input->LastTagWas(WireFormatLite::MakeTag(number, WireFormatLite::WIRETYPE_END_GROUP));
    }
    default:
      return WireFormat::SkipField(input, tag, unknown);
  }
}

}  // namespace wire
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_COMMON_WIRE_READING_H_
