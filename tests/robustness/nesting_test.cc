// Deep nesting: sub-messages and unknown groups draw on the stream's one depth budget, whichever
// way they are mixed and whichever call reads them; what is accepted can be printed on a small
// stack.
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <memory>
#include <string>

#include "tests/robustness/every_entrance.h"
#include "tests/support/class_calls.h"
#include "tests/support/schema_table.h"
#include "tests/support/strict_reader.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;
using ::google::protobuf::io::ArrayInputStream;
using ::google::protobuf::io::CodedInputStream;

// `depth` groups of one number, one in the other.
std::string Groups(int number, int depth) {
  std::string start, end;
  for (int i = 0; i < depth; ++i) {
    start += Tag(number, kStartGroup);
    end += Tag(number, kEndGroup);
  }
  return start + end;
}

class NestingTest : public EveryEntranceTest {
 protected:
  // Whether a merge from a stream of blocks of that size and with that limit answers `expected`,
  // and at the record's end.
  bool AnswersWithin(int limit, const std::string& bytes, int block, bool on_class,
                     bool expected) const {
    ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()), block);
    CodedInputStream input(&stream);
    input.SetRecursionLimit(limit);
    const std::unique_ptr<Message> record(instance_->New());
    const bool merged =
        on_class ? MergeOnClass(record.get(), &input) : record->MergePartialFromCodedStream(&input);
    return merged == expected && input.ConsumedEntireMessage() == expected;
  }
};

INSTANTIATE_TEST_SUITE_P(AllRecords, NestingTest, ::testing::ValuesIn(MessageNames()), NameOf);

// Unknown groups below every chain of sub-messages, up to the limit and one beyond.
TEST_P(NestingTest, TheLimitIsTheLastThatPasses) {
  for (const Path& path : PathsFrom(message_)) {
    const int levels = static_cast<int>(path.numbers.size());
    for (const int depth : {kDefaultDepthLimit - 1, kDefaultDepthLimit, kDefaultDepthLimit + 1}) {
      const int accepted_before = accepted_;
      const std::string groups = Groups(100, depth - levels);
      if (!AllAgree(path.Wrap(groups), path.numbers.empty() ? kEvery : kInTurn)) return;
      // Beside each other they count once.
      if (!AllAgree(path.Wrap(groups + groups), kInTurn)) return;
      ASSERT_EQ(accepted_ - accepted_before, depth <= kDefaultDepthLimit ? 2 : 0)
          << depth << " levels, of which sub-messages: " << levels;
    }
  }
}

// The same for limits that the caller has set.
TEST_P(NestingTest, ALimitOfTheCallers) {
  for (const Path& path : PathsFrom(message_)) {
    const int levels = static_cast<int>(path.numbers.size());
    for (int limit = 0; limit <= 7; ++limit) {
      for (int groups = 0; groups <= 3; ++groups) {
        const std::string bytes = path.Wrap(Groups(100, groups));
        for (const int block : {1, 5, 4096}) {
          for (const bool on_class : {true, false}) {
            const bool fits = levels + groups <= limit;
            ASSERT_TRUE(AnswersWithin(limit, bytes, block, on_class, fits))
                << levels << " sub-messages, " << groups << " groups, limit " << limit
                << ", blocks of " << block << (on_class ? ", class" : ", Message&");
          }
        }
      }
    }
  }
}

// Where a sub-message or a group ends, what it took of the limit is given back: sub-messages and
// groups in pairs, on every level, need as much as one of each.
TEST_P(NestingTest, ALevelThatIsLeftIsGivenBack) {
  for (const Path& path : PathsFrom(message_)) {
    const int levels = static_cast<int>(path.numbers.size());
    std::string bytes = Groups(100, 1) + Groups(100, 1);
    for (int i = levels - 1; i >= 0; --i) {
      const std::string nested = Nested(path.numbers[static_cast<size_t>(i)], bytes);
      bytes = nested + nested;
    }
    for (const int block : {1, 5, 64, 4096}) {
      for (const bool on_class : {true, false}) {
        for (const int limit : {levels, levels + 1}) {
          ASSERT_TRUE(AnswersWithin(limit, bytes, block, on_class, limit > levels))
              << levels << " sub-messages, limit " << limit << ", blocks of " << block
              << (on_class ? ", class" : ", Message&");
        }
      }
    }
  }
}

TEST_P(NestingTest, TwentyThousandGroupsAreRefused) {
  std::string open;
  for (int i = 0; i < 20000; ++i) open += Tag(100, kStartGroup);
  ExpectRefused({Groups(100, 20000), Groups(1, 20000), open, Groups(100, 20000) + open}, kEvery);
}

// Runs `work` in a thread whose stack is of the size, and a little more where a sanitizer makes
// frames larger.
void RunOnStack(size_t size, std::function<void()> work) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  size *= 8;
#endif
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, size), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(
                &thread, &attributes,
                [](void* argument) -> void* {
                  (*static_cast<std::function<void()>*>(argument))();
                  return nullptr;
                },
                &work),
            0);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
  pthread_attr_destroy(&attributes);
}

// The deepest records there are, read, written, copied, printed and destroyed. A robot's threads
// may have small stacks.
TEST_P(NestingTest, TheDeepestRecordsNeedLittleStack) {
  std::string longest;
  for (const Path& path : PathsFrom(message_)) {
    const int levels = static_cast<int>(path.numbers.size());
    longest += path.Wrap(Groups(100, kDefaultDepthLimit - levels));
  }
  ASSERT_TRUE(Judge(message_.name, longest));
  RunOnStack(size_t{128} * 1024, [&] {
    for (const bool on_class : {true, false}) {
      const std::unique_ptr<Message> record(instance_->New());
      const bool accepted =
          on_class ? MergeOnClass(record.get(), longest) : record->ParsePartialFromString(longest);
      EXPECT_TRUE(accepted);
      EXPECT_EQ(record->SerializePartialAsString(), Rewrite(message_.name, longest));
      const std::unique_ptr<Message> copy(record->New());
      copy->MergeFrom(*record);
      const std::string text = copy->DebugString();
      size_t groups = 0;
      for (size_t i = 0; (i = text.find("100 {", i)) != std::string::npos; ++i) ++groups;
      EXPECT_GT(groups, 50u);
    }
  });
}

// A text printer may take an unknown text for a message, and a text in it for another.
TEST_P(NestingTest, UnknownTextsInUnknownTextsCanBePrinted) {
  std::string bytes;
  for (int i = 0; i < 1000; ++i) bytes = Nested(100, bytes);
  const std::unique_ptr<Message> record(instance_->New());
  ASSERT_TRUE(record->ParsePartialFromString(bytes));
  EXPECT_GT(record->DebugString().size(), 1000u);
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
