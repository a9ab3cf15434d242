// The cameras of an MCAP file, as the values of a Foreign: a map of what its topics hold. A topic
// of foxglove.CameraCalibration or sensor_msgs/CameraInfo is a map with the keys of ROS's message
// and frame_id, as its last message has them; one of foxglove.FrameTransform or FrameTransforms is
// a list of transforms, the last one between each two frames; any other is the name of its schema.
#ifndef CALIB_TOOLS_FOREIGN_MCAP_H_
#define CALIB_TOOLS_FOREIGN_MCAP_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "calib/tools/foreign.h"

namespace calib {

// What a message of a camera or of transforms may take, and what all that are kept and the names of
// topics may take together: beyond it a camera is refused, and beyond half of it a transform is not
// read, which a remark says.
constexpr size_t kLargestKeptOfMcap = size_t{1} << 20;
constexpr size_t kMostKeptOfMcap = size_t{4} << 20;
constexpr size_t kMostKeptOfTransforms = kMostKeptOfMcap / 2;

// Reads a file that begins as MCAP; `topics` chooses those of cameras, unless it is empty. Throws
// Failure if no camera is among them. Of a damaged file, what stands ahead of the damage is read,
// and a remark says so.
Foreign ReadMcapCameras(const std::string& file, std::string_view bytes,
                        const std::vector<std::string>& topics);

}  // namespace calib

#endif  // CALIB_TOOLS_FOREIGN_MCAP_H_
