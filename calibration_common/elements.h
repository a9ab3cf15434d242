// How the classes add single sub-messages to a repeated field (see element_blocks.h for many).
#ifndef CALIBRATION_COMMON_ELEMENTS_H_
#define CALIBRATION_COMMON_ELEMENTS_H_

#include <google/protobuf/repeated_field.h>

namespace zarvo {
namespace calibration {
namespace runtime {

// Makes a cleared element. Makes room, and the element, before it touches the container, so that a
// failed allocation loses nothing.
template <typename T>
__attribute__((noinline)) void AddClearedElement(
    ::google::protobuf::RepeatedPtrField<T>* elements) {
  if (elements->size() == elements->Capacity()) elements->Reserve(elements->size() + 1);
  elements->AddCleared(new T);
}

// Appends an element, a cleared one if there is any. REQUIRES that the container is on no arena, as
// that of a record always is.
template <typename T>
T* AddElement(::google::protobuf::RepeatedPtrField<T>* elements) {
  // A loop, though one pass will do: now the compiler knows that Add() finds a cleared element, and
  // leaves out all that it does otherwise.
  while (elements->ClearedCount() <= 0) AddClearedElement(elements);
  return elements->Add();
}

}  // namespace runtime
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_COMMON_ELEMENTS_H_
