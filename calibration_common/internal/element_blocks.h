// Elements of a repeated field that come into being together, as a parse, a merge, a copy or a
// program's own calls make them: they share an allocation, since allocating and freeing each by
// itself takes longer than reading it.
//
// Each is what `new T` makes: its dynamic class is T, it can be released, kept, handed to another
// field, and deleted, in any order and by any thread. The block is freed with the last of its
// elements. What tells an element of a block from any other that is deleted is its address, which
// is 8 modulo 16, where `operator new` puts nothing; the element classes' own operator delete looks
// at that. Where `operator new` aligns less strictly, there are no blocks.
//
// A block may have slots behind its last element that were never used. The last element is what
// they depend on: only the list that holds it may go on there, and once it is deleted, nobody does.
#ifndef ZARVO_CALIBRATION_INTERNAL_ELEMENT_BLOCKS_H_
#define ZARVO_CALIBRATION_INTERNAL_ELEMENT_BLOCKS_H_

#include <google/protobuf/repeated_field.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>

#include "calibration_common/elements.h"
#include "calibration_common/internal/object_model.h"

namespace zarvo {
namespace calibration_internal {

// The end of a block, behind its slots. A block's layout: the number of bytes behind this one, so
// that valgrind takes who points at the first element for one who holds the block; slots, each an
// element and the address of this; this.
struct BlockOwner {
  int living;                 // elements and unused slots; of several threads (see CountDown())
  ::std::atomic<char*> next;  // the first unused slot; without one, the address of this
  void* block;
};

// An element, the address of the owner, and what keeps the next element 8 behind a multiple of 16.
constexpr ::std::size_t SlotSize(::std::size_t size) {
  return (size + sizeof(void*) + 15) / 16 * 16;
}

inline BlockOwner** OwnerOf(void* slot, ::std::size_t size) {
  return reinterpret_cast<BlockOwner**>(static_cast<char*>(slot) + size);
}

inline bool IsAligned(const void* address) {
  return reinterpret_cast< ::std::uintptr_t>(address) % 16 == 0;
}

// The most elements of `size` bytes in a block: few enough that a program which keeps one of them
// does not keep much more. 4 KiB, or 16 elements if that is more.
constexpr int MostInBlock(::std::size_t size) {
  return 8 + 16 * SlotSize(size) + sizeof(BlockOwner) > 4096
             ? 16
             : static_cast<int>((4096 - 8 - sizeof(BlockOwner)) / SlotSize(size));
}

// Memory for elements that are appended to one list, one right after the other. What of a block is
// left in the end stays unused.
class ElementMemory {
 public:
  ElementMemory() : next_(nullptr), owner_(nullptr) {}
  ~ElementMemory() {
    if (!IsUsedUp()) LeaveUnused();
  }
  ElementMemory(const ElementMemory&) = delete;
  ElementMemory& operator=(const ElementMemory&) = delete;

  bool IsUsedUp() const { return next_ == owner_; }

  // For the next element. REQUIRES that the memory is not used up.
  void* Take(::std::size_t size) {
    void* slot = next_;
    *OwnerOf(slot, size) = static_cast<BlockOwner*>(owner_);
    next_ = static_cast<char*>(slot) + SlotSize(size);
    return slot;
  }

  // For one element, and for `count` of them if there is a block. REQUIRES that the memory is used
  // up.
  void* TakeOfNewBlock(::std::size_t size, int count);

 private:
  void LeaveUnused();

  void* next_;   // the first unused slot, or
  void* owner_;  // this; null before the first block
};

// Makes a cleared element, which is to be the first of `count`: makes room for so many, or for as
// many as a block takes. Allocates before it touches the container.
template <typename T>
__attribute__((cold, noinline)) void MakeFirstOfElements(
    ::google::protobuf::RepeatedPtrField<T>* elements, int count, ElementMemory* memory) {
  elements->Reserve(elements->size() + count);
  if (count > MostInBlock(sizeof(T))) count = MostInBlock(sizeof(T));
  elements->AddCleared(::new (memory->TakeOfNewBlock(sizeof(T), count)) T);
}

// Makes an object in `memory` without a call of its class's constructor.
template <typename T>
__attribute__((flatten)) inline T* Construct(void* memory) {
  return ::new (memory) T;
}

// Appends an element, a cleared one if there is any, and otherwise one in `memory`. If that is used
// up, count() is asked how many elements will follow, this one included.
template <typename T, typename Count>
ZARVO_CALIBRATION_ALWAYS_INLINE T* AppendElement(::google::protobuf::RepeatedPtrField<T>* elements,
                                                 ElementMemory* memory, Count count) {
  static_assert(alignof(T) <= 8, "slots are not aligned");
  while (elements->ClearedCount() <= 0) {  // a loop as in AppendElement() of elements.h
    if (memory->IsUsedUp()) {
      MakeFirstOfElements(elements, count(), memory);
    } else {
      elements->AddCleared(Construct<T>(memory->Take(sizeof(T))));
    }
  }
  return elements->Add();
}

// Appends a copy of each element of `from`, one at least.
template <typename T>
void AppendCopies(const ::google::protobuf::RepeatedPtrField<T>& from,
                  ::google::protobuf::RepeatedPtrField<T>* to) {
  const int count = from.size();
  ElementMemory memory;
  for (int i = 0; i < count; ++i) {
    AppendElement(to, &memory, [=] { return count - i; })->T::MergeFrom(from.Get(i));
  }
}

// Appends a copy of each element of `from`.
template <typename T>
inline void MergeElements(const ::google::protobuf::RepeatedPtrField<T>& from,
                          ::google::protobuf::RepeatedPtrField<T>* to) {
  if (!from.empty()) AppendCopies(from, to);
}

// Frees elements of `size` bytes that have been destroyed: those that stand side by side in a block
// are counted down at once.
class FreedElements {
 public:
  explicit FreedElements(::std::size_t size) : size_(size), behind_(nullptr), count_(0) {}
  ~FreedElements() { FreeNeighbours(behind_, count_, size_); }
  FreedElements(const FreedElements&) = delete;
  FreedElements& operator=(const FreedElements&) = delete;

  void Free(void* element) {
    if (element == behind_) {  // and so in the same block, which is still there
      behind_ += SlotSize(size_);
      ++count_;
    } else {
      FreeNeighbours(behind_, count_, size_);
      behind_ = FreeFirst(element, size_);
      count_ = behind_ != nullptr ? 1 : 0;
    }
  }

 private:
  // Both are told what they need, so that the members can stay in registers.
  // The end of the element's slot; null if it is in no block, and has been freed.
  static char* FreeFirst(void* element, ::std::size_t size);
  static void FreeNeighbours(char* behind, int count, ::std::size_t size);

  const ::std::size_t size_;
  char* behind_;  // the end of the last neighbour's slot; null if there is none
  int count_;     // of neighbours
};

// Deletes an element by its own destructor. Inline, g++ would guess once more that it is a T's.
__attribute__((cold, noinline)) void DeleteOther(::google::protobuf::Message* element);

// Deletes all elements but cleared ones, one at least.
template <typename T>
__attribute__((flatten, noinline)) void DeleteSomeElements(
    ::google::protobuf::RepeatedPtrField<T>* elements) {
  const KnownClass<T> known;
  FreedElements freed(sizeof(T));
  const auto end = elements->pointer_end();
  for (auto p = elements->pointer_begin(); p != end; ++p) {
    T* element = *p;
    if (known.HasPlain(*element)) {
      element->T::~T();
      freed.Free(element);
    } else {
      DeleteOther(element);
    }
  }
  elements->UnsafeArenaExtractSubrange(0, elements->size(), nullptr);
}

// Deletes all elements but cleared ones, which the container deletes with itself.
template <typename T>
inline void DeleteElements(::google::protobuf::RepeatedPtrField<T>* elements) {
  if (!elements->empty()) DeleteSomeElements(elements);
}

// Clears the list, and each element by its own Clear(). g++ guesses that this is T's, tests that,
// and then needs no call.
template <typename T>
__attribute__((flatten, noinline)) void ClearSmallElements(
    ::google::protobuf::RepeatedPtrField<T>* elements) {
  elements->Clear();
}

// Clears the list. For a small element, calling and returning take longer than all the rest.
template <typename T>
inline void ClearElements(::google::protobuf::RepeatedPtrField<T>* elements) {
  if (sizeof(T) <= 48) {
    ClearSmallElements(elements);
  } else {
    elements->Clear();
  }
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_ELEMENT_BLOCKS_H_
