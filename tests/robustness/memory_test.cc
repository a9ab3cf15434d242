// Parsing takes memory in proportion to the input that has arrived, on every class and through
// every call.
//
// The inputs are the costliest that the wire format knows: the shortest encodings of the largest
// objects, over and over. What is counted is everything that was asked of operator new.
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/robustness/every_entrance.h"
#include "tests/support/allocations.h"
#include "tests/support/memory_bound.h"
#include "tests/support/schema_table.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

class MemoryTest : public EveryEntranceTest {
 protected:
  // What the call takes. Its own copies of the input are made beforehand, by trying it once with an
  // input of the size that is no record from its first byte on.
  size_t MemoryOf(const Entrance& entrance, const std::string& bytes) const {
    const std::unique_ptr<::google::protobuf::Message> record(instance_->New());
    const std::string nothing(bytes.size(), '\0');
    const size_t start = AllocatedBytes();
    entrance.parse(record.get(), nothing);
    const size_t middle = AllocatedBytes();
    entrance.parse(record.get(), bytes);
    const size_t end = AllocatedBytes();
    return (end - middle) - std::min(end - middle, middle - start);
  }

  // Tries the input through the calls of these tables that `wanted` names.
  void TryInput(const std::string& bytes, bool (*wanted)(const Entrance&),
                const std::vector<const std::vector<Entrance>*>& tables) {
    for (const auto* table : tables) {
      for (const Entrance& entrance : *table) {
        if (!wanted(entrance)) continue;
        EXPECT_LE(MemoryOf(entrance, bytes),
                  MostMemoryFor(message_.name, entrance.partial, bytes.size()))
            << entrance.name << (table == &on_class_ ? " on the class, " : " on Message&, ")
            << Hex(bytes);
      }
      if (HasFailure()) return;
    }
  }

  // Tries the input through a share of the calls; most_[partial] keeps the most that one took for a
  // byte.
  void TryInput(const std::string& bytes) {
    for (const auto* table : {&on_class_, &on_message_}) {
      for (size_t i = static_cast<size_t>(++inputs_) % 9; i < table->size(); i += 9) {
        const Entrance& entrance = (*table)[i];
        const size_t memory = MemoryOf(entrance, bytes);
        ASSERT_LE(memory, MostMemoryFor(message_.name, entrance.partial, bytes.size()))
            << entrance.name << (table == &on_class_ ? " on the class, " : " on Message&, ")
            << bytes.size() << " bytes, " << Hex(bytes.substr(0, 20));
        double& most = most_[entrance.partial];
        most = std::max(most, (static_cast<double>(memory) - kMemoryForNothing) /
                                  static_cast<double>(bytes.size()));
      }
    }
  }

  double most_[2] = {0, 0};
};

INSTANTIATE_TEST_SUITE_P(AllRecords, MemoryTest, ::testing::ValuesIn(MessageNames()), NameOf);

// One more than a power of two: whatever grows by doubling has just done so.
constexpr int kCopies = 1025;

std::string Repeat(const std::string& piece, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += piece;
  return all;
}

// The shortest unknown fields, under a number whose tag takes one byte: undeclared or mistyped.
std::vector<std::string> UnknownPieces(const MessageRow& message) {
  std::vector<std::string> pieces;
  for (const WireType type : {kVarint, kLengthDelimited, kStartGroup}) {
    for (int number = 1; number <= 15; ++number) {
      const FieldRow* field = FindField(message, number);
      if (field != nullptr && (field->repeated() || WireTypeOf(field->kind) == type)) continue;
      const std::string tag = Tag(number, type), end = Tag(number, kEndGroup);
      if (type != kStartGroup) {
        pieces.push_back(tag + std::string(1, '\0'));
      } else {
        pieces.push_back(tag + end);
        pieces.push_back(tag + tag + end + end);
        pieces.push_back(tag + Tag(number, kLengthDelimited) + std::string(1, '\0') + end);
      }
      break;
    }
  }
  return pieces;
}

// Large unknown groups, with tags of one byte and of three, that end as they should, not at all, or
// with a tag that is longer than need be.
std::vector<std::string> UnknownGroups() {
  const std::string inside = Repeat(Tag(1, kVarint) + std::string(1, '\0'), kCopies);
  std::vector<std::string> groups;
  for (const int number : {15, 2048}) {
    const std::string open = Tag(number, kStartGroup) + inside;
    groups.push_back(open + Tag(number, kEndGroup));
    groups.push_back(open);
    const uint64_t end_tag = static_cast<uint64_t>(number) << 3 | kEndGroup;
    groups.push_back(open + WireWriter().OverlongVarint(end_tag, 5).bytes());
  }
  return groups;
}

// The shortest sub-messages that hold nothing, one object, or two.
std::vector<std::string> Elements(const FieldRow& field, int levels) {
  const MessageRow& message = FindMessage(field.message_type);
  std::vector<std::string> contents = {""};
  for (const std::string& piece : UnknownPieces(message)) contents.push_back(piece);
  std::vector<std::string> objects;
  for (const FieldRow& inner : message) {
    if (WireTypeOf(inner.kind) != kLengthDelimited) continue;
    if (inner.kind == Kind::kMessage && levels > 0) {
      for (const std::string& object : Elements(inner, levels - 1)) objects.push_back(object);
    } else {
      objects.push_back(Nested(inner.number, ""));
    }
  }
  contents.insert(contents.end(), objects.begin(), objects.end());
  for (size_t i = 0; i < objects.size() && levels == 1; ++i) {
    for (size_t j = i + 1; j < objects.size(); ++j) contents.push_back(objects[i] + objects[j]);
  }
  std::vector<std::string> elements;
  for (const std::string& inside : contents) elements.push_back(Nested(field.number, inside));
  return elements;
}

// Costly inputs for the message.
std::vector<std::string> Inputs(const MessageRow& message) {
  std::vector<std::string> inputs;
  for (const std::string& piece : UnknownPieces(message)) inputs.push_back(Repeat(piece, kCopies));
  for (const std::string& group : UnknownGroups()) inputs.push_back(group);
  for (const FieldRow& field : message) {
    if (field.kind == Kind::kMessage && !field.repeated()) {
      for (const std::string& inside : Inputs(FindMessage(field.message_type))) {
        inputs.push_back(Nested(field.number, inside));
      }
    } else if (field.kind == Kind::kMessage) {
      for (const std::string& element : Elements(field, 1)) {
        inputs.push_back(Repeat(element, kCopies));
      }
      for (const std::string& group : UnknownGroups()) {
        inputs.push_back(Nested(field.number, group));
      }
    } else if (field.repeated()) {
      const std::string value(WireTypeOf(field.kind) == kFixed64 ? 8 : 4, '\x3F');
      inputs.push_back(Repeat(Tag(field.number, WireTypeOf(field.kind)) + value, kCopies));
      inputs.push_back(Nested(field.number, Repeat(value, kCopies)));
    } else if (WireTypeOf(field.kind) == kLengthDelimited) {
      inputs.push_back(Nested(field.number, std::string(20000, 't')));
    }
  }
  return inputs;
}

TEST_P(MemoryTest, IsBoundedByTheInput) {
  for (const std::string& bytes : Inputs(message_)) {
    TryInput(bytes);
    if (HasFailure()) return;
  }
  for (const bool partial : {false, true}) {
    EXPECT_GT(most_[partial], static_cast<double>(MemoryPerByte(message_.name, partial)) / 2)
        << "the bound is just any large number";
  }
}

// Inputs that announce 256 MiB, or 2 GiB less one byte, in every place where a length can stand,
// and at every level: the lengths around it announce as much and more. A little arrives, or a
// little more, so that in small pieces room is made several times.
std::vector<std::string> AnnouncedLengths(const MessageRow& message) {
  std::vector<std::string> inputs;
  for (const Path& path : PathsFrom(message)) {
    for (const auto& value : LengthDelimitedValues(*path.message)) {
      for (const uint64_t length : {uint64_t{256} << 20, (uint64_t{1} << 31) - 100}) {
        std::string bytes = value.first + WireWriter().Varint(length).bytes();
        for (size_t i = path.numbers.size(); i > 0; --i) {
          const uint64_t around = length + 10 * (path.numbers.size() + 1 - i);
          bytes = Tag(path.numbers[i - 1], kLengthDelimited) +
                  WireWriter().Varint(around).Raw(bytes).bytes();
        }
        inputs.push_back(bytes + "8 bytes.");
        inputs.push_back(bytes + std::string(500, '.'));
      }
    }
  }
  return inputs;
}

// Whether the call is handed the whole input at once.
bool IsOfArray(const Entrance& entrance) {
  return entrance.name.find("Array") != std::string::npos ||
         entrance.name.find("String") != std::string::npos;
}

TEST_P(MemoryTest, AnnouncedLengthsInAnArray) {
  for (const std::string& bytes : AnnouncedLengths(message_)) {
    TryInput(bytes, IsOfArray, {&on_class_, &on_message_});
  }
}

TEST_P(MemoryTest, AnnouncedLengthsInAStream) {
  for (const std::string& bytes : AnnouncedLengths(message_)) {
    TryInput(bytes, [](const Entrance& entrance) { return !IsOfArray(entrance); },
             {&on_class_, &on_message_});
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
