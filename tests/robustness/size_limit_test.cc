// Records near 2 GiB, which is where sizes end: up to one byte less a record is sized and written;
// beyond, nothing is written.
//
// One camera of 64 MiB is in the list again and again, so that no such record is ever in memory.
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream.h>
#include <google/protobuf/message.h>
#include <google/protobuf/repeated_field.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "calibration_common/calibration.pb.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;

constexpr int kMost = std::numeric_limits<int>::max();

// Holds nothing, counts the bytes.
class Counter : public ::google::protobuf::io::ZeroCopyOutputStream {
 public:
  bool Next(void** data, int* size) override {
    *data = block_.data();
    *size = static_cast<int>(block_.size());
    count_ += *size;
    return true;
  }
  void BackUp(int count) override { count_ -= count; }
  ::google::protobuf::int64 ByteCount() const override { return count_; }

 private:
  std::vector<char> block_ = std::vector<char>(1 << 20);
  ::google::protobuf::int64 count_ = 0;
};

// A robot of exactly `size` encoded bytes.
class HugeRobot {
 public:
  explicit HugeRobot(int64_t size) {
    SetImageOf(&repeated_, kPart);
    const int64_t part = EncodedSize(repeated_);
    for (; size > 2 * part; size -= part) robot_.mutable_camera()->AddAllocated(&repeated_);
    // The length prefixes of the last take as many bytes as its image grows.
    SetImageOf(&last_, static_cast<int>(size / 2));
    SetImageOf(&last_, static_cast<int>(size / 2 + (size - EncodedSize(last_))));
    robot_.mutable_camera()->AddAllocated(&last_);
    EXPECT_EQ(EncodedSize(last_), size);
  }
  ~HugeRobot() {
    while (robot_.camera_size() > 0) static_cast<void>(robot_.mutable_camera()->ReleaseLast());
  }
  HugeRobot(const HugeRobot&) = delete;
  HugeRobot& operator=(const HugeRobot&) = delete;

  const RobotCalibration& robot() const { return robot_; }

 private:
  static constexpr int kPart = 64 << 20;

  static void SetImageOf(CameraCalibration* camera, int size) {
    camera->mutable_intrinsics_image()->mutable_imgdata()->resize(static_cast<size_t>(size));
  }
  // As an element: with its tag and its length.
  static int64_t EncodedSize(const CameraCalibration& camera) {
    const int size = camera.ByteSize();
    return 1 +
           ::google::protobuf::io::CodedOutputStream::VarintSize32(static_cast<uint32_t>(size)) +
           size;
  }

  RobotCalibration robot_;
  CameraCalibration repeated_, last_;
};

TEST(SizeLimitTest, OneByteLessThanTwoGibibytesIsARecord) {
  const HugeRobot huge(kMost);
  EXPECT_EQ(huge.robot().ByteSize(), kMost);
  Counter counter;
  EXPECT_TRUE(huge.robot().SerializeToZeroCopyStream(&counter));
  EXPECT_EQ(counter.ByteCount(), kMost);
  EXPECT_FALSE(huge.robot().SerializeToArray(nullptr, kMost - 1)) << "too small a target";
}

// Sizes wrap around: that of a larger record is below zero. Calls that the class brings itself
// refuse to write it. The 3.0 series, whose calls the class inherits there, must not be asked to.
TEST(SizeLimitTest, TwoGibibytesAreNotWritten) {
  ::google::protobuf::LogSilencer no_remark_on_the_size;
  const HugeRobot huge(int64_t{kMost} + 1);
  const RobotCalibration& robot = huge.robot();
  EXPECT_LT(robot.ByteSize(), 0);

  constexpr bool kInherited = std::is_same<decltype(&RobotCalibration::SerializeToZeroCopyStream),
                                           decltype(&Message::SerializeToZeroCopyStream)>::value;
  if constexpr (!kInherited) {
    Counter counter;
    EXPECT_FALSE(robot.SerializeToZeroCopyStream(&counter));
    EXPECT_EQ(counter.ByteCount(), 0);
    char target[16];
    EXPECT_FALSE(robot.SerializeToArray(target, sizeof target));
    std::string text = "before";
    EXPECT_FALSE(robot.AppendToString(&text));
    EXPECT_EQ(text, "before");
    EXPECT_EQ(robot.SerializeAsString(), "");
    const Message& message = robot;
    EXPECT_FALSE(message.SerializeToZeroCopyStream(&counter));
    EXPECT_EQ(counter.ByteCount(), 0);
    EXPECT_FALSE(message.SerializeToArray(target, sizeof target));
    EXPECT_FALSE(message.AppendToString(&text));
  }
}

TEST(SizeLimitTest, NegativeSizesAreRefused) {
  CalibrationImage image;
  EXPECT_FALSE(image.SerializeToArray(nullptr, -1));
  image.set_width(1);
  EXPECT_FALSE(image.SerializeToArray(nullptr, -1));
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
