// What the robustness tests that go through every parse call share: the fixture, and the pieces
// from which they build broken records.
#ifndef CALIBRATION_TESTS_ROBUSTNESS_EVERY_ENTRANCE_H_
#define CALIBRATION_TESTS_ROBUSTNESS_EVERY_ENTRANCE_H_

#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/robustness/agreement.h"
#include "tests/support/class_calls.h"
#include "tests/support/entrances.h"
#include "tests/support/occurrences.h"
#include "tests/support/records.h"
#include "tests/support/schema_table.h"
#include "tests/support/strict_reader.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {

inline std::string Tag(int number, WireType type) { return WireWriter().Tag(number, type).bytes(); }

inline std::string Nested(int number, const std::string& contents) {
  return WireWriter().Tag(number, kLengthDelimited).LengthDelimited(contents).bytes();
}

// Once for each message of the schema, through every parse call.
class EveryEntranceTest : public ::testing::TestWithParam<const char*> {
 protected:
  EveryEntranceTest()
      : message_(FindMessage(GetParam())),
        instance_(NewRecord(GetParam())),
        on_class_(ConcreteEntrances(GetParam())),
        on_message_(GenericEntrances()) {}

  // Large inputs go through a share of the entrances each, so that all entrances take their turn.
  enum Entrances { kEvery, kInTurn };

  // False at the first disagreement.
  bool AllAgree(const std::string& bytes, Entrances entrances = kEvery) const {
    ++inputs_;
    const Input input(*instance_, bytes);
    accepted_ += input.verdict.accepted;
    const size_t step = entrances == kEvery ? 1 : 9;
    for (size_t i = static_cast<size_t>(inputs_) % step; i < on_class_.size(); i += step) {
      const ::testing::AssertionResult on_class = Agrees(input, on_class_[i], Call::kOnClass);
      const ::testing::AssertionResult on_message = Agrees(input, on_message_[i], Call::kOnMessage);
      EXPECT_TRUE(on_class);
      EXPECT_TRUE(on_message);
      if (!on_class || !on_message) return false;
    }
    return true;
  }

  // All of them are malformed.
  void ExpectRefused(const std::vector<std::string>& catalogue, Entrances entrances) const {
    const int accepted_before = accepted_;
    for (const std::string& bytes : catalogue) {
      if (!AllAgree(bytes, entrances)) return;
      ASSERT_EQ(accepted_, accepted_before) << "taken for valid: " << Hex(bytes);
    }
  }

  const MessageRow& message_;
  const std::unique_ptr<::google::protobuf::Message> instance_;
  const std::vector<Entrance> on_class_;
  const std::vector<Entrance> on_message_;
  mutable int inputs_ = 0;
  mutable int accepted_ = 0;

 private:
  ::google::protobuf::LogSilencer no_remarks_on_missing_fields_;
};

// Unknown fields, for something to follow: bytes that a length which runs too far would reach.
inline std::string Filler() {
  std::string filler;
  for (int i = 0; i < 50; ++i) filler += WireWriter().Tag(100, kVarint).Varint(1).bytes();
  return filler;
}

// A way from a message down to itself (no numbers) or to a message nested in it.
struct Path {
  std::vector<int> numbers;
  const MessageRow* message;

  // The encoding of the outermost message, with `contents` in the innermost.
  std::string Wrap(std::string contents) const {
    for (size_t i = numbers.size(); i > 0; --i) contents = Nested(numbers[i - 1], contents);
    return contents;
  }
};

inline void AddPaths(const Path& start, std::vector<Path>* paths) {
  paths->push_back(start);
  for (const FieldRow& field : *start.message) {
    if (field.kind != Kind::kMessage) continue;
    Path longer = start;
    longer.numbers.push_back(field.number);
    longer.message = &FindMessage(field.message_type);
    AddPaths(longer, paths);
  }
}

inline std::vector<Path> PathsFrom(const MessageRow& message) {
  std::vector<Path> paths;
  AddPaths({{}, &message}, &paths);
  return paths;
}

// Every length-delimited value that can stand in the message: its tag and what its length covers.
// Contents end at a field boundary, so that nothing but the length is wrong.
inline std::vector<std::pair<std::string, std::string>> LengthDelimitedValues(
    const MessageRow& message) {
  std::vector<std::pair<std::string, std::string>> values = {
      {Tag(100, kLengthDelimited), "16 unknown bytes"}};
  for (const FieldRow& field : message) {
    // A string, a sub-message, a packed run, or a number mistyped.
    values.push_back(
        {Tag(field.number, kLengthDelimited),
         field.kind == Kind::kMessage
             ? BoundaryOccurrences(FindMessage(field.message_type).fields[0])[1].bytes()
             : "16 bytes of text"});
  }
  return values;
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_ROBUSTNESS_EVERY_ENTRANCE_H_
