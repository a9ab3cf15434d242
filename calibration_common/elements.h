// How the classes add single sub-messages to a repeated field, and free any (see
// internal/element_blocks.h for how elements share allocations).
#ifndef ZARVO_CALIBRATION_ELEMENTS_H_
#define ZARVO_CALIBRATION_ELEMENTS_H_

#include <google/protobuf/repeated_field.h>

#include <cstddef>
#include <new>

#include "calibration_common/attributes.h"

namespace zarvo {
namespace calibration_internal {

// Frees an element of `size` bytes, which has been destroyed: its part of a block, or what
// `operator new` returned for it.
ZARVO_CALIBRATION_EXPORT void FreeElement(void* element, ::std::size_t size);

// Memory for an element of `size` bytes that the caller constructs and appends to `list` right
// away. `last` is the list's last element so far, or null; the list has room for `room` elements
// more. Behind `last` if that is in a block which this thread has begun for the list; else in a new
// block if the thread has appended some in a row; else what `operator new` returns.
ZARVO_CALIBRATION_EXPORT void* AllocateElement(const void* list, const void* last,
                                               ::std::size_t size, int room);

// Makes a cleared element. Makes room, and the element, before it touches the container, so that a
// failed allocation loses nothing.
template <typename T>
__attribute__((noinline)) void MakeClearedElement(
    ::google::protobuf::RepeatedPtrField<T>* elements) {
  const int size = elements->size();
  if (size == elements->Capacity()) elements->Reserve(size + 1);
  const T* last = size > 0 ? &elements->Get(size - 1) : nullptr;
  elements->AddCleared(
      ::new (AllocateElement(elements, last, sizeof(T), elements->Capacity() - size)) T);
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
