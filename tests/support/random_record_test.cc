// The judges and makers of records, held against each other before other suites lean on them.
#include "tests/support/random_record.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

#include "tests/support/records.h"
#include "tests/support/reflect.h"
#include "tests/support/schema_table.h"
#include "tests/support/strict_reader.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::Message;
using ::google::protobuf::Reflection;
using ::google::protobuf::UnknownField;
using ::google::protobuf::UnknownFieldSet;

std::unique_ptr<Message> RandomRecord(uint32_t seed, const RandomOptions& options,
                                      const std::string& name) {
  std::mt19937 random(seed);
  std::unique_ptr<Message> record = NewRecord(name);
  FillRandomly(&random, options, record.get());
  return record;
}

TEST(FullRecordTest, SetsEveryField) {
  for (const MessageRow& message : Schema()) {
    const std::unique_ptr<Message> record = FullRecord(message.name);
    const Reflection* reflection = record->GetReflection();
    for (const FieldRow& row : message) {
      SCOPED_TRACE(FullName(message) + "." + row.name);
      const FieldDescriptor* field = record->GetDescriptor()->FindFieldByNumber(row.number);
      if (row.repeated()) {
        EXPECT_GE(reflection->FieldSize(*record, field), 2);
      } else {
        EXPECT_TRUE(reflection->HasField(*record, field));
      }
    }
    EXPECT_TRUE(record->IsInitialized()) << message.name;
    EXPECT_TRUE(reflection->GetUnknownFields(*record).empty());
    EXPECT_TRUE(EqualByReflection(*record, *FullRecord(message.name)));
  }
}

TEST(RandomRecordTest, SameSeedSameRecord) {
  ::google::protobuf::LogSilencer no_remarks_on_utf8;
  for (const MessageRow& message : Schema()) {
    std::set<std::string> different;
    for (uint32_t seed = 0; seed < 20; ++seed) {
      SCOPED_TRACE(std::string(message.name) + ", seed " + std::to_string(seed));
      const std::unique_ptr<Message> a = RandomRecord(seed, RandomOptions(), message.name);
      const std::unique_ptr<Message> b = RandomRecord(seed, RandomOptions(), message.name);
      EXPECT_TRUE(EqualByReflection(*a, *b));
      EXPECT_TRUE(a->IsInitialized());
      different.insert(DynamicTwin(*a)->SerializePartialAsString());
    }
    EXPECT_GE(different.size(), 6u) << message.name;
  }
}

TEST(RandomRecordTest, ReachesEveryCase) {
  std::set<std::string> set_fields;
  std::set<int> unknown_types;
  bool some_uninitialized = false;
  bool group_in_group = false;
  RandomOptions options;
  options.always_required = false;
  for (uint32_t seed = 0; seed < 200; ++seed) {
    for (const MessageRow& message : Schema()) {
      const std::unique_ptr<Message> record = RandomRecord(seed, options, message.name);
      some_uninitialized |= !record->IsInitialized();
      for (const FieldRow& row : message) {
        const FieldDescriptor* field = record->GetDescriptor()->FindFieldByNumber(row.number);
        const Reflection* reflection = record->GetReflection();
        if (row.repeated() ? reflection->FieldSize(*record, field) > 0
                           : reflection->HasField(*record, field)) {
          set_fields.insert(FullName(message) + "." + row.name);
        }
      }
      const UnknownFieldSet& unknown = record->GetReflection()->GetUnknownFields(*record);
      for (int i = 0; i < unknown.field_count(); ++i) {
        unknown_types.insert(unknown.field(i).type());
        if (unknown.field(i).type() != UnknownField::TYPE_GROUP) continue;
        const UnknownFieldSet& group = unknown.field(i).group();
        for (int j = 0; j < group.field_count(); ++j) {
          group_in_group |= group.field(j).type() == UnknownField::TYPE_GROUP;
        }
      }
    }
  }
  EXPECT_EQ(set_fields.size(), static_cast<size_t>(kFieldCount));
  EXPECT_EQ(unknown_types.size(), 5u);
  EXPECT_TRUE(some_uninitialized);
  EXPECT_TRUE(group_in_group);
}

TEST(RandomRecordTest, OptionsAreKept) {
  for (uint32_t seed = 0; seed < 20; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomOptions options;
    options.percent_set = 0;
    options.unknown_fields = false;
    EXPECT_EQ(HasBits(*RandomRecord(seed, options, "CameraIntrinsics")), 0x1Fu)
        << "the required fields alone";
    options.percent_set = 100;
    const std::unique_ptr<Message> record = RandomRecord(seed, options, "PanTiltSystemParameters");
    EXPECT_EQ(HasBits(*record), 0x7FFFu);
    EXPECT_TRUE(record->GetReflection()->GetUnknownFields(*record).empty());
    options.only_text = true;
    const std::unique_ptr<Message> text = RandomRecord(seed, options, "FocusCheckProto");
    const FieldDescriptor* name = text->GetDescriptor()->FindFieldByName("name");
    for (const char c : text->GetReflection()->GetString(*text, name)) {
      EXPECT_TRUE(c >= ' ' && c <= '~') << static_cast<int>(c);
    }
  }
}

// A dynamic twin shares no code with the record but the run-time's reflection.
TEST(ReflectTest, TwinIsEqualAndIndependentlyWrittenAlike) {
  ::google::protobuf::LogSilencer no_remarks_on_utf8;
  for (const MessageRow& message : Schema()) {
    for (uint32_t seed = 0; seed < 50; ++seed) {
      SCOPED_TRACE(std::string(message.name) + ", seed " + std::to_string(seed));
      const std::unique_ptr<Message> record = RandomRecord(seed, RandomOptions(), message.name);
      const std::unique_ptr<Message> twin = DynamicTwin(*record);
      ASSERT_NE(twin->GetReflection(), record->GetReflection());
      EXPECT_TRUE(EqualByReflection(*record, *twin));
      const std::string bytes = twin->SerializePartialAsString();
      const Verdict verdict = Judge(message.name, bytes);
      ASSERT_TRUE(verdict) << verdict;
      EXPECT_EQ(Rewrite(message.name, bytes), bytes);
    }
  }
}

// Every single change of a full record is noticed.
TEST(ReflectTest, NoticesEveryDifference) {
  for (const MessageRow& message : Schema()) {
    const std::unique_ptr<Message> full = FullRecord(message.name);
    for (const FieldRow& row : message) {
      SCOPED_TRACE(FullName(message) + "." + row.name);
      const std::unique_ptr<Message> changed = FullRecord(message.name);
      const FieldDescriptor* field = changed->GetDescriptor()->FindFieldByNumber(row.number);
      const Reflection* reflection = changed->GetReflection();
      if (row.repeated()) {
        const int last = reflection->FieldSize(*changed, field) - 1;
        reflection->SwapElements(changed.get(), field, last - 1, last);
        EXPECT_FALSE(EqualByReflection(*full, *changed)) << "last elements swapped";
        reflection->SwapElements(changed.get(), field, last - 1, last);
        ASSERT_TRUE(EqualByReflection(*full, *changed));
        reflection->RemoveLast(changed.get(), field);
      } else {
        reflection->ClearField(changed.get(), field);
      }
      EXPECT_FALSE(EqualByReflection(*full, *changed)) << "removed";
      EXPECT_FALSE(EqualByReflection(*changed, *full)) << "removed";
    }
    const std::unique_ptr<Message> changed = FullRecord(message.name);
    UnknownFieldSet* unknown = changed->GetReflection()->MutableUnknownFields(changed.get());
    EXPECT_TRUE(EqualByReflection(*full, *changed)) << "an empty unknown-field set is none";
    unknown->AddGroup(200)->AddVarint(1, 2);
    EXPECT_FALSE(EqualByReflection(*full, *changed)) << "unknown field";
  }
}

TEST(ReflectTest, ComparesNumbersBitForBit) {
  const auto float_record = [](uint32_t bits) {
    auto record = NewRecord("MarkerPositionInfo");
    record->GetReflection()->SetFloat(record.get(), record->GetDescriptor()->field(0),
                                      FloatOf(bits));
    return record;
  };
  EXPECT_FALSE(EqualByReflection(*float_record(0), *float_record(0x80000000)));
  EXPECT_TRUE(EqualByReflection(*float_record(0x7FC12345), *float_record(0x7FC12345)));
  EXPECT_FALSE(EqualByReflection(*float_record(0x7FC12345), *float_record(0x7FC12346)));
}

TEST(ReflectTest, EncodesUnknownFields) {
  UnknownFieldSet fields;
  fields.AddVarint(1, 300);
  fields.AddFixed32(2, 0x04030201);
  fields.AddFixed64(16, 0x0807060504030201);
  UnknownFieldSet* group = fields.AddGroup(3);
  group->AddLengthDelimited(4, "ab");
  group->AddGroup(5);
  EXPECT_EQ(EncodeUnknown(fields), std::string("\x08\xAC\x02"
                                               "\x15\x01\x02\x03\x04"
                                               "\x81\x01\x01\x02\x03\x04\x05\x06\x07\x08"
                                               "\x1B\x22\x02"
                                               "ab"
                                               "\x2B\x2C"
                                               "\x1C"));
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
