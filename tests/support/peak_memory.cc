#include "tests/support/peak_memory.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> live{0}, peak{0};

void* Allocate(size_t size) {
  void* block = std::malloc(std::max<size_t>(size, 1));
  if (block == nullptr) throw std::bad_alloc();
  live += malloc_usable_size(block);
  peak = std::max(peak.load(), live.load());
  return block;
}

void Release(void* block) {
  if (block != nullptr) live -= malloc_usable_size(block);
  std::free(block);
}

}  // namespace

void* operator new(size_t size) { return Allocate(size); }
void* operator new[](size_t size) { return Allocate(size); }
void operator delete(void* block) noexcept { Release(block); }
void operator delete[](void* block) noexcept { Release(block); }
void operator delete(void* block, size_t) noexcept { Release(block); }
void operator delete[](void* block, size_t) noexcept { Release(block); }

namespace zarvo {
namespace calibration {
namespace testing {

PeakMemory::PeakMemory() : before_(live) { peak = before_; }

size_t PeakMemory::bytes() const { return peak - before_; }

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
