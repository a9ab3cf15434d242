// Counts the program's heap allocations and makes a chosen one fail.
//
// support/allocations.cc replaces operator new and operator delete for the whole program, shared
// libraries included; list it among a suite's sources to use this header. Valgrind replaces them in
// turn, and must be told not to: --soname-synonyms=somalloc=nouserintercepts.
#ifndef CALIBRATION_TESTS_SUPPORT_ALLOCATIONS_H_
#define CALIBRATION_TESTS_SUPPORT_ALLOCATIONS_H_

#include <cstddef>

namespace zarvo {
namespace calibration {
namespace testing {

// Calls of operator new so far.
long Allocations();

// What they asked for, in bytes and all told, whether it was given back since or not.
size_t AllocatedBytes();

// The size that the latest of them asked for.
size_t LatestAllocation();

// Blocks that operator new gave and operator delete has not taken back.
long LiveBlocks();

// While it lives, the n-th allocation from its construction on throws std::bad_alloc (n counts from
// 1), and if kForGood so do all that follow. One at a time.
class FailingAllocation {
 public:
  enum Duration { kOnce, kForGood };

  FailingAllocation(long n, Duration duration);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
};

// Frees, when it goes, what was allocated during its life while there was a FailingAllocation, and
// is still alive: what was lost, which a memory checker would report. One at a time, in one thread.
class FreeLostBlocks {
 public:
  FreeLostBlocks();
  ~FreeLostBlocks();
  FreeLostBlocks(const FreeLostBlocks&) = delete;
  FreeLostBlocks& operator=(const FreeLostBlocks&) = delete;
};

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_ALLOCATIONS_H_
