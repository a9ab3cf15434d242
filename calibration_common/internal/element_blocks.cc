#include "calibration_common/internal/element_blocks.h"

#include <atomic>
#include <cstdint>
#include <new>

// What a sanitizer's run-time offers, where the process has one: it does not know by itself when an
// element that shares its allocation is gone, and what orders the deletes of several threads.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
__attribute__((weak)) void __asan_poison_memory_region(const volatile void* address,
                                                       ::std::size_t size);
__attribute__((weak)) int __tsan_atomic32_fetch_sub(volatile int* value, int other, int order);
// NOLINTEND(bugprone-reserved-identifier)
}

namespace zarvo {
namespace calibration_internal {

namespace {

const ::std::size_t kNewAlignment = 16;
const ::std::size_t kOffset = kNewAlignment / 2;  // of an element of a block

struct BlockOwner {
  int living;  // elements; of several threads, so changed by CountDown() alone
  void* block;
};

bool IsAligned(const void* address) {
  return reinterpret_cast< ::std::uintptr_t>(address) % kNewAlignment == 0;
}

// An element, the address of the owner, and what keeps the next element at its offset.
::std::size_t Stride(::std::size_t size) {
  return (size + sizeof(void*) + kNewAlignment - 1) / kNewAlignment * kNewAlignment;
}

BlockOwner** OwnerOf(void* slot, ::std::size_t size) {
  return reinterpret_cast<BlockOwner**>(static_cast<char*>(slot) + size);
}

#if defined(__STDCPP_DEFAULT_NEW_ALIGNMENT__) && __STDCPP_DEFAULT_NEW_ALIGNMENT__ >= 16
// Null if there is no memory. Not by the nothrow form of `operator new`, which a program that
// replaces the other has often left as it is: a sanitizer's would not go with the program's
// `operator delete`.
void* Probe(::std::size_t size) {
  try {
    return ::operator new(size);
  } catch (const ::std::bad_alloc&) {
    return nullptr;
  }
}

// Whether what `operator new` returns is aligned so strictly that no element other than those of
// blocks is found at their offset. A program may have replaced it by one that keeps to less. That
// shows where several allocations of a size that is no multiple of 16 live at the same time; the
// sizes are such as elements have.
bool NewAlignsStrictly() {
  const ::std::size_t kSizes = 8, kOfEach = 3;
  void* probes[kSizes * kOfEach];
  bool strict = true;
  for (::std::size_t i = 0; i < kSizes * kOfEach; ++i) {
    probes[i] = Probe(40 + i / kOfEach * 16);
    strict = strict && IsAligned(probes[i]);
  }
  for (void* probe : probes) ::operator delete(probe);
  return strict;
}
#else
bool NewAlignsStrictly() { return false; }
#endif

enum BlockUse {
  kUnknown,   // there is no block yet
  kNoBlocks,  // and there will be none
  kBlocks,
  kWatchedBlocks,  // a sanitizer is to be told of elements that go
};
::std::atomic<int> block_use(kUnknown);

// Several threads may find it out at the same time, and find the same.
bool BlocksArePossible() {
  int use = block_use.load(::std::memory_order_relaxed);
  if (use == kUnknown) {
    const bool watched =
        __asan_poison_memory_region != nullptr || __tsan_atomic32_fetch_sub != nullptr;
    use = !NewAlignsStrictly() ? kNoBlocks : watched ? kWatchedBlocks : kBlocks;
    block_use.store(use, ::std::memory_order_relaxed);
  }
  return use != kNoBlocks;
}

// True if the element was the last of its block.
bool CountDown(BlockOwner* owner) {
  return __atomic_fetch_sub(&owner->living, 1, __ATOMIC_ACQ_REL) == 1;
}

// What FreeElement() comes to in rarer cases: an element that has an allocation of its own, and one
// that a sanitizer watches.
__attribute__((noinline)) void FreeOtherElement(void* element, ::std::size_t size) {
  const int use = block_use.load(::std::memory_order_relaxed);
  if (IsAligned(element) || use == kUnknown || use == kNoBlocks) {
    ::operator delete(element);
    return;
  }
  BlockOwner* owner = *OwnerOf(element, size);
  if (__asan_poison_memory_region != nullptr) __asan_poison_memory_region(element, size);
  const bool last = __tsan_atomic32_fetch_sub != nullptr
                        ? __tsan_atomic32_fetch_sub(&owner->living, 1, __ATOMIC_ACQ_REL) == 1
                        : CountDown(owner);
  if (last) ::operator delete(owner->block);
}

}  // namespace

ElementBlock::ElementBlock(::std::size_t size, int count)
    : next_slot_(nullptr), stride_(Stride(size)) {
  if (!BlocksArePossible()) return;
  const ::std::size_t slots = stride_ * static_cast< ::std::size_t>(count);
  const ::std::size_t behind_offset = slots + sizeof(BlockOwner);
  char* block = static_cast<char*>(::operator new(kOffset + behind_offset));
  if (!IsAligned(block)) {
    ::operator delete(block);
    return;
  }
  *reinterpret_cast< ::std::size_t*>(block) = behind_offset;
  next_slot_ = block + kOffset;
  BlockOwner* owner = ::new (next_slot_ + slots) BlockOwner;
  owner->living = count;
  owner->block = block;
  for (char* slot = next_slot_; slot != next_slot_ + slots; slot += stride_) {
    *OwnerOf(slot, size) = owner;
  }
}

void FreeElement(void* element, ::std::size_t size) {
  if (IsAligned(element) || block_use.load(::std::memory_order_relaxed) != kBlocks) {
    return FreeOtherElement(element, size);
  }
  BlockOwner* owner = *OwnerOf(element, size);
  if (CountDown(owner)) ::operator delete(owner->block);
}

}  // namespace calibration_internal
}  // namespace zarvo
