// A stream's total-bytes limit is no place where a record may end: what it cuts off is refused,
// wherever the cut is, unless a limit that was pushed is there, too.
//
// The limit is set low, and once left as it is, which is 64 MiB on the 3.0 series and 2 GiB later.
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "calibration_common/calibration.pb.h"
#include "tests/robustness/agreement.h"
#include "tests/robustness/every_entrance.h"
#include "tests/support/class_calls.h"
#include "tests/support/random_record.h"
#include "tests/support/runtime_facts.h"
#include "tests/support/schema_table.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;
using ::google::protobuf::io::ArrayInputStream;
using ::google::protobuf::io::CodedInputStream;

// Until 3.5 the call takes a second size, from which on it warns.
template <typename Stream>
auto SetTotalBytesLimit(Stream* input, int limit, int)
    -> decltype(input->SetTotalBytesLimit(limit)) {
  return input->SetTotalBytesLimit(limit);
}
template <typename Stream>
void SetTotalBytesLimit(Stream* input, int limit, long) {
  input->SetTotalBytesLimit(limit, -1);
}

// Merges the bytes from a stream of blocks that may be read up to `limit`, with another limit
// pushed where the bytes end if `pushed`.
bool Merges(Message* record, const std::string& bytes, int limit, int block, bool pushed) {
  ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()), block);
  CodedInputStream input(&stream);
  SetTotalBytesLimit(&input, limit, 0);
  if (pushed) input.PushLimit(static_cast<int>(bytes.size()));
  return MergeOnClass(record, &input);
}

class TotalBytesLimitTest : public ::testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(AllRecords, TotalBytesLimitTest, ::testing::ValuesIn(MessageNames()));

TEST_P(TotalBytesLimitTest, CutsARecordOffWhereverItIs) {
  const ::google::protobuf::LogSilencer silencer;
  const std::string bytes = FullRecord(GetParam())->SerializeAsString();
  const int size = static_cast<int>(bytes.size());
  for (const int block : {1, 7, 64, size}) {
    for (int limit = 0; limit < size; ++limit) {
      for (const bool pushed : {false, true}) {
        const std::unique_ptr<Message> record = NewRecord(GetParam());
        ASSERT_FALSE(Merges(record.get(), bytes, limit, block, pushed))
            << limit << " of " << size << " bytes in blocks of " << block;
      }
    }
    // A limit that was pushed makes it an end.
    const std::unique_ptr<Message> record = NewRecord(GetParam());
    EXPECT_TRUE(Merges(record.get(), bytes, size, block, true)) << block;
    EXPECT_TRUE(Merges(record.get(), bytes, size + 1, block, false)) << block;
    EXPECT_FALSE(Merges(record.get(), bytes, size, block, false)) << block;
  }
}

constexpr int kMegabyte = 1 << 20;

// A camera as an element of a robot, of one megabyte with its tag and its length.
std::string Megabyte() {
  const size_t around = 1 + 3 + 1 + 3 + 1 + 3;  // a tag of one byte and a length of three, each
  const std::string image = Nested(5, std::string(kMegabyte - around, 'p'));
  return Nested(1, Nested(2, image));
}

std::string Megabytes(int count) {
  const std::string one = Megabyte();
  std::string all;
  all.reserve(static_cast<size_t>(count) * kMegabyte + 16);
  for (int i = 0; i < count; ++i) all += one;
  return all;
}

// Every cut is behind an element.
TEST(TotalBytesLimit, ARobotOf100MegabytesInOneBlock) {
  const ::google::protobuf::LogSilencer silencer;
  const std::string bytes = Megabytes(100);
  ASSERT_EQ(bytes.size(), size_t{100} * kMegabyte);
  ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()));
  RobotCalibration robot;
  EXPECT_EQ(robot.ParseFromZeroCopyStream(&stream), !kStreamsEndAt64MiB);
  EXPECT_EQ(robot.camera_size(), kStreamsEndAt64MiB ? 64 : 100);
}

// A length longer than need be is read by the stream's calls, which then look at the limit; the
// rest is read past it, straight from the array.
TEST(TotalBytesLimit, AMalformedTailBehind68Megabytes) {
  const ::google::protobuf::LogSilencer silencer;
  const std::string megabytes = Megabytes(68);
  const std::string long_length("\x0a\x03\xa0\x00\x05", 5);  // a camera with an unknown field
  RobotCalibration robot;
  EXPECT_TRUE(robot.ParseFromString(megabytes));
  EXPECT_EQ(robot.camera_size(), 68);
  for (const std::string& tail : {std::string("\x0a\x7f\x01"), std::string("\0abc", 4),
                                  std::string("\x0f\xff\xff"), std::string("\x0a")}) {
    EXPECT_FALSE(robot.ParseFromString(megabytes + tail)) << tail;
    EXPECT_FALSE(robot.ParseFromString(long_length + megabytes + tail)) << tail;
  }
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
