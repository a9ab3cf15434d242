// Random numbers that are the same on every machine: the standard distributions differ from library
// to library; the engine alone does not.
#ifndef CALIBRATION_TESTS_SUPPORT_RANDOM_NUMBERS_H_
#define CALIBRATION_TESTS_SUPPORT_RANDOM_NUMBERS_H_

#include <cstdint>
#include <random>

namespace zarvo {
namespace calibration {
namespace testing {

// From 0 to end - 1.
inline int Below(std::mt19937* random, int end) {
  return static_cast<int>((*random)() % static_cast<uint32_t>(end));
}

inline uint64_t Random64(std::mt19937* random) {
  const uint64_t high = (*random)();
  return high << 32 | (*random)();
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_RANDOM_NUMBERS_H_
