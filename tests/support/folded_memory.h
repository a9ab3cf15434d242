// An operator new for programs that hold gigabytes only to see what becomes of their size: memory
// of 1 GiB or more is one block of 2 MiB that stands again and again, side by side, so that it
// costs next to nothing and forgets what is written to it.
//
// A program has it by having folded_memory.cc among its sources.
#ifndef CALIBRATION_TESTS_SUPPORT_FOLDED_MEMORY_H_
#define CALIBRATION_TESTS_SUPPORT_FOLDED_MEMORY_H_

namespace zarvo {
namespace calibration {
namespace testing {

// How many blocks of folded memory the program holds now.
int FoldedBlocks();

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_FOLDED_MEMORY_H_
