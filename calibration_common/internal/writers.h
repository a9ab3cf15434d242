// What the writers and the size computation share: encoded sizes, and writing texts, sub-messages
// and repeated numbers to an array or a stream.
//
// A record has at most INT_MAX bytes. Sums that can be larger have 64 bits, which no list of
// elements exceeds; a record of such a sum is sized as -1. As a sub-message it counts as 2^32 - 1
// bytes, so that what is around it is too large as well.
#ifndef ZARVO_CALIBRATION_INTERNAL_WRITERS_H_
#define ZARVO_CALIBRATION_INTERNAL_WRITERS_H_

#include <climits>
#include <cstring>
#include <string>

#include "calibration_common/internal/wire_constants.h"
#include "calibration_common/runtime.h"

namespace zarvo {
namespace calibration_internal {

inline uint32 Int32Size(int32 value) {
  return static_cast<uint32>(CodedOutputStream::VarintSize32SignExtended(value));
}
inline uint32 Int64Size(int64 value) {
  return static_cast<uint32>(CodedOutputStream::VarintSize64(static_cast<uint64>(value)));
}

// A length prefix and as many bytes. Of more than 2^32 - 1 bytes the prefix comes out too short,
// which does not matter: they are too many all the same.
inline uint64 LengthDelimitedSize(uint64 length) {
  if (length < 0x80) return 1 + length;
  return static_cast<uint32>(CodedOutputStream::VarintSize32(static_cast<uint32>(length))) + length;
}
inline uint64 StringSize(const ::std::string& value) { return LengthDelimitedSize(value.size()); }
// Computes the sub-message's size anew.
template <typename T>
inline uint64 MessageSize(const T& message) {
  return LengthDelimitedSize(static_cast<uint32>(message.T::ByteSize()));
}

// What ByteSize() returns for a record of `size` bytes.
inline int SizeOrTooLarge(uint64 size) {
  return size <= static_cast<uint64>(INT_MAX) ? static_cast<int>(size) : -1;
}

// These return the position behind what they write.
uint8* WriteVarintToArray(uint64 value, uint8* target);
inline uint8* WriteInt64ToArray(int number, int64 value, uint8* target) {
  return WriteVarintToArray(
      static_cast<uint64>(value),
      WireFormatLite::WriteTagToArray(number, WireFormatLite::WIRETYPE_VARINT, target));
}
inline uint8* WriteInt32ToArray(int number, int32 value, uint8* target) {
  return WriteInt64ToArray(number, value, target);  // so that negative values have ten bytes
}

uint8* WriteLongLengthToArray(uint32 length, uint8* target);
inline uint8* WriteLengthToArray(uint32 length, uint8* target) {
  if (length >= 0x80) return WriteLongLengthToArray(length, target);
  *target = static_cast<uint8>(length);
  return target + 1;
}

uint8* WriteTextBehindTagToArray(const ::std::string& value, uint8* target);
inline uint8* WriteTextToArray(int number, const ::std::string& value, uint8* target) {
  return WriteTextBehindTagToArray(
      value,
      WireFormatLite::WriteTagToArray(number, WireFormatLite::WIRETYPE_LENGTH_DELIMITED, target));
}

// Writes a sub-message, whose length is its cached size; returns the position behind it.
template <typename T>
inline uint8* WriteMessageToArray(int number, const T& message, uint8* target) {
  target =
      WireFormatLite::WriteTagToArray(number, WireFormatLite::WIRETYPE_LENGTH_DELIMITED, target);
  target = WriteLengthToArray(static_cast<uint32>(message.T::GetCachedSize()), target);
  return message.T::SerializeWithCachedSizesToArray(target);
}

// Writes the tag and the length of a sub-message. Returns where the stream's buffer has room for
// all of it, which then counts as written, or null.
uint8* BeginMessage(int number, int size, CodedOutputStream* output);

// Writes a sub-message to a stream: at once where the stream's buffer has room for all of it.
template <typename T>
inline void WriteMessage(int number, const T& message, CodedOutputStream* output) {
  uint8* target = BeginMessage(number, message.T::GetCachedSize(), output);
  if (target != nullptr) {
    message.T::SerializeWithCachedSizesToArray(target);
  } else {
    message.T::SerializeWithCachedSizes(output);
  }
}

void WriteWithOneByteTag(uint8 tag, const RepeatedField<double>& values, CodedOutputStream* output);
void WriteWithOneByteTag(uint8 tag, const RepeatedField<float>& values, CodedOutputStream* output);
uint8* WriteWithOneByteTagToArray(uint8 tag, const RepeatedField<double>& values, uint8* target);
uint8* WriteWithOneByteTagToArray(uint8 tag, const RepeatedField<float>& values, uint8* target);

template <uint32 kTag, typename T>
inline uint8* WriteElementToArray(T value, uint8* target) {
  target = CodedOutputStream::WriteTagToArray(kTag, target);
  ::std::memcpy(target, &value, sizeof(T));
  return target + sizeof(T);
}

// Write the elements of a repeated number, each behind a tag of its own. A tag of one byte is the
// case that is made fast.
template <uint32 kTag, typename T>
inline void WriteElements(const RepeatedField<T>& values, CodedOutputStream* output) {
  if (values.empty()) return;
  if (kTag < 0x80) return WriteWithOneByteTag(static_cast<uint8>(kTag), values, output);
  for (T value : values) {
    uint8 element[kMaxTagSize + sizeof(T)];
    const uint8* end = WriteElementToArray<kTag>(value, element);
    output->WriteRaw(element, static_cast<int>(end - element));
  }
}
template <uint32 kTag, typename T>
inline uint8* WriteElementsToArray(const RepeatedField<T>& values, uint8* target) {
  if (values.empty()) return target;
  if (kTag < 0x80) return WriteWithOneByteTagToArray(static_cast<uint8>(kTag), values, target);
  for (T value : values) target = WriteElementToArray<kTag>(value, target);
  return target;
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_WRITERS_H_
