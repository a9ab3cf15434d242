// Puts the heap into a known state, so that what a cell costs does not depend on what was allocated
// before it. Knows glibc's allocator.
#ifndef CALIBRATION_BENCHMARKS_HEAP_H_
#define CALIBRATION_BENCHMARKS_HEAP_H_

namespace zarvo {
namespace calibration {
namespace benchmarks {

// From here on, the allocator keeps all memory that it has once had. Else it would be chance whose
// large blocks come fresh from the kernel, page by page, and whose from those freed before.
void KeepMemory();

// Takes all free blocks out of use, for good: what is allocated from here on is cut from one large
// piece at the heap's end. REQUIRES: KeepMemory() was called.
void UseUpFreeBlocks();

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_BENCHMARKS_HEAP_H_
