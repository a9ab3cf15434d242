// What is accepted is written back without loss: reading what was written gives an equal record,
// and from the second writing on the bytes are the same, whichever calls write and read them.
//
// The inputs hold every kind of field in any order, packed runs and single elements mixed, sub-
// messages in several pieces, numbers longer than need be, floats of every bit pattern that
// matters, mistyped and unknown fields.
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/entrances.h"
#include "tests/support/occurrences.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"
#include "tests/support/schema_table.h"
#include "tests/support/strict_reader.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

constexpr uint32_t kSeeds = 150;

template <class T>
class RewritingTest : public ::testing::Test {};
TYPED_TEST_SUITE(RewritingTest, AllRecords);

// The partial calls: the others do the same behind a look at required fields.
template <class Row>
std::vector<Row> Partial(std::vector<Row> table) {
  std::vector<Row> partial;
  for (const Row& row : table) {
    if (row.partial) partial.push_back(row);
  }
  return partial;
}

TYPED_TEST(RewritingTest, LosesNothing) {
  using T = TypeParam;
  ::google::protobuf::LogSilencer no_remarks;
  const std::string& name = T::descriptor()->name();
  const std::vector<Entrance> on_class = Partial(ConcreteEntrances<T>());
  const std::vector<Entrance> on_message = Partial(GenericEntrances());
  const std::vector<Exit> from_class = Partial(ConcreteExits<T>());
  const std::vector<Exit> from_message = Partial(GenericExits());
  for (uint32_t seed = 0; seed < kSeeds; ++seed) {
    SCOPED_TRACE(name + ", seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::string input =
        BytesOf(RandomOccurrences(&random, FindMessage(name), 1 + static_cast<int>(seed % 12)));
    T first;
    ASSERT_TRUE(first.ParsePartialFromString(input));
    const std::string expected = Rewrite(name, input);
    for (const auto* exits : {&from_class, &from_message}) {
      for (const Exit& exit : *exits) {
        std::string written;
        ASSERT_TRUE(exit.write(first, &written)) << exit.name;
        ASSERT_EQ(written, expected) << exit.name;
      }
    }
    for (const auto* entrances : {&on_class, &on_message}) {
      const Entrance& entrance = (*entrances)[seed % entrances->size()];
      T second;
      ASSERT_TRUE(entrance.parse(&second, expected)) << entrance.name;
      ASSERT_TRUE(EqualByReflection(first, second)) << entrance.name;
      ASSERT_EQ(second.SerializePartialAsString(), expected) << entrance.name;
    }
  }
}

// More than any call reads or merges at a time.
TYPED_TEST(RewritingTest, LosesNothingOfLongRecords) {
  using T = TypeParam;
  ::google::protobuf::LogSilencer no_remarks;
  const std::string& name = T::descriptor()->name();
  std::mt19937 random(1);
  std::string input;
  while (input.size() < 300000) {
    input += BytesOf(RandomOccurrences(&random, FindMessage(name), 100));
  }
  const std::string expected = Rewrite(name, input);
  for (const auto& entrances : {ConcreteEntrances<T>(), GenericEntrances()}) {
    for (const Entrance& entrance : Partial(entrances)) {
      SCOPED_TRACE(entrance.name);
      T record;
      ASSERT_TRUE(entrance.parse(&record, input));
      std::string written;
      ASSERT_TRUE(record.SerializePartialToString(&written));
      ASSERT_TRUE(written == expected);
    }
  }
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
