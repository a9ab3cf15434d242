// The tables of calls: complete, alike for every class, and every row does what its name says.
#include "tests/support/entrances.h"

#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;

template <class T>
class EntrancesTest : public ::testing::Test {};
TYPED_TEST_SUITE(EntrancesTest, AllRecords, );

TYPED_TEST(EntrancesTest, TablesHaveTheSameRows) {
  const auto concrete = ConcreteEntrances<TypeParam>();
  const auto generic = GenericEntrances();
  ASSERT_EQ(concrete.size(), 52u);
  ASSERT_EQ(generic.size(), concrete.size());
  std::set<std::string> names;
  for (size_t i = 0; i < concrete.size(); ++i) {
    EXPECT_EQ(concrete[i].name, generic[i].name);
    EXPECT_EQ(concrete[i].source, generic[i].source);
    EXPECT_EQ(concrete[i].partial, generic[i].partial);
    EXPECT_EQ(concrete[i].merges, generic[i].merges);
    EXPECT_EQ(concrete[i].partial, concrete[i].name.find("Partial") != std::string::npos);
    EXPECT_EQ(concrete[i].merges, concrete[i].name.find("Merge") == 0);
    names.insert(concrete[i].name);
  }
  EXPECT_EQ(names.size(), concrete.size());

  const auto concrete_exits = ConcreteExits<TypeParam>();
  const auto generic_exits = GenericExits();
  ASSERT_EQ(concrete_exits.size(), 26u);
  ASSERT_EQ(generic_exits.size(), concrete_exits.size());
  for (size_t i = 0; i < concrete_exits.size(); ++i) {
    EXPECT_EQ(concrete_exits[i].name, generic_exits[i].name);
  }
}

TYPED_TEST(EntrancesTest, FullRecordThroughEveryCall) {
  const std::unique_ptr<Message> full = FullRecord(TypeParam::descriptor()->name());
  const std::string bytes = DynamicTwin(*full)->SerializeAsString();
  for (const auto& exits : {ConcreteExits<TypeParam>(), GenericExits()}) {
    for (const Exit& exit : exits) {
      SCOPED_TRACE(exit.name);
      std::string written;
      EXPECT_TRUE(exit.write(*full, &written));
      EXPECT_TRUE(written == bytes);
    }
  }
  for (const auto& entrances : {ConcreteEntrances<TypeParam>(), GenericEntrances()}) {
    for (const Entrance& entrance : entrances) {
      SCOPED_TRACE(entrance.name);
      TypeParam record;
      EXPECT_TRUE(entrance.parse(&record, bytes));
      EXPECT_TRUE(EqualByReflection(*full, record));
      // A wire type that does not exist, a zero tag, the end of a group that never began.
      for (const char tail : {'\x07', '\0', '\x0C'}) {
        EXPECT_FALSE(entrance.parse(&record, bytes + tail)) << "then " << static_cast<int>(tail);
      }
      TypeParam with_unknown;
      with_unknown.GetReflection()->MutableUnknownFields(&with_unknown)->AddVarint(200, 1);
      EXPECT_TRUE(entrance.parse(&with_unknown, bytes));
      EXPECT_EQ(static_cast<bool>(EqualByReflection(*full, with_unknown)), !entrance.merges)
          << "a call that merges keeps what was there, the others clear it";
    }
  }
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
