// Both serializations have the fields of the message one behind the other, lists and texts with
// their number of items ahead. In ROS 1 nothing lies between, and the low byte is the first. CDR
// says in four bytes ahead of all which byte is the first, begins each number at a multiple of its
// size, counted from behind those four, and ends texts with a zero that is counted.
#include "calib/tools/ros_camera_info.h"

#include "calib/tools/byte_cursor.h"

namespace calib {

namespace {

// Middleware may fill so many bytes behind a message.
constexpr size_t kCdrFill = 7;

std::vector<double> Numbers(size_t count, ByteCursor* bytes) {
  std::vector<double> numbers;
  // So that what a list says of its length takes no memory.
  if (count > bytes->left() / sizeof(double)) bytes->Take(bytes->left() + 1);
  for (; bytes->ok() && count > 0; --count) numbers.push_back(bytes->Read<double>());
  return numbers;
}

std::string Text(bool cdr, ByteCursor* bytes) {
  std::string text(bytes->TakeSized<uint32_t>());
  if (cdr && !text.empty() && text.back() == '\0') text.pop_back();
  return text;
}

// Whether the bytes are those of a message, and no more.
bool Read(bool cdr, ByteCursor bytes, RosCameraInfo* info) {
  if (!cdr) bytes.Read<uint32_t>();  // the header's number, which ROS 2 does not have
  bytes.Read<uint32_t>();            // its time
  bytes.Read<uint32_t>();
  info->frame_id = Text(cdr, &bytes);
  info->height = bytes.Read<uint32_t>();
  info->width = bytes.Read<uint32_t>();
  info->distortion_model = Text(cdr, &bytes);
  info->d = Numbers(bytes.Read<uint32_t>(), &bytes);
  info->k = Numbers(9, &bytes);
  info->r = Numbers(9, &bytes);
  info->p = Numbers(12, &bytes);
  info->binning_x = bytes.Read<uint32_t>();
  info->binning_y = bytes.Read<uint32_t>();
  info->roi_x_offset = bytes.Read<uint32_t>();
  info->roi_y_offset = bytes.Read<uint32_t>();
  info->roi_height = bytes.Read<uint32_t>();
  info->roi_width = bytes.Read<uint32_t>();
  info->roi_do_rectify = bytes.Read<uint8_t>() != 0;
  return bytes.ok() && bytes.left() <= (cdr ? kCdrFill : 0);
}

}  // namespace

std::string ReadRosCameraInfo(std::string_view message, const std::string& encoding,
                              RosCameraInfo* info) {
  const bool cdr = encoding == "cdr";
  bool high_first = false;
  if (cdr) {
    ByteCursor head(message);
    const int high = head.Read<uint8_t>(), low = head.Read<uint8_t>();
    const int representation = high << 8 | low;
    head.Take(2);  // which mean nothing
    if (!head.ok()) return "has " + std::to_string(message.size()) + " bytes";
    if (representation > 1) {
      return "begins with " + std::to_string(representation) +
             ", expected 0 or 1, which are CDR with the high or the low byte first";
    }
    high_first = representation == 0;
    message.remove_prefix(4);
  }
  if (Read(cdr, ByteCursor(message, high_first, cdr), info)) return "";
  return "has " + std::to_string(message.size() + (cdr ? 4 : 0)) +
         " bytes, which are not those of its fields";
}

}  // namespace calib
