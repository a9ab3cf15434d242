// Small changes to valid records, and every very short input: the classes and the strict reader
// agree on which are records and on what they hold.
//
// Everything is deterministic: all one-bit flips, two-bit flips drawn from a fixed seed, all inputs
// of up to two bytes.
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <gtest/gtest.h>

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

constexpr int kTwoBitFlips = 1000;

const Entrance& Find(const std::vector<Entrance>& table, const std::string& name) {
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
        on_class_(ConcreteEntrances(GetParam())),
        on_message_(GenericEntrances()),
        flat_on_class_(Find(on_class_, "ParsePartialFromArray")),
        flat_on_message_(Find(on_message_, "ParsePartialFromArray")),
        blocks_on_class_(Find(on_class_, "ParsePartialFromZeroCopyStream, blocks of 7")),
        blocks_on_message_(Find(on_message_, "ParsePartialFromZeroCopyStream, blocks of 7")) {}

  // False if a call disagrees with the strict reader.
  bool AllAgree(const std::string& bytes) {
    const Input input(*instance_, bytes);
    ++(input.verdict.accepted ? accepted_ : refused_);
    return Check(Agrees(input, flat_on_class_, Call::kOnClass)) &&
           Check(Agrees(input, flat_on_message_, Call::kOnMessage)) &&
           Check(Agrees(input, blocks_on_class_, Call::kOnClass)) &&
           Check(Agrees(input, blocks_on_message_, Call::kOnMessage));
  }

  const std::unique_ptr<::google::protobuf::Message> instance_;
  const std::vector<Entrance> on_class_;
  const std::vector<Entrance> on_message_;
  const Entrance& flat_on_class_;
  const Entrance& flat_on_message_;
  const Entrance& blocks_on_class_;
  const Entrance& blocks_on_message_;
  int accepted_ = 0;
  int refused_ = 0;

 private:
  static bool Check(const ::testing::AssertionResult& result) {
    EXPECT_TRUE(result);
    return static_cast<bool>(result);
  }
};

std::vector<const char*> MessageNames() {
  std::vector<const char*> names;
  for (const MessageRow& message : Schema()) names.push_back(message.name);
  return names;
}

INSTANTIATE_TEST_SUITE_P(AllRecords, MutationTest, ::testing::ValuesIn(MessageNames()),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                           return std::string(info.param);
                         });

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

// Here one call on the class must do; the others see the same in the truncation tests.
TEST_P(MutationTest, EveryInputOfUpToTwoBytes) {
  int accepted = 0;
  int refused = 0;
  for (int size = 0; size <= 2; ++size) {
    for (int value = 0; value < 1 << 8 * size; ++value) {
      std::string bytes;
      for (int i = 0; i < size; ++i) bytes.push_back(static_cast<char>(value >> 8 * i));
      const Input input(*instance_, bytes);
      ++(input.verdict.accepted ? accepted : refused);
      ASSERT_TRUE(Agrees(input, flat_on_class_, Call::kOnClass));
    }
  }
  // The empty input, a varint field of each one-byte number, their empty texts, empty groups.
  EXPECT_GT(accepted, 128 * 15);
  EXPECT_GT(refused, 50000);
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
