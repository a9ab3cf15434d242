#include "calibration_common/internal/buffer_reader.h"

#include <cstddef>
#include <cstring>

namespace zarvo {
namespace calibration_internal {

namespace {

template <typename T>
const uint8* TakePackedValues(int tag_size, const uint8* p, const uint8* end,
                              RepeatedField<T>* values) {
  size_t length;
  const uint8* body = FindBody(p + tag_size, end, &length);
  if (body == nullptr) return p;
  if (length % sizeof(T) != 0) return nullptr;  // as ReadPacked()
  if (length > 0) {
    T* elements = AppendNumbers(values, static_cast<int>(length / sizeof(T)));
    ::std::memcpy(elements, body, length);
  }
  return body + length;
}

template <typename T>
const uint8* TakeElementsOf(uint8 tag, const uint8* p, const uint8* end, RepeatedField<T>* values) {
  const ::std::ptrdiff_t kStride = 1 + static_cast<::std::ptrdiff_t>(sizeof(T));
  const uint8* stop = p;
  while (end - stop >= 4 * kStride && stop[0] == tag && stop[kStride] == tag &&
         stop[2 * kStride] == tag && stop[3 * kStride] == tag) {
    stop += 4 * kStride;
  }
  while (end - stop >= kStride && *stop == tag) stop += kStride;
  if (stop == p) return p;

  T* element = AppendNumbers(values, static_cast<int>((stop - p) / kStride));
  for (; stop - p >= 4 * kStride; p += 4 * kStride, element += 4) {
    ::std::memcpy(element, p + 1, sizeof(T));
    ::std::memcpy(element + 1, p + 1 + kStride, sizeof(T));
    ::std::memcpy(element + 2, p + 1 + 2 * kStride, sizeof(T));
    ::std::memcpy(element + 3, p + 1 + 3 * kStride, sizeof(T));
  }
  for (; p != stop; p += kStride) ::std::memcpy(element++, p + 1, sizeof(T));
  return stop;
}

}  // namespace

const uint8* TakeElements(uint8 tag, const uint8* p, const uint8* end,
                          RepeatedField<double>* values) {
  return TakeElementsOf(tag, p, end, values);
}
const uint8* TakeElements(uint8 tag, const uint8* p, const uint8* end,
                          RepeatedField<float>* values) {
  return TakeElementsOf(tag, p, end, values);
}

const uint8* ReadLongVarint(const uint8* p, const uint8* end, uint64* value) {
  const uint8* const stop = end - p > kMaxVarintSize ? p + kMaxVarintSize : end;
  uint64 result = 0;
  for (int shift = 0; p < stop; shift += 7) {
    const uint64 byte = *p++;
    result |= (byte & 0x7F) << shift;
    if (byte < 0x80) {
      *value = result;
      return p;
    }
  }
  return nullptr;
}

const uint8* TakeString(int tag_size, const uint8* p, const uint8* end, ::std::string* value) {
  size_t length;
  const uint8* body = FindBody(p + tag_size, end, &length);
  if (body == nullptr) return p;
  value->assign(reinterpret_cast<const char*>(body), length);
  return body + length;
}

const uint8* TakePacked(int tag_size, const uint8* p, const uint8* end,
                        RepeatedField<double>* values) {
  return TakePackedValues(tag_size, p, end, values);
}
const uint8* TakePacked(int tag_size, const uint8* p, const uint8* end,
                        RepeatedField<float>* values) {
  return TakePackedValues(tag_size, p, end, values);
}

}  // namespace calibration_internal
}  // namespace zarvo
