// How much memory parsing may take: a bound that grows with the input and with nothing else.
#ifndef CALIBRATION_TESTS_SUPPORT_MEMORY_BOUND_H_
#define CALIBRATION_TESTS_SUPPORT_MEMORY_BOUND_H_

#include <cstddef>
#include <string>

#include "tests/support/schema_table.h"

namespace zarvo {
namespace calibration {
namespace testing {

// The buffers of the run-time's own streams, and whatever else does not depend on the input.
constexpr size_t kMemoryForNothing = 10000;

constexpr size_t kMemoryPerByte = 60;

// Bytes for each byte of input, in all, what is given back meanwhile included. Two bytes are enough
// to announce an unknown text, which is kept in an object of its own. Larger than that are
// elements, of which two bytes make one, and two more a sub-message in it. A call that asks for
// required fields names each that is missing, and every camera's intrinsics can miss five.
// REQUIRES: the message exists.
inline size_t MemoryPerByte(const std::string& message, bool partial) {
  struct Row {
    const char* message;
    size_t partial;
    size_t complete;
  };
  static constexpr Row kRows[] = {
      {"RobotCalibration", 90, 700},
      {"PTZIntrinsics", 80, 80},
      {"PTZCameraParameters", 80, 80},
      {"PTZSystemCalibration", 90, 800},
  };
  const std::string name = FindMessage(message).name;
  for (const Row& row : kRows) {
    if (row.message == name) return partial ? row.partial : row.complete;
  }
  return kMemoryPerByte;
}

// The most that parsing `size` bytes as one record of the message may take.
inline size_t MostMemoryFor(const std::string& message, bool partial, size_t size) {
  return MemoryPerByte(message, partial) * size + kMemoryForNothing;
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_MEMORY_BOUND_H_
