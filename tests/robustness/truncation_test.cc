// Broken input is refused through every entrance, and nothing else is.
//
// Two sources of input: every prefix of valid records, and a catalogue of malformed pieces put at
// every place where they can stand. The judge is the strict reader.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "calibration_common/calibration.pb.h"
#include "tests/robustness/agreement.h"
#include "tests/robustness/every_entrance.h"
#include "tests/support/class_calls.h"
#include "tests/support/entrances.h"
#include "tests/support/occurrences.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/runtime_facts.h"
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

class TruncationTest : public EveryEntranceTest {
 protected:
  void ExpectPrefixesAgree(const std::string& bytes, Entrances entrances) const {
    ASSERT_TRUE(Judge(message_.name, bytes)) << Judge(message_.name, bytes);
    for (size_t size = 0; size <= bytes.size(); ++size) {
      SCOPED_TRACE("prefix of " + std::to_string(size));
      if (!AllAgree(bytes.substr(0, size), entrances)) return;
    }
  }
};

INSTANTIATE_TEST_SUITE_P(AllRecords, TruncationTest, ::testing::ValuesIn(MessageNames()), NameOf);

// --- Prefixes ------------------------------------------------------------------------------------

// How many values the outermost message holds.
int ValuesOf(const Message& record) {
  std::vector<const FieldDescriptor*> fields;
  const Reflection* reflection = record.GetReflection();
  reflection->ListFields(record, &fields);
  int values = 0;
  for (const FieldDescriptor* f : fields) {
    values += f->is_repeated() ? reflection->FieldSize(record, f) : 1;
  }
  return values;
}

// A prefix that is a record ends behind a value of the outermost message, or is empty.
TEST_P(TruncationTest, EveryPrefixOfARecordWithEveryField) {
  const std::unique_ptr<Message> record = SmallFullRecord(message_.name);
  ExpectPrefixesAgree(record->SerializeAsString(), kEvery);
  EXPECT_EQ(accepted_, 1 + ValuesOf(*record));
}

TEST_P(TruncationTest, EveryPrefixOfARecordWithSeveralElements) {
  const std::unique_ptr<Message> record = FullRecord(message_.name);
  ExpectPrefixesAgree(record->SerializeAsString(), kInTurn);
  EXPECT_EQ(accepted_, 1 + ValuesOf(*record));
}

// A refused record keeps what was read in front of the cut, and what there is of the value that is
// cut. Through Message& on 3.21, a stream hands over whole values of the outermost message only,
// unless all of the bytes, and how many they are, are known at once.
TEST_P(TruncationTest, ARefusedPrefixLeavesWhatIsInFrontOfTheCut) {
  const std::string unknown = Tag(100, kLengthDelimited) +
                              "\x03"
                              "abc" +
                              WireWriter().Group(101, Tag(102, kVarint) + "\x01").bytes();
  std::string bytes = unknown + SmallFullRecord(message_.name)->SerializePartialAsString();
  for (const FieldRow& field : message_) {
    if (field.kind == Kind::kMessage) bytes += Nested(field.number, unknown);
  }
  bytes += unknown;
  const auto bytes_left = [this](const std::function<void(Message*)>& read) {
    const std::unique_ptr<Message> record = NewRecord(message_.name);
    read(record.get());
    return record->SerializePartialAsString();
  };
  std::string whole_values;
  for (size_t size = 0; size <= bytes.size(); ++size) {
    SCOPED_TRACE("prefix of " + std::to_string(size));
    const std::string prefix = bytes.substr(0, size);
    const std::string left = bytes_left([&](Message* record) { MergeOnClass(record, prefix); });
    if (Judge(message_.name, prefix).accepted) whole_values = left;
    for (const bool generic : {false, true}) {
      for (const Entrance& in : generic ? GenericEntrances() : ConcreteEntrances(message_.name)) {
        if (!in.partial) continue;
        SCOPED_TRACE(in.name + (generic ? " on Message&" : ""));
        const std::string found = bytes_left([&](Message* record) { in.parse(record, prefix); });
        const bool in_pieces = generic && in.source == Source::kStream && kParsesInPieces;
        const bool bounded = in.name.find("Bounded") != std::string::npos;
        if (in_pieces && bounded && found == left) continue;
        ASSERT_EQ(Hex(found), Hex(in_pieces ? whole_values : left));
      }
    }
  }
}

// With packed runs, values mistyped and unknown fields of every kind at every level.
TEST_P(TruncationTest, EveryPrefixOfMixedRecords) {
  for (uint32_t seed = 1; seed <= 4; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::string bytes;
    while (bytes.size() < 80 || bytes.size() > 200) {
      bytes = BytesOf(RandomOccurrences(&random, message_, 10));
    }
    ExpectPrefixesAgree(bytes, seed == 1 ? kEvery : kInTurn);
  }
}

// --- Malformed pieces ----------------------------------------------------------------------------

// Lengths that `rest` bytes do not satisfy: too long by a little and by a lot, and such as come to
// something small where they are cut to 32 bits or taken for signed.
std::vector<uint64_t> WrongLengths(uint64_t rest) {
  const uint64_t two_to_32 = 1ull << 32;
  return {rest + 1,
          rest + 16,
          rest + 100,
          (1ull << 31) - 1,
          1ull << 31,
          two_to_32 - 1,
          two_to_32,
          two_to_32 + rest,
          two_to_32 + 1,
          1ull << 35,
          (1ull << 63) - 1,
          1ull << 63,
          (1ull << 63) + rest,
          ~0ull};
}

TEST_P(TruncationTest, ALengthThatRunsPastTheEnd) {
  std::vector<std::string> catalogue;
  for (const auto& value : LengthDelimitedValues(message_)) {
    for (const std::string& contents : {std::string(), value.second}) {
      for (const uint64_t length : WrongLengths(contents.size())) {
        const std::string piece = value.first + WireWriter().Varint(length).Raw(contents).bytes();
        catalogue.push_back(piece);
        catalogue.push_back(Tag(100, kStartGroup) + piece + Tag(100, kEndGroup));
      }
    }
  }
  ExpectRefused(catalogue, kEvery);
}

TEST_P(TruncationTest, ALengthThatRunsPastItsEnclosingMessage) {
  std::vector<std::string> catalogue;
  for (const Path& path : PathsFrom(message_)) {
    if (path.numbers.empty()) continue;
    for (const auto& value : LengthDelimitedValues(*path.message)) {
      const size_t size = value.second.size();
      for (const uint64_t excess : {uint64_t{1}, uint64_t{16}, uint64_t{100}, uint64_t{1} << 32}) {
        const uint64_t length = size + excess;
        const std::string piece =
            value.first + WireWriter().Varint(length).Raw(value.second).bytes();
        catalogue.push_back(path.Wrap(piece) + Filler());
      }
    }
  }
  ExpectRefused(catalogue, kInTurn);
}

// Pieces that are malformed wherever they stand in the message.
std::vector<std::string> MalformedPieces(const MessageRow& message) {
  const std::string long_varint = std::string(10, '\x80') + '\x01';
  std::vector<std::string> pieces;
  // Field number 0.
  for (const std::string& zero :
       {std::string("\0", 1), std::string("\x80\0", 2), std::string("\x80\x80\x80\x80\0", 5)}) {
    pieces.push_back(zero);
    pieces.push_back(zero + '\x01');
  }
  pieces.push_back(std::string("\x01\0\0\0\0\0\0\0\0", 9));
  pieces.push_back(std::string("\x02\x01\0", 3));
  pieces.push_back("\x03\x04");
  pieces.push_back("\x04");
  pieces.push_back(std::string("\x05\0\0\0\0", 5));
  // More bytes than a varint can have: as a tag, a value, a length.
  pieces.push_back(long_varint + '\x01');
  pieces.push_back(Tag(100, kVarint) + long_varint);
  pieces.push_back(Tag(100, kLengthDelimited) + long_varint + "text");
  // Groups: not closed, closed as another.
  pieces.push_back(Tag(100, kStartGroup));
  pieces.push_back(Tag(100, kStartGroup) + Tag(1, kVarint) + '\x05');
  pieces.push_back(Tag(100, kStartGroup) + Tag(101, kEndGroup));
  pieces.push_back(Tag(100, kStartGroup) + std::string("\0", 1) + Tag(100, kEndGroup));
  pieces.push_back(Tag(100, kStartGroup) + '\x04');
  pieces.push_back(Tag(100, kStartGroup) + Tag(1, kStartGroup) + Tag(100, kEndGroup) +
                   Tag(1, kEndGroup));
  std::vector<int> numbers = {100, (1 << 29) - 1};
  for (const FieldRow& field : message) {
    const int number = field.number;
    numbers.push_back(number);
    const std::string tag = Tag(number, WireTypeOf(field.kind));
    if (WireTypeOf(field.kind) == kVarint) pieces.push_back(tag + long_varint);
    if (WireTypeOf(field.kind) == kLengthDelimited) pieces.push_back(tag + long_varint + "text");
    if (!field.repeated() || field.kind == Kind::kMessage) continue;
    const size_t width = WireTypeOf(field.kind) == kFixed64 ? 8 : 4;
    for (const size_t size : {size_t{1}, width - 1, width + 1, 2 * width - 1, 2 * width + 2}) {
      const std::string run = Nested(number, std::string(size, '\x3F'));
      pieces.push_back(run);
      // With bytes behind it that are fields from wherever the reading goes on.
      pieces.push_back(run + std::string(20, '\x78'));
      pieces.push_back(run + std::string(21, '\x78'));
    }
    pieces.push_back(Tag(number, kLengthDelimited) + long_varint + "text");
  }
  for (const int number : numbers) {
    pieces.push_back(Tag(number, static_cast<WireType>(6)));
    pieces.push_back(Tag(number, static_cast<WireType>(7)) + '\x01');
    pieces.push_back(Tag(number, kEndGroup));
    // A tag with nothing behind it.
    for (const WireType type : {kVarint, kFixed64, kLengthDelimited, kStartGroup, kFixed32}) {
      pieces.push_back(Tag(number, type));
    }
  }
  return pieces;
}

TEST_P(TruncationTest, MalformedPieces) {
  const std::string known = BytesOf({BoundaryOccurrences(message_.fields[0])[1]});
  std::vector<std::string> catalogue;
  for (const std::string& piece : MalformedPieces(message_)) {
    catalogue.push_back(piece);
    catalogue.push_back(known + piece);
  }
  ExpectRefused(catalogue, kEvery);
}

TEST_P(TruncationTest, MalformedPiecesInSubMessages) {
  std::vector<std::string> catalogue;
  for (const Path& path : PathsFrom(message_)) {
    if (path.numbers.empty()) continue;
    for (const std::string& piece : MalformedPieces(*path.message)) {
      catalogue.push_back(path.Wrap(piece) + Filler());
    }
  }
  ExpectRefused(catalogue, kInTurn);
}

// --- Numbers longer than need be -----------------------------------------------------------------

// Not malformed: the run-time reads them as their value.
TEST_P(TruncationTest, TagsAndLengthsLongerThanNeedBe) {
  std::vector<std::string> inputs;
  for (int length = 2; length <= 11; ++length) {
    for (const FieldRow& field : message_) {
      const Occurrence plain = BoundaryOccurrences(field)[1];
      const std::string tag = WireWriter().OverlongVarint(TagOf(field), length).bytes();
      inputs.push_back(tag + plain.value);
      inputs.push_back(plain.bytes() + tag + plain.value);
    }
    for (const auto& value : LengthDelimitedValues(message_)) {
      const std::string& contents = value.second;
      inputs.push_back(value.first +
                       WireWriter().OverlongVarint(contents.size(), length).Raw(contents).bytes());
    }
    inputs.push_back(WireWriter().OverlongVarint(100 << 3 | kStartGroup, length).bytes() +
                     WireWriter().OverlongVarint(100 << 3 | kEndGroup, length).bytes());
    inputs.push_back(Tag(100, kVarint) + WireWriter().OverlongVarint(5, length).bytes());
  }
  for (const std::string& bytes : inputs) {
    if (!AllAgree(bytes)) return;
  }
  EXPECT_EQ(10 * (inputs_ - accepted_), inputs_) << "only those of eleven bytes are malformed";
}

// A varint of ten bytes has room for 70 bits. A known field's tag was once taken for another's by
// what stands in the last six.
TEST_P(TruncationTest, BitsOfATagBeyondTheSixtyFourthAreDropped) {
  for (const FieldRow& field : message_) {
    const Occurrence plain = BoundaryOccurrences(field)[1];
    std::string tag = WireWriter().OverlongVarint(TagOf(field), 10).bytes();
    tag.back() = '\x60';
    if (!AllAgree(tag + plain.value) || !AllAgree(plain.bytes() + tag + plain.value)) return;
  }
  EXPECT_EQ(accepted_, inputs_);
}

// --- The two that started it ---------------------------------------------------------------------

TEST(Truncation, ATagWithNothingBehindItIsNoRecord) {
  RobotCalibration record;
  EXPECT_FALSE(record.ParseFromString("\x0A"));
  Message& message = record;
  EXPECT_FALSE(message.ParseFromString("\x0A"));
}

TEST(Truncation, ASubMessageCutAtAFieldBoundaryIsNoRecord) {
  // A camera of 8 bytes, of which the first field's 4 are there.
  const std::string camera = "\x0A\x08\x2A\x02on";
  RobotCalibration record;
  EXPECT_FALSE(record.ParseFromString(camera));
  EXPECT_TRUE(record.ParseFromString(camera + "\x32\x02on"));
  // Its enclosing message ends there, the input does not.
  PTZSystemCalibration outer;
  EXPECT_FALSE(outer.ParseFromString("\x1A\x06" + camera + "\xA0\x06\x01\x18"));
  EXPECT_TRUE(outer.ParseFromString("\x1A\x0A" + camera + "\x32\x02on"));
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
