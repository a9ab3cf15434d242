// How much memory parsing may take: a bound that grows with the input and with nothing else.
#ifndef CALIBRATION_TESTS_SUPPORT_MEMORY_BOUND_H_
#define CALIBRATION_TESTS_SUPPORT_MEMORY_BOUND_H_

#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <string>

namespace zarvo {
namespace calibration {
namespace testing {

// The buffers of the run-time's own streams, and whatever else does not depend on the input.
constexpr size_t kMemoryForNothing = 10000;

// Bytes for each byte of input, in all, what is given back meanwhile included. Two bytes are enough
// to announce an unknown text, which is kept in an object of its own; where there are elements, two
// bytes make one, and two more a sub-message in it. A call that asks for required fields names each
// that is missing, and every camera's intrinsics can miss five.
inline size_t MemoryPerByte(const std::string& message, bool partial) {
  struct Row {
    const char* message;
    size_t partial;
    size_t complete;
  };
  static constexpr Row kRows[] = {
      {"MarkerPositionInfo", 60, 60},
      {"MarkerPositionSet", 60, 60},
      {"CameraIntrinsicsSamplePoints", 60, 60},
      {"CameraIntrinsics", 60, 60},
      {"CalibrationImage", 60, 60},
      {"FocusInfoItem", 60, 60},
      {"FocusInfo", 60, 60},
      {"CameraExtrinsics", 60, 60},
      {"CameraCalibration", 60, 60},
      {"RobotCalibration", 90, 700},
      {"CalibrationMetadataProto", 60, 60},
      {"GyroscopeCalibrationProto", 60, 60},
      {"CameraCalibrationAdjustmentProto", 60, 60},
      {"BaseCalibrationProto", 60, 60},
      {"FocusCheckProto", 60, 60},
      {"FocusCheckSetProto", 60, 60},
      {"PTZIntrinsicsItem", 60, 60},
      {"PTZIntrinsics", 80, 80},
      {"PanTiltSystemParameters", 60, 60},
      {"PTZCameraParameters", 80, 80},
      {"PTZSystemCalibration", 90, 800},
  };
  for (const Row& row : kRows) {
    if (row.message == message) return partial ? row.partial : row.complete;
  }
  std::cerr << "memory_bound: no message named '" << message << "'\n";
  std::abort();
}

// The most that parsing `size` bytes as one record of the message may take.
inline size_t MostMemoryFor(const std::string& message, bool partial, size_t size) {
  return MemoryPerByte(message, partial) * size + kMemoryForNothing;
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_MEMORY_BOUND_H_
