// Runs: at least three singular doubles, or floats, of one message whose field numbers, all below
// 16, follow each other, and which are all optional or all required. Such fields are mostly all
// present; then the run is read from a buffer, or written to an array, at once.
//
// On the wire: tag, value, tag, value, ...; each tag is one byte, 8 more than the one before.
#ifndef ZARVO_CALIBRATION_INTERNAL_RUNS_H_
#define ZARVO_CALIBRATION_INTERNAL_RUNS_H_

#include <cstddef>
#include <cstring>

#include "calibration_common/internal/writers.h"

namespace zarvo {
namespace calibration_internal {

// Whether the tags of a run stand at p, the first of which is kTag.
template <uint32 kTag, typename T>
inline bool TagsOfRunAre(const uint8* p, const T*) {
  return *p == kTag;
}
template <uint32 kTag, typename T, typename... Rest>
inline bool TagsOfRunAre(const uint8* p, const T*, const Rest*... rest) {
  return *p == kTag && TagsOfRunAre<kTag + 8>(p + 1 + sizeof(T), rest...);
}

template <typename T>
inline const uint8* CopyRun(const uint8* p, T* value) {
  ::std::memcpy(value, p + 1, sizeof(T));
  return p + 1 + sizeof(T);
}
template <typename T, typename... Rest>
inline const uint8* CopyRun(const uint8* p, T* value, Rest*... rest) {
  return CopyRun(CopyRun(p, value), rest...);
}

// Reads a run and moves *p behind it. False, with nothing read, unless all of it lies in [*p, end).
template <uint32 kTag, typename T, typename... Rest>
inline bool TakeRun(const uint8** p, const uint8* end, T* value, Rest*... rest) {
  const ::std::ptrdiff_t size = (1 + sizeof...(Rest)) * (1 + sizeof(T));
  if (end - *p < size || !TagsOfRunAre<kTag>(*p, value, rest...)) return false;
  *p = CopyRun(*p, value, rest...);
  return true;
}

// Writes a run; returns the position behind it.
template <uint32 kTag, typename T>
inline uint8* WriteRunToArray(uint8* target, T value) {
  return WriteElementToArray<kTag>(value, target);
}
template <uint32 kTag, typename T, typename... Rest>
inline uint8* WriteRunToArray(uint8* target, T value, Rest... rest) {
  return WriteRunToArray<kTag + 8>(WriteRunToArray<kTag>(target, value), rest...);
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_RUNS_H_
