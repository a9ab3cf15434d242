// Small changes to valid records, and every very short input: the classes and the strict reader
// agree on which are records and on what they hold.
//
// Everything is deterministic: all one-bit flips; all two-bit flips, or of a large record those
// that lie close together, and a number of distant ones drawn from a fixed seed; all inputs of up
// to two bytes, and of three for three messages.
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/robustness/agreement.h"
#include "tests/support/class_calls.h"
#include "tests/support/entrances.h"
#include "tests/support/occurrences.h"
#include "tests/support/records.h"
#include "tests/support/schema_table.h"
#include "tests/support/strict_reader.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::io::ArrayInputStream;

constexpr int kTwoBitFlips = 1000;

const Entrance& Find(const std::vector<Entrance>& table, const char* name) {
  for (const Entrance& entrance : table) {
    if (entrance.name == name) return entrance;
  }
  ADD_FAILURE() << "no entrance named '" << name << "'";
  return table[0];
}

// Once for each message of the schema.
class MutationTest : public ::testing::TestWithParam<const char*> {
 protected:
  MutationTest()
      : instance_(NewRecord(GetParam())),
        reused_(NewRecord(GetParam())),
        on_class_(ConcreteEntrances(GetParam())),
        on_message_(GenericEntrances()),
        flat_on_class_(Find(on_class_, "ParsePartialFromArray")),
        flat_on_message_(Find(on_message_, "ParsePartialFromArray")),
        blocks_on_class_(Find(on_class_, "ParsePartialFromZeroCopyStream, blocks of 7")),
        blocks_on_message_(Find(on_message_, "ParsePartialFromZeroCopyStream, blocks of 7")),
        message_(FindMessage(GetParam())) {}

  // False if a call disagrees with the strict reader.
  bool AllAgree(const std::string& bytes) {
    const Input input(*instance_, bytes);
    ++(input.verdict.accepted ? accepted_ : refused_);
    return Check(Agrees(input, flat_on_class_, Call::kOnClass)) &&
           Check(Agrees(input, flat_on_message_, Call::kOnMessage)) &&
           Check(Agrees(input, blocks_on_class_, Call::kOnClass)) &&
           Check(Agrees(input, blocks_on_message_, Call::kOnMessage));
  }

  // The same from an array on the class alone, and quickly: of what is refused only that it is. The
  // record is used again from one input to the next.
  bool FlatAgrees(const std::string& bytes) {
    const bool is_record = IsRecord(message_, bytes);
    ++(is_record ? accepted_ : refused_);
    if (!flat_on_class_.parse(reused_.get(), bytes) && !is_record) return true;
    return Check(Agrees(Input(*instance_, bytes), flat_on_class_, Call::kOnClass));
  }

  const std::unique_ptr<::google::protobuf::Message> instance_;
  const std::unique_ptr<::google::protobuf::Message> reused_;
  const std::vector<Entrance> on_class_;
  const std::vector<Entrance> on_message_;
  const Entrance& flat_on_class_;
  const Entrance& flat_on_message_;
  const Entrance& blocks_on_class_;
  const Entrance& blocks_on_message_;
  const MessageRow& message_;
  int accepted_ = 0;
  int refused_ = 0;

 private:
  static bool Check(const ::testing::AssertionResult& result) {
    EXPECT_TRUE(result);
    return static_cast<bool>(result);
  }
};

INSTANTIATE_TEST_SUITE_P(AllRecords, MutationTest, ::testing::ValuesIn(MessageNames()), NameOf);

std::string Flip(std::string bytes, size_t bit) {
  bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << bit % 8));
  return bytes;
}

// A record with every field, and one with packed runs, values mistyped and unknown fields.
std::vector<std::string> Originals(const std::string& name) {
  std::mt19937 random(1);
  std::string mixed;
  while (mixed.size() < 50 || mixed.size() > 300) {
    mixed = BytesOf(RandomOccurrences(&random, FindMessage(name), 8));
  }
  return {SmallFullRecord(name)->SerializeAsString(), mixed};
}

TEST_P(MutationTest, EveryOneBitFlip) {
  for (const std::string& bytes : Originals(GetParam())) {
    ASSERT_TRUE(AllAgree(bytes));
    ASSERT_EQ(refused_, 0) << "the original itself";
    for (size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
      SCOPED_TRACE("bit " + std::to_string(bit));
      ASSERT_TRUE(AllAgree(Flip(bytes, bit)));
    }
    EXPECT_GT(accepted_, 1);
    EXPECT_GT(refused_, 0);
    accepted_ = refused_ = 0;
  }
}

TEST_P(MutationTest, SomeTwoBitFlips) {
  std::mt19937 random(2);
  for (const std::string& bytes : Originals(GetParam())) {
    for (int i = 0; i < kTwoBitFlips / 2; ++i) {
      const size_t first = random() % (8 * bytes.size());
      // As often close to the first as anywhere.
      const size_t second =
          (i % 2 == 0 ? random() : first + 1 + random() % 64) % (8 * bytes.size());
      SCOPED_TRACE("bits " + std::to_string(first) + " and " + std::to_string(second));
      ASSERT_TRUE(AllAgree(Flip(Flip(bytes, first), second)));
    }
  }
}

// How many two-bit flips of one record are tried, about, counted in bytes to be read.
constexpr size_t kTwoBitFlipBytes = 4000000;

// Both bits anywhere if the record is small enough, else within a distance of each other. One call
// on the class must do.
TEST_P(MutationTest, EveryTwoBitFlipNearby) {
  for (const std::string& bytes : Originals(GetParam())) {
    const size_t bits = 8 * bytes.size();
    const size_t reach = std::max<size_t>(8, kTwoBitFlipBytes / bytes.size() / bits);
    for (size_t first = 0; first < bits; ++first) {
      for (size_t second = first + 1; second <= first + reach && second < bits; ++second) {
        ASSERT_TRUE(FlatAgrees(Flip(Flip(bytes, first), second))) << first << " and " << second;
      }
    }
  }
  EXPECT_GT(accepted_, 0);
  EXPECT_GT(refused_, 0);
}

// Calls test(bytes) with every string of the size.
template <class Test>
void ForEachString(int size, Test test) {
  std::string bytes(static_cast<size_t>(size), '\0');
  for (int value = 0; value < 1 << 8 * size; ++value) {
    for (int i = 0; i < size; ++i) bytes[i] = static_cast<char>(value >> 8 * i);
    test(bytes);
    if (::testing::Test::HasFailure()) return;
  }
}

// One call on the class must do; the others see the same in the truncation tests.
TEST_P(MutationTest, EveryInputOfUpToTwoBytes) {
  for (int size = 0; size <= 2; ++size) {
    ForEachString(size, [this](const std::string& bytes) { EXPECT_TRUE(FlatAgrees(bytes)); });
  }
  // The empty input, a varint field of each one-byte number, their empty texts, empty groups.
  EXPECT_GT(accepted_, 128 * 15);
  EXPECT_GT(refused_, 50000);
}

class ShortInputTest : public MutationTest {};

// Between them they have fields of every kind, tags of one and two bytes, and sub-messages.
INSTANTIATE_TEST_SUITE_P(ThreeRecords, ShortInputTest,
                         ::testing::Values("CameraIntrinsics", "CameraCalibration",
                                           "FocusCheckProto"),
                         NameOf);

TEST_P(ShortInputTest, EveryInputOfThreeBytes) {
  ForEachString(3, [this](const std::string& bytes) { EXPECT_TRUE(FlatAgrees(bytes)); });
  EXPECT_GT(accepted_, 500000);
  EXPECT_GT(refused_, 15000000);
}

// --- What was found ------------------------------------------------------------------------------

// A zero tag in the middle made the run-time step back further than its stream had come, which it
// takes for a programming error: it threw.
TEST(Mutation, AZeroTagInABoundedStreamOfSmallBlocksDoesNotThrow) {
  const std::string bytes("\0\0\0\0\x20\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x01", 15);
  for (int block = 1; block <= 7; ++block) {
    for (size_t size = 0; size <= bytes.size(); ++size) {
      const std::string prefix = bytes.substr(0, size);
      const std::unique_ptr<::google::protobuf::Message> record = NewRecord("MarkerPositionInfo");
      ArrayInputStream stream(prefix.data(), static_cast<int>(size), block);
      bool accepted = false;
      EXPECT_NO_THROW(accepted =
                          record->ParseFromBoundedZeroCopyStream(&stream, static_cast<int>(size)));
      EXPECT_EQ(accepted, size == 0) << size << " bytes in blocks of " << block;
    }
  }
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
