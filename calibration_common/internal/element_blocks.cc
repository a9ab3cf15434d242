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
__attribute__((weak)) void __tsan_acquire(void* address);
__attribute__((weak)) void __tsan_release(void* address);
// NOLINTEND(bugprone-reserved-identifier)
}

namespace zarvo {
namespace calibration_internal {

namespace {

const ::std::size_t kNewAlignment = 16;
const ::std::size_t kOffset = kNewAlignment / 2;  // of an element of a block

struct BlockOwner {
  ::std::atomic<int> living;
  void* block;
};

bool IsAligned(const void* address) {
  return reinterpret_cast< ::std::uintptr_t>(address) % kNewAlignment == 0;
}

// An element, the address of the owner, and what keeps the next element at its offset.
::std::size_t Stride(::std::size_t size) {
  return (size + sizeof(BlockOwner*) + kNewAlignment - 1) / kNewAlignment * kNewAlignment;
}

BlockOwner** OwnerOf(void* slot, ::std::size_t size) {
  return reinterpret_cast<BlockOwner**>(static_cast<char*>(slot) + size);
}

// Whether what `operator new` returns is aligned so strictly that no element other than those of
// blocks is found at their offset. A program may have replaced it by one that keeps to less. That
// shows where several allocations of a size that is no multiple of 16 live at the same time; the
// sizes are such as elements have.
bool NewAlignsStrictly() {
#if defined(__STDCPP_DEFAULT_NEW_ALIGNMENT__) && __STDCPP_DEFAULT_NEW_ALIGNMENT__ >= 16
  const int kSizes = 8, kOfEach = 3;
  void* probes[kSizes * kOfEach];
  bool strict = true;
  for (int i = 0; i < kSizes * kOfEach; ++i) {
    probes[i] = ::operator new(static_cast< ::std::size_t>(40 + i / kOfEach * 16), ::std::nothrow);
    strict = strict && IsAligned(probes[i]);
  }
  for (void* probe : probes) ::operator delete(probe);
  return strict;
#else
  return false;
#endif
}

// Set with the first block. Until then, whatever is freed is no element of one.
::std::atomic<bool> blocks_exist(false);

bool BlocksArePossible() {
  static const bool possible = NewAlignsStrictly();
  return possible;
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
  owner->living.store(count, ::std::memory_order_relaxed);
  owner->block = block;
  for (char* slot = next_slot_; slot != next_slot_ + slots; slot += stride_) {
    *OwnerOf(slot, size) = owner;
  }
  blocks_exist.store(true, ::std::memory_order_relaxed);
}

void FreeElement(void* element, ::std::size_t size) {
  if (IsAligned(element) || !blocks_exist.load(::std::memory_order_relaxed)) {
    ::operator delete(element);
    return;
  }
  BlockOwner* owner = *OwnerOf(element, size);
  if (__asan_poison_memory_region != nullptr) __asan_poison_memory_region(element, size);
  if (__tsan_release != nullptr) __tsan_release(owner);
  if (owner->living.fetch_sub(1, ::std::memory_order_acq_rel) != 1) return;
  if (__tsan_acquire != nullptr) __tsan_acquire(owner);
  ::operator delete(owner->block);
}

}  // namespace calibration_internal
}  // namespace zarvo
