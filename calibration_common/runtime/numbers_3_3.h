// How a repeated number makes room, from 3.3 on (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_NUMBERS_3_3_H_
#define ZARVO_CALIBRATION_RUNTIME_NUMBERS_3_3_H_

#include <google/protobuf/repeated_field.h>

namespace zarvo {
namespace calibration_internal {

// Appends `count` elements, whose values the caller sets; returns the first.
template <typename T>
inline T* AppendNumbers(::google::protobuf::RepeatedField<T>* values, int count) {
  values->Reserve(values->size() + count);
  return values->AddNAlreadyReserved(count);
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_NUMBERS_3_3_H_
