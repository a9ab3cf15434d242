// Every field of every message, damaged in every way that its kind can be: a table made of the
// schema, judged by the strict reader.
//
// What is damaged stands alone, between other fields, and in every sub-message that can hold it.
// Some of the rows are valid records on purpose: a reader that refuses too much fails as well.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/robustness/agreement.h"
#include "tests/robustness/every_entrance.h"
#include "tests/support/occurrences.h"
#include "tests/support/schema_table.h"
#include "tests/support/strict_reader.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

class DamageTest : public EveryEntranceTest {
 protected:
  // Tries the piece, which is to go into the message that `path` leads to, there alone and with a
  // field behind it, and says where if something disagrees.
  bool PieceAgrees(const Path& path, const std::string& piece) const {
    const std::string behind = BoundaryOccurrences(path.message->fields[0])[1].bytes();
    const Entrances entrances = path.numbers.empty() ? kEvery : kInTurn;
    return AllAgree(path.Wrap(piece), entrances) && AllAgree(path.Wrap(piece + behind), kInTurn);
  }

  // Both verdicts came up: neither a reader that takes everything nor one that takes nothing
  // passes.
  void ExpectBothVerdicts() const {
    EXPECT_GT(accepted_, 0);
    EXPECT_LT(accepted_, inputs_);
  }
};

INSTANTIATE_TEST_SUITE_P(AllRecords, DamageTest, ::testing::ValuesIn(MessageNames()), NameOf);

TEST_P(DamageTest, EveryLengthOfEveryLengthDelimitedField) {
  for (const Path& path : PathsFrom(message_)) {
    const std::string behind = BoundaryOccurrences(path.message->fields[0])[1].bytes();
    for (const auto& value : LengthDelimitedValues(*path.message)) {
      for (const std::string& tail : {std::string(), behind}) {
        const uint64_t rest = value.second.size() + tail.size();
        for (const uint64_t length :
             {uint64_t{0}, uint64_t{1}, rest - 1, rest, rest + 1, (uint64_t{1} << 31) - 1,
              uint64_t{1} << 31, (uint64_t{1} << 32) - 1, uint64_t{1} << 63, ~uint64_t{0}}) {
          const std::string bytes = path.Wrap(
              value.first + WireWriter().Varint(length).Raw(value.second).Raw(tail).bytes());
          if (!AllAgree(bytes, path.numbers.empty() ? kEvery : kInTurn)) return;
        }
      }
    }
  }
  ExpectBothVerdicts();
}

// A varint of `size` bytes, the last of which says that another follows if it is `cut`.
std::string VarintOf(int size, uint64_t value, bool cut) {
  std::string bytes = WireWriter().OverlongVarint(value, size).bytes();
  if (cut) bytes.back() = static_cast<char>(bytes.back() | 0x80);
  return bytes;
}

TEST_P(DamageTest, VarintsOfOneToElevenBytes) {
  for (const Path& path : PathsFrom(message_)) {
    // Unknown, and every field: under this wire type it is read or kept as unknown.
    std::vector<int> numbers = {100};
    for (const FieldRow& field : *path.message) numbers.push_back(field.number);
    for (const int number : numbers) {
      for (int size = 1; size <= 11; ++size) {
        for (const uint64_t value : {uint64_t{0}, uint64_t{1}, 0x5555555555555555u, ~uint64_t{0}}) {
          for (const bool cut : {false, true}) {
            if (!PieceAgrees(path, Tag(number, kVarint) + VarintOf(size, value, cut))) return;
          }
        }
        // The tenth byte has room for one bit; more are dropped.
        if (size == 10 &&
            !PieceAgrees(path, Tag(number, kVarint) + std::string(9, '\xFF') + '\x7F')) {
          return;
        }
      }
    }
  }
  ExpectBothVerdicts();
}

TEST_P(DamageTest, PackedRunsOfEverySize) {
  int runs = 0;
  for (const Path& path : PathsFrom(message_)) {
    for (const FieldRow& field : *path.message) {
      if (!field.repeated() || field.kind == Kind::kMessage) continue;
      ++runs;
      const size_t width = WireTypeOf(field.kind) == kFixed64 ? 8 : 4;
      for (size_t size = 0; size <= 4 * width + 1; ++size) {
        const std::string run = Nested(field.number, std::string(size, '\x3F'));
        const int accepted_before = accepted_;
        if (!PieceAgrees(path, run)) return;
        ASSERT_EQ(accepted_ - accepted_before, size % width == 0 ? 2 : 0) << field.name << size;
      }
    }
  }
  if (runs > 0) ExpectBothVerdicts();
}

// Wire types that do not exist among them: behind each field, a reader may expect the next one.
TEST_P(DamageTest, EveryTagBehindEveryField) {
  int highest = 0;
  for (const FieldRow& field : message_) highest = std::max(highest, field.number);
  for (const FieldRow& field : message_) {
    const std::string first = field.kind == Kind::kMessage ? Nested(field.number, "")
                                                           : BoundaryOccurrences(field)[1].bytes();
    for (uint64_t tag = 0; tag < static_cast<uint64_t>(highest + 2) * 8; ++tag) {
      const std::string second = first + WireWriter().Varint(tag).bytes();
      const std::string end_group = WireWriter().Varint(tag + 1).bytes();
      for (const std::string& rest : {std::string(), std::string(1, '\0'), std::string(1, '\1'),
                                      std::string(4, '\1'), std::string(8, '\1'), end_group}) {
        if (!AllAgree(second + rest, kInTurn)) return;
      }
    }
  }
  ExpectBothVerdicts();
}

TEST_P(DamageTest, EveryFieldTwiceAndOutOfOrder) {
  for (const FieldRow& first : message_) {
    const Occurrences ones = BoundaryOccurrences(first);
    for (const FieldRow& second : message_) {
      const Occurrences others = BoundaryOccurrences(second);
      const Occurrence& a = ones[0];
      const Occurrence& b = others.back();
      const Occurrence& c = ones.back();
      for (const Occurrences& sequence :
           std::vector<Occurrences>{{a, b, c}, {b, a, c}, {c, a, b}, {c, b, a, b}}) {
        if (!AllAgree(BytesOf(sequence), kInTurn)) return;
      }
      // The same cut short: what is left of the last field is no field.
      const std::string all = BytesOf({c, b, a});
      if (!AllAgree(all.substr(0, all.size() - 1), kInTurn)) return;
    }
  }
  // All of them, forwards, backwards and shuffled.
  std::mt19937 random(3);
  for (int i = 0; i < 10; ++i) {
    int counter = 0;
    Occurrences all = FullOccurrences(message_, &counter);
    const Occurrences again = FullOccurrences(message_, &counter);
    all.insert(all.end(), again.begin(), again.end());
    if (i == 1) std::reverse(all.begin(), all.end());
    // Not std::shuffle(), which differs from one standard library to the next.
    for (size_t j = all.size(); i >= 2 && j > 1; --j) std::swap(all[j - 1], all[random() % j]);
    if (!AllAgree(BytesOf(all))) return;
  }
  ExpectBothVerdicts();
}

// Groups of the number `n`, around or beside the fields of a message that are in `inner`.
std::vector<std::string> Groups(int n, int other, const std::string& inner) {
  const std::string start = Tag(n, kStartGroup), end = Tag(n, kEndGroup);
  const std::string other_start = Tag(other, kStartGroup), other_end = Tag(other, kEndGroup);
  return {
      start + end,
      start + inner + end,
      start + start + inner + end + end,
      start + other_start + inner + other_end + end,
      // Not closed, closed as another, closed crosswise, closed twice, closed before it is opened.
      start,
      start + inner,
      start + start + inner + end,
      start + other_end,
      start + inner + other_end,
      start + other_start + inner + end + other_end,
      start + inner + end + end,
      end,
      inner + end,
      end + start,
      // Opened in the message, closed in a piece of text that lies in it, and the other way round.
      start + Nested(other, inner + end),
      Nested(other, start + inner) + end,
      // A value in it that is cut off by its end, or reaches over it.
      start + Tag(other, kVarint) + end,
      start + Tag(other, kLengthDelimited) + '\x05' + end,
      start + Tag(other, kFixed32) + end,
      start + Tag(other, kFixed64) + end,
      start + std::string(1, '\0') + end,
  };
}

TEST_P(DamageTest, GroupsOpenedAndClosedInEveryWay) {
  for (const Path& path : PathsFrom(message_)) {
    const MessageRow& message = *path.message;
    const std::string inner = BoundaryOccurrences(message.fields.back())[0].bytes();
    std::vector<int> numbers = {100, (1 << 29) - 1};
    for (const FieldRow& field : message) numbers.push_back(field.number);
    for (const int number : numbers) {
      const int other = number == numbers.back() ? numbers[0] : number + 1;
      for (const std::string& piece : Groups(number, other, inner)) {
        if (!PieceAgrees(path, piece)) return;
      }
      if (path.numbers.empty()) continue;
      // From one message into the one around it.
      if (!AllAgree(path.Wrap(inner + Tag(number, kStartGroup)) + Tag(number, kEndGroup)) ||
          !AllAgree(Tag(number, kStartGroup) + path.Wrap(inner + Tag(number, kEndGroup)))) {
        return;
      }
    }
  }
  ExpectBothVerdicts();
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
