// ROS's sensor_msgs/CameraInfo as bytes: ROS 1's serialization, and the CDR of ROS 2.
#ifndef CALIB_TOOLS_ROS_CAMERA_INFO_H_
#define CALIB_TOOLS_ROS_CAMERA_INFO_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace calib {

struct RosCameraInfo {
  std::string frame_id, distortion_model;
  uint32_t width = 0, height = 0;
  std::vector<double> d, k, r, p;
  uint32_t binning_x = 0, binning_y = 0;
  uint32_t roi_x_offset = 0, roi_y_offset = 0, roi_width = 0, roi_height = 0;
  bool roi_do_rectify = false;
};

// Reads a message in one of the encodings that MCAP names, "ros1" and "cdr". Returns why the bytes
// are none, "" if they are.
std::string ReadRosCameraInfo(std::string_view message, const std::string& encoding,
                              RosCameraInfo* info);

}  // namespace calib

#endif  // CALIB_TOOLS_ROS_CAMERA_INFO_H_
