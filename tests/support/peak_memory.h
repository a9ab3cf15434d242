// How much heap memory a part of a program has in use at most.
//
// support/peak_memory.cc replaces operator new and operator delete for the whole program, shared
// libraries included; list it among a suite's sources to use this header.
#ifndef CALIBRATION_TESTS_SUPPORT_PEAK_MEMORY_H_
#define CALIBRATION_TESTS_SUPPORT_PEAK_MEMORY_H_

#include <cstddef>

namespace zarvo {
namespace calibration {
namespace testing {

// Measures from its construction on. One at a time.
class PeakMemory {
 public:
  PeakMemory();

  // The most that was in use at a time so far, beyond what was at the construction, in bytes and
  // with what malloc() rounds up to.
  size_t bytes() const;

 private:
  size_t before_;
};

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_PEAK_MEMORY_H_
