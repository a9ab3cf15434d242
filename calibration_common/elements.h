// How the classes add sub-messages to a repeated field.
#ifndef CALIBRATION_COMMON_ELEMENTS_H_
#define CALIBRATION_COMMON_ELEMENTS_H_

#include <google/protobuf/repeated_field.h>

#include <algorithm>

namespace zarvo {
namespace calibration {
namespace runtime {

// Appends an element, a cleared one if there is any. Unlike the container's own Add(), makes room
// and then makes the element before it touches the container, so that a failed allocation loses
// nothing. REQUIRES that the container is on no arena, as that of a record always is.
template <typename T>
T* AddElement(::google::protobuf::RepeatedPtrField<T>* elements) {
  if (elements->ClearedCount() > 0) return elements->Add();
  if (elements->size() == elements->Capacity()) elements->Reserve(elements->size() + 1);
  T* element = new T;
  elements->UnsafeArenaAddAllocated(element);
  return element;
}

template <typename T>
void MergeSomeElements(const ::google::protobuf::RepeatedPtrField<T>& from,
                       ::google::protobuf::RepeatedPtrField<T>* to) {
  const int count = from.size();
  const int cleared = ::std::min(to->ClearedCount(), count);
  to->Reserve(to->size() + count);
  int i = 0;
  for (; i < cleared; ++i) to->Add()->T::MergeFrom(from.Get(i));
  for (; i < count; ++i) {
    T* element = new T;
    to->UnsafeArenaAddAllocated(element);
    element->T::MergeFrom(from.Get(i));
  }
}

// Appends a copy of each element of `from`.
template <typename T>
inline void MergeElements(const ::google::protobuf::RepeatedPtrField<T>& from,
                          ::google::protobuf::RepeatedPtrField<T>* to) {
  if (!from.empty()) MergeSomeElements(from, to);
}

}  // namespace runtime
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_COMMON_ELEMENTS_H_
