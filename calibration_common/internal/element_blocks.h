// Elements of a repeated field that come into being together, as a parse, a merge or a copy needs
// them: they share an allocation, kMaxElements at most, since allocating and freeing each by itself
// takes longer than reading it.
//
// Each is what `new T` makes: its dynamic class is T, it can be released, kept, handed to another
// field, and deleted, in any order and by any thread. The block is freed with the last of its
// elements. What tells an element of a block from any other is its address, which is 8 modulo 16,
// where `operator new` puts nothing; the element classes' own operator delete looks at that. Where
// `operator new` aligns less strictly, there are no blocks.
#ifndef ZARVO_CALIBRATION_INTERNAL_ELEMENT_BLOCKS_H_
#define ZARVO_CALIBRATION_INTERNAL_ELEMENT_BLOCKS_H_

#include <google/protobuf/repeated_field.h>

#include <cstddef>
#include <new>

#include "calibration_common/elements.h"

namespace zarvo {
namespace calibration_internal {

// A block that is being filled. Its layout: the number of bytes behind this one, so that valgrind
// takes who points at the first element for one who holds the block; slots, each an element and the
// address of the block's Owner; the Owner.
class ElementBlock {
 public:
  // Few enough that a program which keeps one element of each block does not keep much more.
  static const int kMaxElements = 16;

  // Allocates slots for `count` elements of `size` bytes. REQUIRES that all of them are
  // constructed if there are any: see IsMade().
  ElementBlock(::std::size_t size, int count);

  // False where there can be no blocks.
  bool IsMade() const { return next_slot_ != nullptr; }

  // Where the next element goes.
  void* NextSlot() {
    void* slot = next_slot_;
    next_slot_ += stride_;
    return slot;
  }

 private:
  char* next_slot_;
  ::std::size_t stride_;
};

// Makes room for `count` elements and as many cleared ones as a block takes, `count` at most.
// REQUIRES that the container has no cleared ones. Allocates before it touches the container.
template <typename T>
__attribute__((noinline)) void MakeClearedElements(
    ::google::protobuf::RepeatedPtrField<T>* elements, int count) {
  static_assert(alignof(T) <= 8, "slots are not aligned");
  if (count > 1) {
    elements->Reserve(elements->size() + count);
    if (count > ElementBlock::kMaxElements) count = ElementBlock::kMaxElements;
    ElementBlock block(sizeof(T), count);
    if (block.IsMade()) {
      for (; count > 0; --count) elements->AddCleared(::new (block.NextSlot()) T);
      return;
    }
  }
  MakeClearedElement(elements);
}

// Deletes the cleared elements of `elements`: those of a block that were not needed, since the
// input was malformed or an allocation failed.
template <typename T>
__attribute__((noinline, cold)) void DeleteClearedElements(
    ::google::protobuf::RepeatedPtrField<T>* elements) {
  while (elements->ClearedCount() > 0) delete elements->ReleaseCleared();
}

// Appends a copy of each element of `from`, one at least.
template <typename T>
void AppendCopies(const ::google::protobuf::RepeatedPtrField<T>& from,
                  ::google::protobuf::RepeatedPtrField<T>* to) {
  const int count = from.size();
  bool made = false;
  try {
    for (int i = 0; i < count; ++i) {
      while (to->ClearedCount() <= 0) {  // as in AppendElement()
        MakeClearedElements(to, count - i);
        made = true;
      }
      to->Add()->T::MergeFrom(from.Get(i));
    }
  } catch (...) {
    if (made) DeleteClearedElements(to);
    throw;
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
