// Elements of a repeated field that come into being together, as a parse, a merge or a copy needs
// them: they share an allocation, kMaxElements at most, since allocating and freeing each by itself
// takes longer than reading it.
//
// Each is an object of its own in all that a program can do with it: it can be released, kept,
// handed to another field, and deleted, in any order and by any thread. The block is freed with the
// last of its elements.
#ifndef ZARVO_CALIBRATION_INTERNAL_ELEMENT_BLOCKS_H_
#define ZARVO_CALIBRATION_INTERNAL_ELEMENT_BLOCKS_H_

#include <google/protobuf/repeated_field.h>

#include <cstddef>

#include "calibration_common/elements.h"

namespace zarvo {
namespace calibration_internal {

// A block that is being filled. Its layout: slots, each an element and the address of the block's
// Owner; then the Owner. The first element stands at the beginning, so that valgrind sees who holds
// the block; once that element is gone, it calls the others "possibly lost" if they still live when
// the process ends.
class ElementBlock {
 public:
  // What the address takes: as much as the strictest alignment of an element, so that each slot is
  // aligned as the first is.
  static const ::std::size_t kOwnerSlotSize = 8;

  // Few enough that a program which keeps one element of each block does not keep much more.
  static const int kMaxElements = 16;

  // Allocates slots for `count` elements of `size` bytes. REQUIRES that all of them are
  // constructed.
  ElementBlock(::std::size_t size, int count);

  // Where the next element goes.
  void* NextSlot() {
    void* slot = next_slot_;
    next_slot_ += stride_;
    return slot;
  }

  // Gives back the slot of an element, which has been destroyed.
  static void Free(void* slot, ::std::size_t size);

 private:
  struct Owner;

  static Owner** OwnerOf(void* slot, ::std::size_t size) {
    return reinterpret_cast<Owner**>(static_cast<char*>(slot) + size);
  }

  char* next_slot_;
  ::std::size_t stride_;
};

// An element of a block. That it is one shows in how it is deleted, and in its typeid.
template <typename T>
class BlockElement final : public T {
 public:
  static void* operator new(::std::size_t, ElementBlock* block) noexcept {
    return block->NextSlot();
  }
  static void operator delete(void*, ElementBlock*) {}  // no constructor of a record throws
  static void operator delete(void* slot, ::std::size_t size) { ElementBlock::Free(slot, size); }
};

// Makes room for `count` elements and as many cleared ones as a block takes, `count` at most.
// REQUIRES that the container has no cleared ones. Allocates before it touches the container.
template <typename T>
__attribute__((noinline)) void MakeClearedElements(
    ::google::protobuf::RepeatedPtrField<T>* elements, int count) {
  static_assert(sizeof(BlockElement<T>) == sizeof(T), "an element of a block adds no members");
  static_assert(alignof(T) <= ElementBlock::kOwnerSlotSize, "slots are not aligned");
  if (count == 1) {
    MakeClearedElement(elements);
    return;
  }
  elements->Reserve(elements->size() + count);
  if (count > ElementBlock::kMaxElements) count = ElementBlock::kMaxElements;
  ElementBlock block(sizeof(T), count);
  for (; count > 0; --count) elements->AddCleared(new (&block) BlockElement<T>);
}

template <typename T>
void AppendCopies(const ::google::protobuf::RepeatedPtrField<T>& from,
                  ::google::protobuf::RepeatedPtrField<T>* to) {
  const int count = from.size();
  for (int i = 0; i < count; ++i) {
    while (to->ClearedCount() <= 0) MakeClearedElements(to, count - i);  // as in AppendElement()
    to->Add()->T::MergeFrom(from.Get(i));
  }
}

// Appends a copy of each element of `from`.
template <typename T>
inline void MergeElements(const ::google::protobuf::RepeatedPtrField<T>& from,
                          ::google::protobuf::RepeatedPtrField<T>* to) {
  if (!from.empty()) AppendCopies(from, to);
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_ELEMENT_BLOCKS_H_
