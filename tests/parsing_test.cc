// Reading from the wire: what each field takes, in every order and mix, and what a failure leaves.
//
// Most tests make up a sequence of field occurrences, read its bytes on the record's class, from
// one buffer and in small blocks, and compare with the sequence applied through reflection.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "calibration_common/calibration.pb.h"
#include "tests/support/class_calls.h"
#include "tests/support/occurrences.h"
#include "tests/support/random_record.h"
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
using ::google::protobuf::UnknownFieldSet;
using ::google::protobuf::io::ArrayInputStream;
using ::google::protobuf::io::CodedInputStream;

constexpr WireType kWireTypes[] = {kVarint, kFixed64, kLengthDelimited, kStartGroup, kFixed32};
constexpr int kMaxFieldNumber = (1 << 29) - 1;

CodedInputStream FlatStream(const std::string& bytes) {
  return CodedInputStream(reinterpret_cast<const uint8_t*>(bytes.data()),
                          static_cast<int>(bytes.size()));
}

bool HasBit(const Message& record, const FieldRow& field) {
  return (HasBits(record) >> field.has_bit & 1) != 0;
}

// Reading the bytes of the sequence must do to a record what applying the sequence does.
void ExpectReads(const MessageRow& message, const Occurrences& sequence) {
  const std::string bytes = BytesOf(sequence);
  const std::unique_ptr<Message> expected = NewRecord(message.name);
  Apply(sequence, expected.get());
  for (const int block : {0, 1, 3, 16}) {
    SCOPED_TRACE("blocks of " + std::to_string(block));
    const std::unique_ptr<Message> record = NewRecord(message.name);
    EXPECT_TRUE(MergeOnClass(record.get(), bytes, block));
    EXPECT_TRUE(EqualByReflection(*expected, *record));
    EXPECT_EQ(HasBits(*record), HasBitsOf(sequence));
  }
}

// An occurrence whose reading can be cut off behind its tag, whatever the field.
Occurrence SomeOccurrence(const FieldRow& field) {
  int counter = 40;
  if (field.kind == Kind::kMessage) {
    return MessageOccurrence(field, FullOccurrences(FindMessage(field.message_type), &counter));
  }
  return BoundaryOccurrences(field)[3];
}

// Another one, of the same field.
Occurrence OtherOccurrence(const FieldRow& field) {
  return field.kind == Kind::kMessage ? MessageOccurrence(field, {})
                                      : BoundaryOccurrences(field)[1];
}

bool IsRepeatedNumber(const FieldRow& field) {
  return field.repeated() && field.kind != Kind::kMessage;
}

bool IsText(const FieldRow& field) {
  return field.kind == Kind::kString || field.kind == Kind::kBytes;
}

std::string Nested(int number, const std::string& contents) {
  return WireWriter().Tag(number, kLengthDelimited).LengthDelimited(contents).bytes();
}

// Once for each message of the schema.
class ParsingTest : public ::testing::TestWithParam<const char*> {
 protected:
  const MessageRow& message() const { return FindMessage(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(AllRecords, ParsingTest, ::testing::ValuesIn(MessageNames()),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                           return std::string(info.param);
                         });

// --- Values --------------------------------------------------------------------------------------

TEST_P(ParsingTest, EmptyInputChangesNothing) {
  ExpectReads(message(), {});
  const std::unique_ptr<Message> record = FullRecord(message().name);
  EXPECT_TRUE(MergeOnClass(record.get(), ""));
  EXPECT_TRUE(EqualByReflection(*FullRecord(message().name), *record));
}

TEST_P(ParsingTest, ReadsBoundaryValuesOfEveryField) {
  for (const FieldRow& field : message()) {
    for (const Occurrence& occurrence : BoundaryOccurrences(field)) {
      SCOPED_TRACE(std::string(field.name) + ", " + std::to_string(occurrence.value.size()) +
                   " bytes: " + ::testing::PrintToString(occurrence.value.substr(0, 12)));
      ExpectReads(message(), {occurrence});
    }
  }
}

// The boundary values once more, without reflection in between: one field of each kind.
TEST(ParsingValues, AreTheNumbersSent) {
  MarkerPositionInfo marker;
  ASSERT_TRUE(MergeOnClass(&marker, WireWriter().Tag(4, kVarint).Varint(~0ull).bytes()));
  EXPECT_EQ(marker.marker_id(), -1);
  ASSERT_TRUE(MergeOnClass(&marker, WireWriter().Tag(4, kVarint).Varint(0x80000000u).bytes()));
  EXPECT_EQ(marker.marker_id(), std::numeric_limits<int32_t>::min());
  ASSERT_TRUE(MergeOnClass(&marker, WireWriter().Tag(4, kVarint).Varint(0x500000007u).bytes()));
  EXPECT_EQ(marker.marker_id(), 7) << "only the low 32 bits count";
  ASSERT_TRUE(MergeOnClass(&marker, "\x0D" + std::string("\0\0\xC0\xBF", 4)));
  EXPECT_EQ(marker.x(), -1.5f);

  CalibrationMetadataProto metadata;
  ASSERT_TRUE(MergeOnClass(&metadata, WireWriter().Tag(1, kVarint).Varint(1ull << 63).bytes()));
  EXPECT_EQ(metadata.time(), std::numeric_limits<int64_t>::min());

  FocusCheckProto check;
  for (const uint64_t value : {1ull, 2ull, 1ull << 32, ~0ull}) {
    check.clear_ok();
    ASSERT_TRUE(MergeOnClass(&check, WireWriter().Tag(5, kVarint).Varint(value).bytes()));
    EXPECT_TRUE(check.ok()) << value;
  }
  ASSERT_TRUE(MergeOnClass(&check, std::string("\x28\0", 2)));
  EXPECT_TRUE(check.has_ok());
  EXPECT_FALSE(check.ok());

  CameraIntrinsics intrinsics;
  ASSERT_TRUE(MergeOnClass(&intrinsics, std::string("\x09\0\0\0\0\0\0\x04\xC0", 9)));
  EXPECT_EQ(intrinsics.fx(), -2.5);
  EXPECT_TRUE(intrinsics.has_fx());
  EXPECT_FALSE(intrinsics.has_fy());

  CalibrationImage image;
  ASSERT_TRUE(MergeOnClass(&image, std::string("\x22\x03y8\xFF\x2A\x03\0\x80\n", 10)));
  EXPECT_EQ(image.format(), "y8\xFF") << "strings are not checked for UTF-8";
  EXPECT_EQ(image.imgdata(), std::string("\0\x80\n", 3));
}

TEST_P(ParsingTest, NumbersLongerThanNeedBeAreReadAsTheirValue) {
  for (const FieldRow& field : message()) {
    SCOPED_TRACE(field.name);
    const Occurrence plain = SomeOccurrence(field);
    const int shortest = static_cast<int>(plain.tag.size());
    for (int length = shortest + 1; length <= 10; ++length) {
      Occurrence longer = plain;
      longer.tag = WireWriter().OverlongVarint(TagOf(field), length).bytes();
      ExpectReads(message(), {longer});
      // Behind another occurrence, where its tag is guessed first.
      ExpectReads(message(), {plain, longer});
    }
    Occurrence full = plain;
    full.tag = WireWriter().Varint(TagOf(field) | 3ull << 32).bytes();
    ExpectReads(message(), {full});  // a tag counts modulo 2^32

    if (WireTypeOf(field.kind) == kLengthDelimited) {
      const std::string contents = IsText(field) ? std::string(100, 't') : "";
      for (int length = 2; length <= 10; ++length) {
        Occurrence longer =
            IsText(field) ? TextOccurrence(field, contents) : MessageOccurrence(field, {});
        longer.value = WireWriter().OverlongVarint(contents.size(), length).Raw(contents).bytes();
        ExpectReads(message(), {longer, plain});
      }
    } else if (IsRepeatedNumber(field)) {
      Occurrence longer = PackedOccurrence(field, {4, 5});
      const std::string run = longer.value.substr(1);
      for (int length = 2; length <= 10; ++length) {
        longer.value = WireWriter().OverlongVarint(run.size(), length).Raw(run).bytes();
        ExpectReads(message(), {longer, plain});
      }
    } else if (WireTypeOf(field.kind) == kVarint) {
      for (int length = 2; length <= 10; ++length) {
        Occurrence longer = NumberOccurrence(field, 1);
        longer.value = WireWriter().OverlongVarint(1, length).bytes();
        ExpectReads(message(), {longer, OtherOccurrence(field), longer});
      }
    }
  }
}

// --- Order and repetition ------------------------------------------------------------------------

TEST_P(ParsingTest, EveryFieldMayFollowEveryOther) {
  for (const FieldRow& first : message()) {
    for (const FieldRow& second : message()) {
      SCOPED_TRACE(std::string(first.name) + " before " + second.name);
      ExpectReads(message(), {SomeOccurrence(first), OtherOccurrence(second)});
      if (IsRepeatedNumber(first)) {
        ExpectReads(message(), {PackedOccurrence(first, {1, 2}), SomeOccurrence(second)});
      }
      if (IsRepeatedNumber(second)) {
        ExpectReads(message(), {SomeOccurrence(first), PackedOccurrence(second, {1, 2})});
      }
    }
  }
}

TEST_P(ParsingTest, FieldsInAnyOrder) {
  int counter = 0;
  Occurrences sequence = FullOccurrences(message(), &counter);
  ExpectReads(message(), sequence);  // as declared
  const auto by_number = [](const Occurrence& a, const Occurrence& b) {
    return a.number < b.number;
  };
  std::stable_sort(sequence.begin(), sequence.end(), by_number);
  ExpectReads(message(), sequence);
  std::reverse(sequence.begin(), sequence.end());
  ExpectReads(message(), sequence);
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (size_t i = sequence.size(); i > 1; --i) std::swap(sequence[i - 1], sequence[random() % i]);
    ExpectReads(message(), sequence);
  }
}

TEST_P(ParsingTest, RandomSequences) {
  for (uint32_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    ExpectReads(message(), RandomOccurrences(&random, message(), 1 + static_cast<int>(seed % 25)));
  }
}

TEST_P(ParsingTest, TheLastOccurrenceWinsSubMessagesMergeElementsAppend) {
  for (const FieldRow& field : message()) {
    SCOPED_TRACE(field.name);
    const Occurrence some = SomeOccurrence(field);
    const Occurrence other = OtherOccurrence(field);
    ExpectReads(message(), {some, other});
    ExpectReads(message(), {other, some});
    ExpectReads(message(), {some, other, some});

    // The same onto what the record holds already.
    const std::unique_ptr<Message> expected = FullRecord(message().name);
    const std::unique_ptr<Message> record = FullRecord(message().name);
    Apply({other, some}, expected.get());
    EXPECT_TRUE(MergeOnClass(record.get(), other.bytes() + some.bytes()));
    EXPECT_TRUE(EqualByReflection(*expected, *record));
  }
}

TEST(ParsingMerge, KeepsTheSubMessageAndReusesClearedObjects) {
  CameraCalibration camera;
  CameraExtrinsics* extrinsics = camera.mutable_extrinsics();
  extrinsics->add_a(1);
  const std::string again = WireWriter()
                                .Tag(3, kLengthDelimited)
                                .LengthDelimited(WireWriter().Tag(1, kFixed64).Double(2).bytes())
                                .bytes();
  ASSERT_TRUE(MergeOnClass(&camera, again));
  EXPECT_EQ(&camera.extrinsics(), extrinsics);
  ASSERT_EQ(extrinsics->a_size(), 2);
  EXPECT_EQ(extrinsics->a(0), 1);
  EXPECT_EQ(extrinsics->a(1), 2);

  FocusInfo focus;
  const FocusInfoItem* item = focus.add_focus();
  focus.Clear();
  ASSERT_TRUE(MergeOnClass(&focus, std::string("\x0A\x02\x08\x05", 4)));
  EXPECT_EQ(&focus.focus(0), item) << "a cleared element is used again before one is made";
  EXPECT_EQ(focus.focus(0).target_id(), 5);
}

TEST_P(ParsingTest, BothEncodingsOfRepeatedNumbersMix) {
  for (const FieldRow& field : message()) {
    if (!IsRepeatedNumber(field)) continue;
    SCOPED_TRACE(field.name);
    const Occurrence a = NumberOccurrence(field, 11);
    const Occurrence b = NumberOccurrence(field, 12);
    const Occurrence none = PackedOccurrence(field, {});
    const Occurrence run = PackedOccurrence(field, {13, 14, 15});
    std::vector<uint64_t> many(1000);
    for (size_t i = 0; i < many.size(); ++i) many[i] = i;
    const Occurrence long_run = PackedOccurrence(field, many);
    for (const Occurrences& sequence : std::vector<Occurrences>{{none},
                                                                {a, b, a, b, a, b, a, b},
                                                                {run, a, b, run},
                                                                {run, run},
                                                                {a, none, b},
                                                                {a, run, b, none, none, run, a},
                                                                {long_run, a, long_run}}) {
      ExpectReads(message(), sequence);
      // With room in the field already, single elements are taken from the buffer in one go.
      const std::unique_ptr<Message> record = NewRecord(message().name);
      const std::unique_ptr<Message> expected = NewRecord(message().name);
      Apply(Occurrences(9, a), record.get());
      record->Clear();
      Apply(sequence, expected.get());
      EXPECT_TRUE(MergeOnClass(record.get(), BytesOf(sequence)));
      EXPECT_TRUE(EqualByReflection(*expected, *record));
    }
  }
}

// Elements are taken several at a time: any number of them, with another field's anywhere among
// them, whose value looks like nothing but tags of such elements.
TEST_P(ParsingTest, RunsOfElementsEndWhereAnotherFieldBegins) {
  for (const FieldRow& field : message()) {
    if (!IsRepeatedNumber(field)) continue;
    for (const FieldRow& other : message()) {
      if (!IsRepeatedNumber(other)) continue;
      SCOPED_TRACE(std::string(field.name) + ", " + other.name);
      const uint64_t tag = static_cast<uint8_t>(NumberOccurrence(field, 0).tag[0]);
      const uint64_t tags = tag * (other.kind == Kind::kDouble ? 0x0101010101010101u : 0x01010101u);
      for (size_t count = 0; count < 10; ++count) {
        for (size_t place = 0; place <= count; ++place) {
          Occurrences sequence;
          for (size_t i = 0; i < count; ++i) sequence.push_back(NumberOccurrence(field, 20 + i));
          sequence.insert(sequence.begin() + static_cast<std::ptrdiff_t>(place),
                          NumberOccurrence(other, tags));
          ExpectReads(message(), sequence);
        }
      }
    }
  }
}

// --- Unknown fields ------------------------------------------------------------------------------

TEST_P(ParsingTest, AWrongWireTypeIsKeptAsUnknownByteForByte) {
  std::mt19937 random(1);
  for (const FieldRow& field : message()) {
    for (const WireType type : WrongWireTypes(field)) {
      SCOPED_TRACE(std::string(field.name) + " under wire type " + std::to_string(type));
      const Occurrence wrong = UnknownOccurrence(&random, field.number, type);
      ExpectReads(message(), {wrong});
      ExpectReads(message(), {wrong, SomeOccurrence(field), wrong, OtherOccurrence(field)});

      const std::unique_ptr<Message> record = NewRecord(message().name);
      ASSERT_TRUE(MergeOnClass(record.get(), wrong.bytes()));
      EXPECT_EQ(HasBits(*record), 0u);
      EXPECT_EQ(record->GetReflection()->GetUnknownFields(*record).field_count(), 1);
      EXPECT_EQ(record->SerializePartialAsString(), wrong.bytes());

      // Behind a field that makes the parser expect another, with as many bytes as that would need.
      const Occurrence filler = UnknownOccurrence(&random, 1000, kFixed64);
      for (const FieldRow& before : message()) {
        SCOPED_TRACE(std::string("behind ") + before.name);
        ExpectReads(message(), {SomeOccurrence(before), wrong, filler});
      }
    }
  }
}

TEST_P(ParsingTest, UndeclaredNumbersAreKeptAsUnknownInOrder) {
  std::mt19937 random(2);
  std::vector<int> numbers;
  for (int number = 1; number <= 33; ++number) numbers.push_back(number);
  for (const int number : {127, 128, 200, 2047, 2048, 262144, kMaxFieldNumber}) {
    numbers.push_back(number);
  }
  Occurrences all;
  for (const int number : numbers) {
    if (FindField(message(), number) != nullptr) continue;
    for (const WireType type : kWireTypes) {
      SCOPED_TRACE("number " + std::to_string(number) + ", wire type " + std::to_string(type));
      const Occurrence unknown = UnknownOccurrence(&random, number, type);
      ExpectReads(message(), {unknown});
      all.push_back(unknown);
    }
  }
  ExpectReads(message(), all);
  const std::unique_ptr<Message> record = NewRecord(message().name);
  ASSERT_TRUE(MergeOnClass(record.get(), BytesOf(all)));
  EXPECT_TRUE(record->SerializePartialAsString() == BytesOf(all));

  // Before, between and behind the known fields.
  int counter = 0;
  Occurrences mixed;
  for (const Occurrence& known : FullOccurrences(message(), &counter)) {
    mixed.push_back(all[random() % all.size()]);
    mixed.push_back(known);
  }
  mixed.push_back(all.front());
  ExpectReads(message(), mixed);
}

TEST(ParsingUnknown, GroupsNest) {
  const std::string group =
      WireWriter()
          .Group(20, WireWriter()
                         .Tag(1, kFixed64)
                         .Double(1)
                         .Group(20, WireWriter().Group(7, "").Tag(3, kVarint).Varint(300).bytes())
                         .Tag(2, kLengthDelimited)
                         .LengthDelimited("text")
                         .bytes())
          .bytes();
  CameraIntrinsics intrinsics;
  ASSERT_TRUE(MergeOnClass(&intrinsics, group));
  const UnknownFieldSet& fields = intrinsics.unknown_fields();
  ASSERT_EQ(fields.field_count(), 1);
  ASSERT_EQ(fields.field(0).number(), 20);
  const UnknownFieldSet& outer = fields.field(0).group();
  ASSERT_EQ(outer.field_count(), 3);
  EXPECT_EQ(outer.field(2).length_delimited(), "text");
  const UnknownFieldSet& inner = outer.field(1).group();
  ASSERT_EQ(inner.field_count(), 2);
  EXPECT_EQ(inner.field(0).group().field_count(), 0);
  EXPECT_EQ(inner.field(1).varint(), 300u);
  EXPECT_EQ(intrinsics.SerializePartialAsString(), group);
}

// A group in a sub-message, which one buffer holds whole: read alike, or refused alike, as where
// the stream has only a byte at a time.
TEST_P(ParsingTest, GroupsInSubMessages) {
  const auto start = [] { return WireWriter().Tag(100, kStartGroup); };
  const std::string end = WireWriter().Tag(100, kEndGroup).bytes();
  const std::string inner = WireWriter().Tag(7, kVarint).Varint(1ull << 60).bytes();
  const uint64_t tag = 9 << 3 | kVarint;
  const struct {
    const char* name;
    std::string bytes;
    bool accepted;
  } rows[] = {
      {"empty", start().Raw(end).bytes(), true},
      {"a group in a group", start().Group(1, inner).Raw(inner).Group(100, "").Raw(end).bytes(),
       true},
      {"tag longer than need be", start().OverlongVarint(tag, 2).Varint(5).Raw(end).bytes(), true},
      {"tag of ten bytes", start().OverlongVarint(tag, 10).Varint(5).Raw(end).bytes(), true},
      {"tag above 32 bits", start().Varint(tag | 1ull << 40).Varint(5).Raw(end).bytes(), true},
      {"start longer than need be",
       WireWriter().OverlongVarint(100 << 3 | kStartGroup, 4).Raw(inner).Raw(end).bytes(), true},
      {"tags of five bytes", WireWriter().Group(kMaxFieldNumber, inner).bytes(), true},
      {"end above 32 bits", start().Varint(100 << 3 | kEndGroup | 1ull << 40).bytes(), true},
      {"end longer than need be", start().OverlongVarint(100 << 3 | kEndGroup, 5).bytes(), true},
      {"no end", start().Raw(inner).bytes(), false},
      {"no end of the inner one", start().Tag(1, kStartGroup).Raw(end).bytes(), false},
      {"end of another", start().Tag(101, kEndGroup).bytes(), false},
      {"half a tag", start().Raw("\xA4").bytes(), false},
      {"half a value", start().Tag(1, kFixed64).Fixed32(0).bytes(), false},
      {"text that is too long", start().Tag(1, kLengthDelimited).Varint(9).Raw(end).bytes(), false},
      {"zero tag", start().Varint(0).Raw(end).bytes(), false},
      {"number 0", start().Tag(0, kVarint).Varint(1).Raw(end).bytes(), false},
      {"group of number 0", start().Group(0, "").Raw(end).bytes(), false},
      {"wire type 6", start().Varint(9 << 3 | 6).Varint(1).Raw(end).bytes(), false},
      {"wire type 7", start().Varint(9 << 3 | 7).Varint(1).Raw(end).bytes(), false},
      {"tag of eleven bytes", start().OverlongVarint(tag, 11).Varint(1).Raw(end).bytes(), false},
  };
  for (const auto& row : rows) {
    for (const FieldRow& field : message()) {
      if (field.kind != Kind::kMessage) continue;
      SCOPED_TRACE(std::string(field.name) + ": " + row.name);
      const std::string known = FullRecord(field.message_type)->SerializePartialAsString();
      const std::string group = inner + row.bytes;
      std::string around = group;
      around.append(known).append(group);
      for (const std::string& contents : {group, around}) {
        const std::string bytes = Nested(field.number, contents);
        ASSERT_EQ(Judge(message().name, bytes).accepted, row.accepted);
        const std::unique_ptr<Message> whole = NewRecord(message().name);
        const std::unique_ptr<Message> pieces = NewRecord(message().name);
        EXPECT_EQ(MergeOnClass(whole.get(), bytes), row.accepted);
        EXPECT_EQ(MergeOnClass(pieces.get(), bytes, 1), row.accepted);
        EXPECT_TRUE(EqualByReflection(*pieces, *whole));
        if (row.accepted) {
          EXPECT_EQ(whole->SerializePartialAsString(), Rewrite(message().name, bytes));
        }
      }
    }
  }
}

TEST(ParsingUnknown, AMistypedRequiredFieldIsMissing) {
  CameraIntrinsics intrinsics;
  std::string bytes = WireWriter().Tag(1, kVarint).Varint(4).bytes();
  for (int number = 2; number <= 5; ++number) {
    bytes += WireWriter().Tag(number, kFixed64).Double(number).bytes();
  }
  ASSERT_TRUE(MergeOnClass(&intrinsics, bytes)) << "parsing does not ask for required fields";
  EXPECT_FALSE(intrinsics.has_fx());
  EXPECT_EQ(intrinsics.fx(), 0);
  EXPECT_FALSE(intrinsics.IsInitialized());
  ASSERT_EQ(intrinsics.unknown_fields().field_count(), 1);
  EXPECT_EQ(intrinsics.unknown_fields().field(0).number(), 1);
  EXPECT_EQ(intrinsics.unknown_fields().field(0).varint(), 4u);
}

// --- What ends a message -------------------------------------------------------------------------

TEST_P(ParsingTest, AZeroOrEndGroupTagEndsTheMessage) {
  std::vector<uint32_t> tags = {0, 4, 15 << 3 | kEndGroup, 20 << 3 | kEndGroup,
                                static_cast<uint32_t>(kMaxFieldNumber) << 3 | kEndGroup};
  for (const FieldRow& field : message()) {
    tags.push_back(static_cast<uint32_t>(field.number) << 3 | kEndGroup);
  }
  for (const FieldRow& field : message()) {
    const Occurrence before = SomeOccurrence(field);
    const std::unique_ptr<Message> expected = NewRecord(message().name);
    before.apply(expected.get());
    for (const uint32_t tag : tags) {
      SCOPED_TRACE(std::string(field.name) + ", then tag " + std::to_string(tag));
      const std::string read = before.bytes() + WireWriter().Varint(tag).bytes();
      const std::string bytes = read + OtherOccurrence(message().fields[0]).bytes();
      const std::unique_ptr<Message> record = NewRecord(message().name);
      CodedInputStream input = FlatStream(bytes);
      EXPECT_TRUE(MergeOnClass(record.get(), &input));
      EXPECT_TRUE(input.LastTagWas(tag));
      EXPECT_FALSE(input.ConsumedEntireMessage());
      EXPECT_TRUE(EqualByReflection(*expected, *record)) << "what is behind is not read";
      // The tag, and nothing behind it, has been consumed.
      std::string rest;
      EXPECT_TRUE(input.ReadString(&rest, static_cast<int>(bytes.size() - read.size())));
      EXPECT_EQ(rest, bytes.substr(read.size()));
      EXPECT_FALSE(input.ReadString(&rest, 1));
    }
    if (field.kind != Kind::kMessage) continue;
    for (const uint32_t tag : tags) {
      SCOPED_TRACE(std::string(field.name) + " ends at tag " + std::to_string(tag));
      for (const std::string& inside : {std::string(), BytesOf({before})}) {
        const std::string contents = inside + WireWriter().Varint(tag).bytes();
        const std::unique_ptr<Message> record = NewRecord(message().name);
        const std::string bytes = before.tag + WireWriter().LengthDelimited(contents).bytes();
        EXPECT_FALSE(MergeOnClass(record.get(), bytes)) << "inside a sub-message it is malformed";
        EXPECT_EQ(HasBit(*record, field), !field.repeated());
      }
    }
  }
}

TEST_P(ParsingTest, ALimitEndsTheMessage) {
  int counter = 0;
  const Occurrences sequence = FullOccurrences(message(), &counter);
  const std::string bytes = BytesOf(sequence);
  const std::string all = bytes + SomeOccurrence(message().fields[0]).bytes();
  const std::unique_ptr<Message> expected = NewRecord(message().name);
  Apply(sequence, expected.get());
  const std::unique_ptr<Message> record = NewRecord(message().name);
  CodedInputStream input = FlatStream(all);
  const CodedInputStream::Limit limit = input.PushLimit(static_cast<int>(bytes.size()));
  EXPECT_TRUE(MergeOnClass(record.get(), &input));
  EXPECT_TRUE(input.ConsumedEntireMessage());
  EXPECT_TRUE(EqualByReflection(*expected, *record));
  input.PopLimit(limit);
  EXPECT_TRUE(MergeOnClass(record.get(), &input)) << "the stream goes on behind the limit";
  SomeOccurrence(message().fields[0]).apply(expected.get());
  EXPECT_TRUE(EqualByReflection(*expected, *record));
}

// --- Failure -------------------------------------------------------------------------------------

// Reads `before` and then `cut`, an occurrence of the field of which only `size` bytes of the value
// are there.
void ExpectTruncationSpares(const MessageRow& message, const FieldRow& field,
                            const Occurrences& before, const Occurrence& cut, size_t size) {
  const std::string bytes = BytesOf(before) + cut.tag + cut.value.substr(0, size);
  for (const int block : {0, 1, 3}) {
    const std::unique_ptr<Message> expected = NewRecord(message.name);
    Apply(before, expected.get());
    const std::unique_ptr<Message> record = NewRecord(message.name);
    EXPECT_FALSE(MergeOnClass(record.get(), bytes, block));
    const Reflection* reflection = record->GetReflection();
    const FieldDescriptor* f = DescriptorOf(*record, field);
    if (field.kind == Kind::kMessage && field.repeated()) {
      // The element whose reading failed stays.
      ASSERT_EQ(reflection->FieldSize(*record, f), reflection->FieldSize(*expected, f) + 1);
      reflection->RemoveLast(record.get(), f);
    } else if (field.kind == Kind::kMessage || IsText(field)) {
      EXPECT_TRUE(HasBit(*record, field)) << "presence is set before the read";
      EXPECT_TRUE(reflection->HasField(*record, f));
      reflection->ClearField(record.get(), f);
      reflection->ClearField(expected.get(), f);
    } else if (field.repeated()) {
      // Elements of a packed run may have been appended.
      while (reflection->FieldSize(*record, f) > reflection->FieldSize(*expected, f)) {
        ASSERT_GT(cut.value.size(), 8u) << "a single element is appended when it is complete";
        reflection->RemoveLast(record.get(), f);
      }
    }
    EXPECT_TRUE(EqualByReflection(*expected, *record));
  }
}

TEST_P(ParsingTest, ATruncatedFieldLeavesWhatWasReadBefore) {
  const FieldRow* previous = nullptr;
  for (const FieldRow* field : WireOrder(message())) {
    Occurrences candidates = {SomeOccurrence(*field)};
    if (IsRepeatedNumber(*field)) candidates.push_back(PackedOccurrence(*field, {7, 8, 9}));
    // The field set before or not; its tag read as such, or guessed behind the previous field.
    std::vector<Occurrences> befores = {{}, {OtherOccurrence(*field)}};
    if (previous != nullptr) {
      befores.push_back({SomeOccurrence(*previous)});
      befores.push_back({OtherOccurrence(*field), SomeOccurrence(*previous)});
    }
    for (const Occurrence& cut : candidates) {
      for (const Occurrences& before : befores) {
        for (size_t size = 0; size < cut.value.size(); ++size) {
          SCOPED_TRACE(std::string(field->name) + ", behind " + std::to_string(before.size()) +
                       " others, cut after " + std::to_string(size));
          ExpectTruncationSpares(message(), *field, before, cut, size);
        }
      }
    }
    previous = field;
  }
}

TEST_P(ParsingTest, AFailureInASubMessageKeepsWhatItHadRead) {
  for (const FieldRow& field : message()) {
    if (field.kind != Kind::kMessage) continue;
    SCOPED_TRACE(field.name);
    const MessageRow& inner = FindMessage(field.message_type);
    const Occurrence good = SomeOccurrence(inner.fields[0]);
    const std::unique_ptr<Message> expected = NewRecord(inner.name);
    good.apply(expected.get());
    // A wire type that does not exist, behind a good field.
    const std::string contents = good.bytes() + '\x0F';
    const std::string bytes =
        WireWriter().Tag(field.number, kLengthDelimited).LengthDelimited(contents).bytes();
    const std::unique_ptr<Message> record = NewRecord(message().name);
    EXPECT_FALSE(MergeOnClass(record.get(), bytes));
    const Reflection* reflection = record->GetReflection();
    const FieldDescriptor* f = DescriptorOf(*record, field);
    EXPECT_TRUE(EqualByReflection(*expected, field.repeated()
                                                 ? reflection->GetRepeatedMessage(*record, f, 0)
                                                 : reflection->GetMessage(*record, f)));
  }
}

TEST(ParsingFailure, AStringThatRunsPastTheEndKeepsItsPresence) {
  CameraIntrinsics intrinsics;
  EXPECT_FALSE(MergeOnClass(&intrinsics,
                            WireWriter().Tag(11, kLengthDelimited).Varint(5).Raw("four").bytes()));
  EXPECT_TRUE(intrinsics.has_x_bin());
}

int logged = 0;

TEST_P(ParsingTest, FailureIsNotLogged) {
  ::google::protobuf::LogHandler* const before = ::google::protobuf::SetLogHandler(
      [](::google::protobuf::LogLevel, const char*, int, const std::string&) { ++logged; });
  logged = 0;
  int counter = 0;
  const std::string bytes = BytesOf(FullOccurrences(message(), &counter));
  int refused = 0;
  for (size_t size = 0; size < bytes.size(); ++size) {
    const std::unique_ptr<Message> record = NewRecord(message().name);
    refused += !MergeOnClass(record.get(), bytes.substr(0, size));
  }
  ::google::protobuf::SetLogHandler(before);
  EXPECT_GT(refused, 0);
  EXPECT_EQ(logged, 0);
}

// --- Cached sizes --------------------------------------------------------------------------------

void CollectTree(const Message& record, std::vector<const Message*>* tree) {
  tree->push_back(&record);
  std::vector<const FieldDescriptor*> fields;
  const Reflection* reflection = record.GetReflection();
  reflection->ListFields(record, &fields);
  for (const FieldDescriptor* f : fields) {
    if (f->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) continue;
    if (!f->is_repeated()) CollectTree(reflection->GetMessage(record, f), tree);
    for (int i = 0; f->is_repeated() && i < reflection->FieldSize(record, f); ++i) {
      CollectTree(reflection->GetRepeatedMessage(record, f, i), tree);
    }
  }
}

TEST_P(ParsingTest, CachedSizesAreNotTouched) {
  const std::unique_ptr<Message> record = FullRecord(message().name);
  const std::string bytes = record->SerializeAsString();
  std::vector<const Message*> old_objects;
  CollectTree(*record, &old_objects);
  std::vector<int> sizes;
  sizes.reserve(old_objects.size());
  for (const Message* object : old_objects) sizes.push_back(object->GetCachedSize());
  EXPECT_EQ(sizes[0], static_cast<int>(bytes.size()));

  ASSERT_TRUE(MergeOnClass(record.get(), bytes + "\xA2\x06\x01u"));
  for (size_t i = 0; i < old_objects.size(); ++i) {
    EXPECT_EQ(old_objects[i]->GetCachedSize(), sizes[i]);
  }
  std::vector<const Message*> objects;
  CollectTree(*record, &objects);
  for (const Message* object : objects) {
    if (std::find(old_objects.begin(), old_objects.end(), object) != old_objects.end()) continue;
    EXPECT_EQ(object->GetCachedSize(), 0) << "an object that the parser made";
  }
}

// --- Nesting -------------------------------------------------------------------------------------

// From one buffer, or from blocks of that size.
bool MergeWithin(int recursion_limit, const std::string& bytes, Message* record, int block = -1) {
  ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()), block);
  CodedInputStream input(&stream);
  input.SetRecursionLimit(recursion_limit);
  return MergeOnClass(record, &input) && input.ConsumedEntireMessage();
}

// As MergeWithin, on Message&.
bool MergeGenericallyWithin(int recursion_limit, const std::string& bytes, Message* record) {
  CodedInputStream input = FlatStream(bytes);
  input.SetRecursionLimit(recursion_limit);
  return record->MergePartialFromCodedStream(&input) && input.ConsumedEntireMessage();
}

// Encoded PTZSystemCalibrations: other_cameras, camera, intrinsics, sample_points.
std::string DeepestChain(int levels) {
  std::string bytes;
  constexpr int kNumbers[] = {3, 1, 1, 16};
  for (int level = levels; level > 0; --level) bytes = Nested(kNumbers[level - 1], bytes);
  return bytes;
}

TEST(ParsingDepth, EachLevelTakesOneUnit) {
  for (int levels = 0; levels <= 4; ++levels) {
    for (int limit = 0; limit <= 6; ++limit) {
      SCOPED_TRACE(std::to_string(levels) + " levels, limit " + std::to_string(limit));
      PTZSystemCalibration record;
      EXPECT_EQ(MergeWithin(limit, DeepestChain(levels), &record), levels <= limit);
      PTZSystemCalibration generic;
      EXPECT_EQ(MergeGenericallyWithin(limit, DeepestChain(levels), &generic), levels <= limit);
      EXPECT_EQ(Judge("PTZSystemCalibration", DeepestChain(levels), limit).accepted,
                levels <= limit);
      // What the limit left: singular sub-messages are made first, elements after the check.
      const bool other_cameras = levels > 0;
      EXPECT_EQ(record.has_other_cameras(), other_cameras);
      const bool camera = levels > 1 && limit > 1;
      ASSERT_EQ(record.other_cameras().camera_size(), camera ? 1 : 0);
      if (!camera) continue;
      const CameraCalibration& calibration = record.other_cameras().camera(0);
      EXPECT_EQ(calibration.has_intrinsics(), levels > 2);
      EXPECT_EQ(calibration.intrinsics().sample_points_size(), levels > 3 && limit > 3 ? 1 : 0);
    }
  }
  PTZSystemCalibration record;
  EXPECT_TRUE(MergeOnClass(&record, DeepestChain(4))) << "the run-time's own limit";
}

TEST_P(ParsingTest, DepthIsGivenBackAfterEachRun) {
  for (const FieldRow& field : message()) {
    if (field.kind != Kind::kMessage) continue;
    SCOPED_TRACE(field.name);
    const std::string one = MessageOccurrence(field, {}).bytes();
    std::string run;
    std::string runs;
    for (int i = 0; i < 50; ++i) {
      run += one;
      runs += one + "\xA0\x06\x01";  // an unknown field ends a run
    }
    for (const std::string& bytes : {one, run, runs, run + runs}) {
      EXPECT_TRUE(MergeWithin(1, bytes, NewRecord(message().name).get()));
      EXPECT_FALSE(MergeWithin(0, bytes, NewRecord(message().name).get()));
    }
  }
}

TEST_P(ParsingTest, UnknownGroupsTakeDepthToo) {
  std::string groups;
  for (int levels = 1; levels <= 4; ++levels) {
    groups = WireWriter().Group(100, groups).bytes();
    std::string many;
    for (int i = 0; i < 50; ++i) many += groups;
    for (int limit = 0; limit <= 5; ++limit) {
      SCOPED_TRACE(std::to_string(levels) + " groups, limit " + std::to_string(limit));
      for (const std::string& bytes : {groups, many}) {
        EXPECT_EQ(MergeWithin(limit, bytes, NewRecord(message().name).get()), levels <= limit);
        EXPECT_EQ(MergeGenericallyWithin(limit, bytes, NewRecord(message().name).get()),
                  levels <= limit);
        for (const FieldRow& field : message()) {
          if (field.kind != Kind::kMessage) continue;
          const std::string inside = Nested(field.number, bytes);
          const std::unique_ptr<Message> whole = NewRecord(message().name);
          const std::unique_ptr<Message> pieces = NewRecord(message().name);
          EXPECT_EQ(MergeWithin(limit, inside, whole.get()), levels < limit);
          EXPECT_EQ(MergeWithin(limit, inside, pieces.get(), 1), levels < limit);
          EXPECT_TRUE(EqualByReflection(*pieces, *whole));
        }
      }
    }
  }
}

// --- Worked examples -----------------------------------------------------------------------------

TEST(ParsingExamples, CameraIntrinsics) {
  WireWriter bytes;
  bytes.Tag(1, kFixed64).Double(458.654);
  bytes.Tag(6, kLengthDelimited)
      .LengthDelimited(WireWriter().Double(1).Double(2).bytes())
      .Tag(6, kFixed64)
      .Double(3)
      .Tag(6, kFixed64)
      .Double(4)
      .Tag(6, kLengthDelimited)
      .LengthDelimited(WireWriter().Double(5).bytes());
  bytes.Tag(11, kLengthDelimited).LengthDelimited("bin");
  bytes.Raw(std::string("\x82\x01\x05\x0D\0\0\x80\x3F\x82\x01\0", 11));
  bytes.Raw(std::string("\x8D\x01\0\0\0\x40\x90\x01\x07\x98\x01\x08", 12));
  CameraIntrinsics record;
  ASSERT_TRUE(MergeOnClass(&record, bytes.bytes()));
  EXPECT_EQ(record.fx(), 458.654);
  ASSERT_EQ(record.k_size(), 5);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(record.k(i), i + 1);
  EXPECT_EQ(record.x_bin(), "bin");
  ASSERT_EQ(record.sample_points_size(), 2);
  EXPECT_EQ(record.sample_points(0).img_x(), 1);
  EXPECT_FALSE(record.sample_points(1).has_img_x());
  EXPECT_EQ(record.tgt_z(), 2);
  EXPECT_EQ(record.tgt_width(), 7);
  EXPECT_EQ(record.tgt_height(), 8);
  EXPECT_EQ(HasBits(record), 0x70401u);
}

TEST(ParsingExamples, FocusInfoItemInAndOutOfNumberOrder) {
  const std::string target_code = WireWriter().Tag(9, kVarint).Varint(90).bytes();
  const std::string middle = WireWriter()
                                 .Tag(2, kFixed32)
                                 .Float(2)
                                 .Tag(3, kFixed32)
                                 .Float(3)
                                 .Tag(4, kFixed32)
                                 .Float(4)
                                 .Tag(5, kFixed32)
                                 .Float(5)
                                 .Tag(6, kFixed32)
                                 .Float(6)
                                 .Tag(7, kVarint)
                                 .Varint(7)
                                 .Tag(8, kVarint)
                                 .Varint(8)
                                 .bytes();
  const std::string target_id = "\x08\x01";
  const std::vector<std::string> orders = {target_id + middle + target_code,
                                           target_id + target_code + middle};
  for (const std::string& bytes : orders) {
    FocusInfoItem item;
    ASSERT_TRUE(MergeOnClass(&item, bytes));
    EXPECT_EQ(item.target_id(), 1);
    EXPECT_EQ(item.target_code(), 90);
    EXPECT_EQ(item.cutoff_threshold(), 2);
    EXPECT_EQ(item.cutoff_cycles_per_pix(), 3);
    EXPECT_EQ(item.cutoff_cycles_per_mm(), 4);
    EXPECT_EQ(item.pix_per_mm(), 5);
    ASSERT_EQ(item.transfer_function_size(), 1);
    EXPECT_EQ(item.transfer_function(0), 6);
    EXPECT_EQ(item.valid_min(), 7);
    EXPECT_EQ(item.valid_max(), 8);
  }
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
