// How a repeated number makes room, from 3.0 on (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_NUMBERS_3_0_H_
#define ZARVO_CALIBRATION_RUNTIME_NUMBERS_3_0_H_

#include <google/protobuf/repeated_field.h>

namespace zarvo {
namespace calibration_internal {

// Appends `count` elements, whose values the caller sets; returns the first.
template <typename T>
inline T* AppendNumbers(::google::protobuf::RepeatedField<T>* values, int count) {
  const int old_size = values->size();
  values->Resize(old_size + count, T());
  return values->mutable_data() + old_size;
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_NUMBERS_3_0_H_
