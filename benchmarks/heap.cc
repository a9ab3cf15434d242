#include "benchmarks/heap.h"

#include <malloc.h>

#include <climits>
#include <cstdint>
#include <cstdlib>

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

constexpr size_t kEnd = 16 << 20;  // more than any free block, and than any cell needs
constexpr size_t kLargestBlock = 4 << 20;
constexpr size_t kExactBelow = 2048;  // block sizes are tried one by one below, by halves above
constexpr size_t kGranule = 16;

// The blocks are lost on purpose; the compiler must not think that it can leave them out.
uintptr_t Allocate(size_t size) {
  void* block = std::malloc(size);
  asm volatile("" : "+r"(block));
  return reinterpret_cast<uintptr_t>(block);
}

}  // namespace

void KeepMemory() {
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, INT_MAX);
}

void UseUpFreeBlocks() {
  void* end_block = std::malloc(kEnd);
  const uintptr_t end = reinterpret_cast<uintptr_t>(end_block);
  std::free(end_block);
  for (size_t size = kLargestBlock; size > kGranule;
       size = size > kExactBelow ? size / 2 : size - kGranule) {
    while (Allocate(size - sizeof(size_t)) < end) {
    }
  }
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
