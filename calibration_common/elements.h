// How the classes add single sub-messages to a repeated field, and free any (see
// internal/element_blocks.h for how they add many).
#ifndef ZARVO_CALIBRATION_ELEMENTS_H_
#define ZARVO_CALIBRATION_ELEMENTS_H_

#include <google/protobuf/repeated_field.h>

#include <cstddef>

#include "calibration_common/attributes.h"

namespace zarvo {
namespace calibration_internal {

// Frees an element of `size` bytes, which has been destroyed: its part of a block, or what
// `operator new` returned for it.
ZARVO_CALIBRATION_EXPORT void FreeElement(void* element, ::std::size_t size);

// Makes a cleared element. Makes room, and the element, before it touches the container, so that a
// failed allocation loses nothing.
template <typename T>
__attribute__((noinline)) void MakeClearedElement(
    ::google::protobuf::RepeatedPtrField<T>* elements) {
  if (elements->size() == elements->Capacity()) elements->Reserve(elements->size() + 1);
  elements->AddCleared(new T);
}

// Appends an element, a cleared one if there is any. REQUIRES that the container is on no arena, as
// that of a record always is.
template <typename T>
T* AppendElement(::google::protobuf::RepeatedPtrField<T>* elements) {
  // A loop, though one pass will do: now the compiler knows that Add() finds a cleared element, and
  // leaves out all that it does otherwise.
  while (elements->ClearedCount() <= 0) MakeClearedElement(elements);
  return elements->Add();
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_ELEMENTS_H_
