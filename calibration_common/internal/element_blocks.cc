#include "calibration_common/internal/element_blocks.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <new>

// What a sanitizer's run-time offers, where the process has one: it does not know by itself when an
// element that shares its allocation comes and goes, and what orders the deletes of several
// threads.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
__attribute__((weak)) void __asan_poison_memory_region(const volatile void* address,
                                                       ::std::size_t size);
__attribute__((weak)) void __asan_unpoison_memory_region(const volatile void* address,
                                                         ::std::size_t size);
__attribute__((weak)) int __tsan_atomic32_fetch_sub(volatile int* value, int other, int order);
// NOLINTEND(bugprone-reserved-identifier)
}

namespace zarvo {
namespace calibration_internal {

namespace {

const ::std::size_t kOffset = 8;  // of a block's first element

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

// A new block with so many slots, the first of which is in use; null if there can be none.
BlockOwner* MakeBlock(::std::size_t size, int slots) {
  if (!BlocksArePossible()) return nullptr;
  const ::std::size_t slots_size = SlotSize(size) * static_cast< ::std::size_t>(slots);
  const ::std::size_t behind_offset = slots_size + sizeof(BlockOwner);
  char* block = static_cast<char*>(::operator new(kOffset + behind_offset));
  if (!IsAligned(block)) {
    ::operator delete(block);
    return nullptr;
  }
  *reinterpret_cast< ::std::size_t*>(block) = behind_offset;
  char* slot = block + kOffset;
  BlockOwner* owner = ::new (slot + slots_size) BlockOwner;
  owner->living = slots;
  owner->next.store(slot + SlotSize(size), ::std::memory_order_relaxed);
  owner->block = block;
  *OwnerOf(slot, size) = owner;
  return owner;
}

void* FirstSlot(const BlockOwner* owner) { return static_cast<char*>(owner->block) + kOffset; }

void PoisonUnused(BlockOwner* owner) {
  if (__asan_poison_memory_region == nullptr) return;
  char* next = owner->next.load(::std::memory_order_relaxed);
  __asan_poison_memory_region(next,
                              static_cast< ::std::size_t>(reinterpret_cast<char*>(owner) - next));
}

// How often blocks have lost their unused slots, by the block's address: several share a count.
typedef ::std::atomic<unsigned long> LossCount;
const unsigned kLossCounts = 128;
LossCount loss_counts[kLossCounts];

LossCount* LossCountOf(const BlockOwner* owner) {
  return &loss_counts[reinterpret_cast< ::std::uintptr_t>(owner) / 64 % kLossCounts];
}

// How much of a block goes with `count` elements side by side, whose slots end at `end`: with the
// block's last element the unused slots go, too.
int ShareOf(int count, const char* end, ::std::size_t size, BlockOwner* owner) {
  const ::std::ptrdiff_t unused = reinterpret_cast<char*>(owner) - end;
  if (unused == 0 || end != owner->next.load(::std::memory_order_relaxed)) return count;
  LossCountOf(owner)->fetch_add(1, ::std::memory_order_relaxed);
  return count + static_cast<int>(unused / static_cast< ::std::ptrdiff_t>(SlotSize(size)));
}

// True if nothing of the block is left.
bool CountDown(BlockOwner* owner, int count) {
  return __atomic_fetch_sub(&owner->living, count, __ATOMIC_ACQ_REL) == count;
}

bool IsCountedDown(const void* element) {
  return !IsAligned(element) && block_use.load(::std::memory_order_relaxed) == kBlocks;
}

// What FreeElement() comes to in rarer cases: an element that has an allocation of its own, and one
// that a sanitizer watches.
__attribute__((noinline)) void FreeOtherElement(void* element, ::std::size_t size) {
  if (IsAligned(element) || block_use.load(::std::memory_order_relaxed) != kWatchedBlocks) {
    ::operator delete(element);
    return;
  }
  BlockOwner* owner = *OwnerOf(element, size);
  const int share = ShareOf(1, static_cast<char*>(element) + SlotSize(size), size, owner);
  if (__asan_poison_memory_region != nullptr) __asan_poison_memory_region(element, size);
  const bool last =
      __tsan_atomic32_fetch_sub != nullptr
          ? __tsan_atomic32_fetch_sub(&owner->living, share, __ATOMIC_ACQ_REL) == share
          : CountDown(owner, share);
  if (last) ::operator delete(owner->block);
}

// What a thread has appended last to some lists by the program's own calls.
//
// Whether an element is in a block cannot be seen in the element, since a program may append one
// that lies anywhere. So it is known by its address; and since that may have come to be another's,
// it is not trusted once a block may have lost its unused slots.
struct Appended {
  const void* element;
  BlockOwner* owner;  // of its block, or null if that has no unused slot
  LossCount* loss_count;
  unsigned long losses;  // that had been counted when the block was made
  int row;               // appended in a row once there is no unused slot
};
const unsigned kLists = 8;
const int kLongestRow = 4096;  // that makes a difference
thread_local Appended appended[kLists] __attribute__((tls_model("initial-exec")));

}  // namespace

void* ElementMemory::TakeOfNewBlock(::std::size_t size, int count) {
  BlockOwner* owner = count > 1 ? MakeBlock(size, count) : nullptr;
  if (owner == nullptr) return ::operator new(size);
  next_ = owner->next.load(::std::memory_order_relaxed);
  owner_ = owner;
  owner->next.store(reinterpret_cast<char*>(owner), ::std::memory_order_relaxed);
  return FirstSlot(owner);
}

void ElementMemory::LeaveUnused() {
  BlockOwner* owner = static_cast<BlockOwner*>(owner_);
  owner->next.store(static_cast<char*>(next_), ::std::memory_order_relaxed);
  PoisonUnused(owner);
}

__attribute__((noinline)) char* FreedElements::FreeFirst(void* element, ::std::size_t size) {
  if (IsCountedDown(element)) return static_cast<char*>(element) + SlotSize(size);
  FreeOtherElement(element, size);
  return nullptr;
}

__attribute__((noinline)) void FreedElements::FreeNeighbours(char* behind, int count,
                                                             ::std::size_t size) {
  if (count == 0) return;
  BlockOwner* owner = *OwnerOf(behind - SlotSize(size), size);
  if (CountDown(owner, ShareOf(count, behind, size, owner))) ::operator delete(owner->block);
}

__attribute__((noinline)) void FreeElement(void* element, ::std::size_t size) {
  if (!IsCountedDown(element)) return FreeOtherElement(element, size);
  BlockOwner* owner = *OwnerOf(element, size);
  const int share = ShareOf(1, static_cast<char*>(element) + SlotSize(size), size, owner);
  if (CountDown(owner, share)) ::operator delete(owner->block);
}

namespace {

// Begins a block once the thread has appended two elements in a row: for as many as there were in
// this row, so that no more slots than that stay unused.
__attribute__((noinline)) void* AllocateFirst(const void* last, ::std::size_t size, int room,
                                              Appended* now) {
  const bool goes_on = last != nullptr && now->element == last && now->owner == nullptr;
  const int row = goes_on ? now->row : 0;
  const int slots = ::std::min(::std::min(room, row), MostInBlock(size));
  BlockOwner* owner = slots > 1 ? MakeBlock(size, slots) : nullptr;
  void* element = owner != nullptr ? FirstSlot(owner) : ::operator new(size);
  now->element = element;
  now->owner = owner;
  now->row = ::std::min(row + (owner != nullptr ? slots : 1), kLongestRow);
  if (owner != nullptr) {
    now->loss_count = LossCountOf(owner);
    now->losses = now->loss_count->load(::std::memory_order_relaxed);
    PoisonUnused(owner);
  }
  return element;
}

// Takes the first unused slot of the block.
inline void* TakeUnused(::std::size_t size, Appended* now) {
  BlockOwner* owner = now->owner;
  char* slot = owner->next.load(::std::memory_order_relaxed);
  char* next = slot + SlotSize(size);
  *OwnerOf(slot, size) = owner;
  owner->next.store(next, ::std::memory_order_relaxed);
  now->element = slot;
  if (next == reinterpret_cast<char*>(owner)) now->owner = nullptr;
  return slot;
}

__attribute__((noinline)) void* TakePoisoned(::std::size_t size, Appended* now) {
  __asan_unpoison_memory_region(now->owner->next.load(::std::memory_order_relaxed), SlotSize(size));
  return TakeUnused(size, now);
}

}  // namespace

void DeleteOther(::google::protobuf::Message* element) { delete element; }

void* AllocateElement(const void* list, const void* last, ::std::size_t size, int room) {
  Appended* now = &appended[reinterpret_cast< ::std::uintptr_t>(list) / 32 % kLists];
  if (now->element != last || now->owner == nullptr ||
      now->loss_count->load(::std::memory_order_relaxed) != now->losses) {
    return AllocateFirst(last, size, room, now);
  }
  return __asan_unpoison_memory_region == nullptr ? TakeUnused(size, now) : TakePoisoned(size, now);
}

}  // namespace calibration_internal
}  // namespace zarvo
