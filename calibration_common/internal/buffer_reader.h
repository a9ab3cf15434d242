// How the parsers read what lies in a coded stream's buffer, which is nearly everything: straight
// from there, between two pointers.
//
// The Take... calls: p stands at a field's tag, which is known and has kTagSize bytes. They read
// the field and return the position behind it; if they cannot, p, and leave the value as it was; if
// the field is malformed, null. What such a call of a known field declines by returning p,
// TakeUnknown() (message_reader.h) must decline, too: it would keep it as unknown. Hence a packed
// run that holds no whole number of values is refused at once.
#ifndef ZARVO_CALIBRATION_INTERNAL_BUFFER_READER_H_
#define ZARVO_CALIBRATION_INTERNAL_BUFFER_READER_H_

#include <cstring>
#include <string>

#include "calibration_common/internal/wire_constants.h"
#include "calibration_common/runtime.h"

namespace zarvo {
namespace calibration_internal {

// Moves *p to `next`, what such a call has returned. False if MergeBuffered() is to stop there.
inline bool Advance(const uint8** p, const uint8* next) {
  const bool moved = next != *p && next != nullptr;
  *p = next;
  return moved;
}

// Reads a varint from [p, end). Returns the position behind it, or null if it is cut off or too
// long.
const uint8* ReadLongVarint(const uint8* p, const uint8* end, uint64* value);
inline const uint8* ReadVarint(const uint8* p, const uint8* end, uint64* value) {
  if (p < end && *p < 0x80) {
    *value = *p;
    return p + 1;
  }
  return ReadLongVarint(p, end, value);
}

template <int kTagSize, typename T>
inline const uint8* TakeFixed(const uint8* p, const uint8* end, T* value) {
  const int size = kTagSize + static_cast<int>(sizeof(T));
  if (end - p < size) return p;
  ::std::memcpy(value, p + kTagSize, sizeof(T));
  return p + size;
}
template <int kTagSize>
inline const uint8* TakeValue(const uint8* p, const uint8* end, double* value) {
  return TakeFixed<kTagSize>(p, end, value);
}
template <int kTagSize>
inline const uint8* TakeValue(const uint8* p, const uint8* end, float* value) {
  return TakeFixed<kTagSize>(p, end, value);
}
template <int kTagSize>
inline const uint8* TakeValue(const uint8* p, const uint8* end, int32* value) {
  uint64 number;
  const uint8* behind = ReadVarint(p + kTagSize, end, &number);
  if (behind == nullptr) return p;
  *value = static_cast<int32>(number);
  return behind;
}
// int64 and bool are rare: not inline.
template <int kTagSize>
const uint8* TakeValue(const uint8* p, const uint8* end, int64* value) {
  uint64 number;
  const uint8* behind = ReadVarint(p + kTagSize, end, &number);
  if (behind == nullptr) return p;
  *value = static_cast<int64>(number);
  return behind;
}
template <int kTagSize>
const uint8* TakeValue(const uint8* p, const uint8* end, bool* value) {
  uint64 number;
  const uint8* behind = ReadVarint(p + kTagSize, end, &number);
  if (behind == nullptr) return p;
  *value = number != 0;
  return behind;
}

// What follows a length. Returns its first byte and sets *length, or returns null if [p, end) does
// not hold all of it.
inline const uint8* FindBody(const uint8* p, const uint8* end, size_t* length) {
  uint64 announced;
  const uint8* body = ReadVarint(p, end, &announced);
  if (body == nullptr || announced > static_cast<uint64>(end - body)) return nullptr;
  *length = announced;
  return body;
}

// Replaces what `value` held.
const uint8* TakeString(int tag_size, const uint8* p, const uint8* end, ::std::string* value);

// A packed run of a repeated number.
const uint8* TakePacked(int tag_size, const uint8* p, const uint8* end,
                        RepeatedField<double>* values);
const uint8* TakePacked(int tag_size, const uint8* p, const uint8* end,
                        RepeatedField<float>* values);

// The tag at p if it has one or two bytes and is written no longer than need be, otherwise 0.
// REQUIRES p < end.
inline uint32 PeekTag(const uint8* p, const uint8* end) {
  if (*p < 0x80) return *p;
  if (end - p < 2 || p[1] == 0 || p[1] >= 0x80) return 0;
  return static_cast<uint32>(p[1]) << 7 | (p[0] & 0x7Fu);
}

// Whether kTag, a tag of one or two bytes, stands at p. StartsWith() REQUIRES that there are bytes.
template <uint32 kTag>
inline bool StartsWith(const uint8* p) {
  if (kTag < 0x80) return *p == kTag;
  const uint8 tag[] = {(kTag & 0x7F) | 0x80, (kTag >> 7) & 0x7F};
  return ::std::memcmp(p, tag, sizeof(tag)) == 0;
}
template <uint32 kTag>
inline bool NextIs(const uint8* p, const uint8* end) {
  return (kTag < 0x80 ? p != end : end - p >= 2) && StartsWith<kTag>(p);
}

// Elements of a repeated number, one behind each tag, as many as follow each other. A tag of one
// byte is the case that is made fast.
const uint8* TakeElements(uint8 tag, const uint8* p, const uint8* end,
                          RepeatedField<double>* values);
const uint8* TakeElements(uint8 tag, const uint8* p, const uint8* end,
                          RepeatedField<float>* values);
template <uint32 kTag, typename T>
inline const uint8* TakeElements(const uint8* p, const uint8* end, RepeatedField<T>* values) {
  if (kTag < 0x80) return TakeElements(static_cast<uint8>(kTag), p, end, values);
  do {
    T value;
    const uint8* behind = TakeValue<2>(p, end, &value);
    if (behind == p) break;
    values->Add(value);
    p = behind;
  } while (NextIs<kTag>(p, end));
  return p;
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_BUFFER_READER_H_
