#include "calibration_common/internal/element_blocks.h"

#include <atomic>
#include <new>

// AddressSanitizer does not know by itself when an element that shares its allocation is gone.
#ifdef __has_include
#if __has_include(<sanitizer/asan_interface.h>)
#include <sanitizer/asan_interface.h>
#endif
#endif
#ifndef ASAN_POISON_MEMORY_REGION
#define ASAN_POISON_MEMORY_REGION(address, size)
#endif

namespace zarvo {
namespace calibration_internal {

struct ElementBlock::Owner {
  ::std::atomic<int> living;
  void* block;
};

ElementBlock::ElementBlock(::std::size_t size, int count) : stride_(size + kOwnerSlotSize) {
  const ::std::size_t slots = stride_ * static_cast<::std::size_t>(count);
  next_slot_ = static_cast<char*>(::operator new(slots + sizeof(Owner)));
  Owner* owner = new (next_slot_ + slots) Owner;
  owner->living.store(count, ::std::memory_order_relaxed);
  owner->block = next_slot_;
  for (char* slot = next_slot_; slot != next_slot_ + slots; slot += stride_) {
    *OwnerOf(slot, size) = owner;
  }
}

void ElementBlock::Free(void* slot, ::std::size_t size) {
  Owner* owner = *OwnerOf(slot, size);
  ASAN_POISON_MEMORY_REGION(slot, size);
  if (owner->living.fetch_sub(1, ::std::memory_order_acq_rel) == 1) ::operator delete(owner->block);
}

}  // namespace calibration_internal
}  // namespace zarvo
