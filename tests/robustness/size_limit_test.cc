// Records near 2 GiB, which is where sizes end: up to one byte less a record is sized and written;
// beyond, however far, its size is -1 and nothing is written.
//
// One camera of 64 MiB is in the list again and again, and larger pieces are in folded memory, so
// that no such record is ever in memory.
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>
#include <google/protobuf/repeated_field.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "calibration_common/calibration.pb.h"
#include "tests/support/folded_memory.h"
#include "tests/support/runtime_facts.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::LogSilencer;
using ::google::protobuf::Message;

constexpr int kMost = std::numeric_limits<int>::max();
// Of so many bytes a 32-bit sum keeps 99.
constexpr int64_t kWrapped = (int64_t{1} << 32) + 99;

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
    const auto prefix =
        ::google::protobuf::io::CodedOutputStream::VarintSize32(static_cast<uint32_t>(size));
    return int64_t{1} + static_cast<int64_t>(prefix) + size;
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

// Every call that writes, made on M: a record's class or Message. None may write anything.
template <class M>
void ExpectNothingIsWritten(const M& record) {
  std::string text = "before";
  EXPECT_FALSE(record.AppendToString(&text));
  EXPECT_FALSE(record.AppendPartialToString(&text));
  EXPECT_EQ(text, "before");
  EXPECT_FALSE(record.SerializeToString(&text));
  EXPECT_FALSE(record.SerializePartialToString(&text));
  EXPECT_EQ(text, "");
  EXPECT_EQ(record.SerializeAsString(), "");
  EXPECT_EQ(record.SerializePartialAsString(), "");

  Counter counter;
  EXPECT_FALSE(record.SerializeToZeroCopyStream(&counter));
  EXPECT_FALSE(record.SerializePartialToZeroCopyStream(&counter));
  {
    ::google::protobuf::io::CodedOutputStream stream(&counter);
    EXPECT_FALSE(record.SerializeToCodedStream(&stream));
    EXPECT_FALSE(record.SerializePartialToCodedStream(&stream));
  }
  EXPECT_EQ(counter.ByteCount(), 0);

  std::ostringstream ostream;
  EXPECT_FALSE(record.SerializeToOstream(&ostream));
  EXPECT_FALSE(record.SerializePartialToOstream(&ostream));
  EXPECT_EQ(ostream.str(), "");

  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
  ASSERT_NE(file, nullptr);
  EXPECT_FALSE(record.SerializeToFileDescriptor(fileno(file.get())));
  EXPECT_FALSE(record.SerializePartialToFileDescriptor(fileno(file.get())));
  EXPECT_EQ(std::fseek(file.get(), 0, SEEK_END), 0);
  EXPECT_EQ(std::ftell(file.get()), 0);
}

template <class M>
void ExpectArraysAreLeftAlone(const M& record) {
  std::vector<char> target(256, 'x');
  const int size = static_cast<int>(target.size());
  EXPECT_FALSE(record.SerializeToArray(target.data(), size));
  EXPECT_FALSE(record.SerializePartialToArray(target.data(), size));
  EXPECT_FALSE(record.SerializeToArray(target.data(), kMost));
  EXPECT_EQ(target, std::vector<char>(256, 'x'));
}

template <class T>
void ExpectTooLarge(const T& record) {
  const LogSilencer no_remark_on_the_size;
  EXPECT_EQ(record.ByteSize(), -1);
  EXPECT_EQ(record.GetCachedSize(), -1);
  EXPECT_EQ(AskedSize(record), std::numeric_limits<uint32_t>::max());
  ExpectNothingIsWritten<T>(record);
  ExpectArraysAreLeftAlone<T>(record);
  ExpectNothingIsWritten<Message>(record);
  if (!kArraysTakeAnySize) {
    ExpectArraysAreLeftAlone<Message>(record);
    return;
  }
  // The run-time's own call does not look at the size; it finds that nothing was written.
  std::vector<char> target(256, 'x');
  const Message& message = record;
  const char* const report = "libprotobuf FATAL .*(Byte size calculation|modified concurrently)";
  EXPECT_DEATH([&]() noexcept { message.SerializeToArray(target.data(), 256); }(), report);
  EXPECT_DEATH([&]() noexcept { message.SerializePartialToArray(target.data(), kMost); }(), report);
}

TEST(SizeLimitTest, TwoGibibytesAreNotWritten) {
  ExpectTooLarge(HugeRobot(int64_t{kMost} + 1).robot());
}

TEST(SizeLimitTest, NorAreSizesThatWouldWrapAround) {
  ExpectTooLarge(HugeRobot(kWrapped).robot());
  ExpectTooLarge(HugeRobot(2 * kWrapped).robot());
}

// One text of that size, wherever it can stand.
class HugeTextTest : public ::testing::TestWithParam<int64_t> {
 protected:
  void SetUp() override {
    text_ = std::make_unique<std::string>(static_cast<size_t>(GetParam()), '\0');
    ASSERT_EQ(FoldedBlocks(), 1);
  }
  std::unique_ptr<std::string> text_;
};

TEST_P(HugeTextTest, InAnImageAndWhatIsAroundIt) {
  RobotCalibration robot;
  CameraCalibration* camera = robot.add_camera();
  CalibrationImage* image = camera->mutable_extrinsics_image();
  image->mutable_imgdata()->swap(*text_);
  image->set_width(640);
  ExpectTooLarge(*image);
  ExpectTooLarge(*camera);
  ExpectTooLarge(robot);

  PTZSystemCalibration system;
  system.mutable_other_cameras()->Swap(&robot);
  ExpectTooLarge(system);
}

TEST_P(HugeTextTest, InUnknownFields) {
  MarkerPositionInfo marker;
  marker.set_x(1);
  marker.mutable_unknown_fields()->AddLengthDelimited(100)->swap(*text_);
  ExpectTooLarge(marker);

  BaseCalibrationProto base;
  ::google::protobuf::UnknownFieldSet* group =
      base.mutable_unknown_fields()->AddGroup(100)->AddGroup(101);
  group->AddLengthDelimited(102)->swap(
      *marker.mutable_unknown_fields()->mutable_field(0)->mutable_length_delimited());
  ExpectTooLarge(base);
}

INSTANTIATE_TEST_SUITE_P(SizeLimitTest, HugeTextTest,
                         ::testing::Values(int64_t{kMost} + 1, kWrapped));

TEST(SizeLimitTest, NumbersCount) {
  CameraExtrinsics extrinsics;
  extrinsics.mutable_a()->Resize(kMost / 9, 0);
  EXPECT_EQ(extrinsics.ByteSize(), kMost / 9 * 9);
  extrinsics.mutable_a()->Resize(kMost / 9 + 1, 0);
  ExpectTooLarge(extrinsics);
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
