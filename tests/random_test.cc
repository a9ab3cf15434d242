// Random records against the run-time's own dynamic class of the same schema: whatever the two are
// asked to do, they end up alike, and write the same bytes.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/text_format.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>

#include "calibration_common/calibration.pb.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"
#include "tests/support/sample_values.h"
#include "tests/support/schema_table.h"
#include "tests/support/sizes.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::Message;
using ::google::protobuf::Reflection;
using ::google::protobuf::TextFormat;

// Per class: as many times this in all as there are classes, and two of them for each seed.
constexpr uint32_t kSeeds = 50;

// A record and the dynamic message that holds the same.
template <class T>
struct Pair {
  T record;
  std::unique_ptr<Message> twin = NewDynamic(T::descriptor());

  void Fill(std::mt19937* random, const RandomOptions& options) {
    FillRandomly(random, options, &record);
    twin = DynamicTwin(record);
  }
};

template <class T>
void ExpectAlike(const Pair<T>& pair) {
  EXPECT_TRUE(EqualByReflection(*pair.twin, pair.record));
  const std::string bytes = pair.twin->SerializePartialAsString();
  EXPECT_TRUE(pair.record.SerializePartialAsString() == bytes);
  const Message& message = pair.record;
  EXPECT_TRUE(message.SerializePartialAsString() == bytes);
  EXPECT_EQ(SizeOf(pair.record), SizeOf(*pair.twin));
  EXPECT_EQ(pair.record.IsInitialized(), pair.twin->IsInitialized());
}

template <class T>
class RandomTest : public ::testing::Test {
 protected:
  // Calls test(&random, options) for every seed, with options that differ from seed to seed.
  template <class F>
  void ForEachSeed(F test) {
    ::google::protobuf::LogSilencer no_remarks_on_utf8;
    for (uint32_t seed = 0; seed < kSeeds; ++seed) {
      SCOPED_TRACE(T::descriptor()->name() + ", seed " + std::to_string(seed));
      std::mt19937 random(seed);
      RandomOptions options;
      options.percent_set = seed % 3 == 0 ? kSparse : seed % 3 == 1 ? 50 : kDense;
      options.always_required = seed % 5 != 0;
      test(&random, options);
      if (this->HasFailure()) return;
    }
  }
};
TYPED_TEST_SUITE(RandomTest, AllRecords);

TYPED_TEST(RandomTest, WritesAndReadsAsTheTwinDoes) {
  this->ForEachSeed([](std::mt19937* random, const RandomOptions& options) {
    Pair<TypeParam> pair;
    pair.Fill(random, options);
    ExpectAlike(pair);
    const std::string bytes = pair.twin->SerializePartialAsString();
    EXPECT_TRUE(EncodeByTable(pair.record) == bytes);

    Pair<TypeParam> read;
    EXPECT_TRUE(read.record.ParsePartialFromString(bytes));
    EXPECT_TRUE(read.twin->ParsePartialFromString(pair.record.SerializePartialAsString()));
    EXPECT_TRUE(EqualByReflection(pair.record, read.record));
    ExpectAlike(read);
    const std::unique_ptr<Message> through_message(pair.record.New());
    EXPECT_TRUE(through_message->ParsePartialFromString(bytes));
    EXPECT_TRUE(EqualByReflection(pair.record, *through_message));
  });
}

// One encoding behind another is the encoding of the two merged.
TYPED_TEST(RandomTest, MergesAsTheTwinDoes) {
  this->ForEachSeed([](std::mt19937* random, const RandomOptions& options) {
    Pair<TypeParam> a, b;
    a.Fill(random, options);
    b.Fill(random, options);
    Pair<TypeParam> concatenated;
    const std::string bytes =
        a.record.SerializePartialAsString() + b.record.SerializePartialAsString();
    EXPECT_TRUE(concatenated.record.ParsePartialFromString(bytes));

    TypeParam typed(a.record), by_reflection(a.record);
    typed.MergeFrom(b.record);
    by_reflection.MergeFrom(*b.twin);
    a.twin->MergeFrom(b.record);
    static_cast<Message&>(a.record).MergeFrom(b.record);
    ExpectAlike(a);
    ExpectAlike(b);
    EXPECT_TRUE(EqualByReflection(a.record, typed));
    EXPECT_TRUE(EqualByReflection(a.record, by_reflection));
    EXPECT_TRUE(EqualByReflection(a.record, concatenated.record));
  });
}

TYPED_TEST(RandomTest, CopiesAsTheTwinDoes) {
  this->ForEachSeed([](std::mt19937* random, const RandomOptions& options) {
    Pair<TypeParam> a, b;
    a.Fill(random, options);
    b.Fill(random, options);
    const TypeParam constructed(a.record);
    EXPECT_TRUE(EqualByReflection(a.record, constructed));
    b.record = a.record;
    b.twin->CopyFrom(a.record);
    ExpectAlike(b);
    EXPECT_TRUE(EqualByReflection(a.record, b.record));
    b.record.CopyFrom(*a.twin);
    ExpectAlike(b);
  });
}

TYPED_TEST(RandomTest, TextFormatOutAndIn) {
  this->ForEachSeed([](std::mt19937* random, RandomOptions options) {
    options.unknown_fields = false;  // text format writes them but does not read them
    Pair<TypeParam> pair;
    pair.Fill(random, options);
    std::string text, twin_text;
    EXPECT_TRUE(TextFormat::PrintToString(pair.record, &text));
    EXPECT_TRUE(TextFormat::PrintToString(*pair.twin, &twin_text));
    EXPECT_EQ(text, twin_text);

    TextFormat::Parser parser;
    parser.AllowPartialMessage(true);
    Pair<TypeParam> read;
    EXPECT_TRUE(parser.ParseFromString(text, &read.record)) << text;
    EXPECT_TRUE(parser.ParseFromString(text, read.twin.get()));
    ExpectAlike(read);
    // The values may have changed on their way: NaNs are all one to text format, and run-times
    // up to 3.7 read their own spelling of the largest float as infinity.
    EXPECT_EQ(HasBits(read.record), HasBits(pair.record));
  });
}

TYPED_TEST(RandomTest, TextFormatOfUnknownFields) {
  this->ForEachSeed([](std::mt19937* random, const RandomOptions& options) {
    Pair<TypeParam> pair;
    pair.Fill(random, options);
    EXPECT_EQ(pair.record.DebugString(), pair.twin->DebugString());
    EXPECT_EQ(pair.record.ShortDebugString(), pair.twin->ShortDebugString());
  });
}

TYPED_TEST(RandomTest, SwapsByReflection) {
  this->ForEachSeed([](std::mt19937* random, const RandomOptions& options) {
    Pair<TypeParam> a, b;
    a.Fill(random, options);
    b.Fill(random, options);
    a.record.GetReflection()->Swap(&a.record, &b.record);
    a.twin.swap(b.twin);
    ExpectAlike(a);
    ExpectAlike(b);
    a.record.Swap(&b.record);
    a.twin.swap(b.twin);
    ExpectAlike(a);
    ExpectAlike(b);
  });
}

TYPED_TEST(RandomTest, IsEmptyAfterClearAndFillsAgain) {
  this->ForEachSeed([](std::mt19937* random, const RandomOptions& options) {
    Pair<TypeParam> pair;
    pair.Fill(random, options);
    const std::string bytes = pair.twin->SerializePartialAsString();
    pair.record.Clear();
    pair.twin->Clear();
    ExpectAlike(pair);
    EXPECT_EQ(SizeOf(pair.record), 0);
    EXPECT_TRUE(EqualByReflection(TypeParam::default_instance(), pair.record));
    EXPECT_TRUE(pair.record.ParsePartialFromString(bytes));
    EXPECT_TRUE(pair.twin->ParsePartialFromString(bytes));
    ExpectAlike(pair);

    // Field by field, too.
    for (int i = 0; i < TypeParam::descriptor()->field_count(); ++i) {
      const FieldDescriptor* field = TypeParam::descriptor()->field(i);
      pair.record.GetReflection()->ClearField(&pair.record, field);
      pair.twin->GetReflection()->ClearField(pair.twin.get(), field);
      ExpectAlike(pair);
    }
    EXPECT_EQ(HasBits(pair.record), 0u);
  });
}

bool HasUnknown(const Message& message) {
  const Reflection* r = message.GetReflection();
  if (!r->GetUnknownFields(message).empty()) return true;
  for (const FieldRow& row : FindMessage(message.GetDescriptor()->name())) {
    if (row.kind != Kind::kMessage) continue;
    const FieldDescriptor* f = message.GetDescriptor()->FindFieldByNumber(row.number);
    if (row.repeated()) {
      for (int i = 0; i < r->FieldSize(message, f); ++i) {
        if (HasUnknown(r->GetRepeatedMessage(message, f, i))) return true;
      }
    } else if (r->HasField(message, f) && HasUnknown(r->GetMessage(message, f))) {
      return true;
    }
  }
  return false;
}

TYPED_TEST(RandomTest, DiscardsUnknownFieldsEverywhere) {
  int had_some = 0;
  this->ForEachSeed([&had_some](std::mt19937* random, const RandomOptions& options) {
    Pair<TypeParam> pair;
    pair.Fill(random, options);
    had_some += HasUnknown(pair.record);
    pair.record.DiscardUnknownFields();
    pair.twin->DiscardUnknownFields();
    EXPECT_FALSE(HasUnknown(pair.record));
    ExpectAlike(pair);
  });
  EXPECT_GT(had_some, 0);
}

// The object itself and, at least, all that its sub-messages and strings take.
template <class T>
size_t LeastSpace(const T& record) {
  const Reflection* r = record.GetReflection();
  size_t least = sizeof(T);
  std::string scratch;
  for (const FieldRow& row : FindMessage(T::descriptor()->name())) {
    const FieldDescriptor* f = T::descriptor()->FindFieldByNumber(row.number);
    if (row.repeated()) {
      for (int i = 0; i < r->FieldSize(record, f); ++i) {
        least += row.kind == Kind::kMessage  ? SpaceOf(r->GetRepeatedMessage(record, f, i))
                 : row.kind == Kind::kDouble ? 8
                                             : 4;
      }
    } else if (r->HasField(record, f)) {
      if (row.kind == Kind::kMessage) least += SpaceOf(r->GetMessage(record, f));
      if (row.kind == Kind::kString || row.kind == Kind::kBytes) {
        least += r->GetStringReference(record, f, &scratch).size();
      }
    }
  }
  return least;
}

TYPED_TEST(RandomTest, CountsTheSpaceItTakes) {
  const TypeParam empty;
  EXPECT_EQ(SpaceOf(empty), sizeof(TypeParam));
  this->ForEachSeed([](std::mt19937* random, const RandomOptions& options) {
    Pair<TypeParam> pair;
    pair.Fill(random, options);
    EXPECT_GE(SpaceOf(pair.record), LeastSpace(pair.record));
  });
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
