// Any bytes, read as a record of any class: whether they are accepted, and what is made of them, is
// what the strict reader says, whichever call reads them; the memory that it takes is bounded; what
// is accepted is written back without loss; what is refused leaves an object that can be used.
#include <google/protobuf/message.h>

#include <memory>
#include <string>
#include <vector>

#include "fuzz/fuzzer.h"
#include "tests/robustness/agreement.h"
#include "tests/support/allocations.h"
#include "tests/support/class_calls.h"
#include "tests/support/entrances.h"
#include "tests/support/memory_bound.h"
#include "tests/support/reflect.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;

// The calls that take their input as it is, so that all memory they ask for is the parser's.
std::vector<Entrance> ChosenEntrances(const std::vector<Entrance>& all) {
  std::vector<Entrance> chosen;
  for (const Entrance& entrance : all) {
    for (const char* name :
         {"ParsePartialFromArray", "ParseFromArray", "ParsePartialFromZeroCopyStream, blocks of 1",
          "ParseFromZeroCopyStream, blocks of 7", "MergePartialFromCodedStream, blocks of 3"}) {
      if (entrance.name == name) chosen.push_back(entrance);
    }
  }
  Require(chosen.size() == 5, "the five calls are in the table");
  return chosen;
}

struct Calls {
  std::vector<Entrance> on_class, on_message;
};

const Calls& CallsOf(const std::string& name) {
  static const std::vector<Calls> all = [] {
    std::vector<Calls> calls;
    for (const RecordType& type : RecordTypes()) {
      calls.push_back(
          {ChosenEntrances(ConcreteEntrances(type.name)), ChosenEntrances(GenericEntrances())});
    }
    return calls;
  }();
  return all[static_cast<size_t>(FindMessage(name).index)];
}

void CheckMemory(const RecordInput& input, const Entrance& entrance) {
  const std::unique_ptr<Message> record = input.type.make();
  const size_t before = AllocatedBytes();
  entrance.parse(record.get(), input.bytes);
  const size_t memory = AllocatedBytes() - before;
  Require(memory <= MostMemoryFor(input.type.name, entrance.partial, input.bytes.size()),
          entrance.name + " takes no more memory than the bound, not " + std::to_string(memory));
}

void CheckWritingBack(const RecordInput& input) {
  const std::unique_ptr<Message> first = input.type.make(), second = input.type.make();
  Require(first->ParsePartialFromString(input.bytes), "what was accepted is accepted again");
  const std::string written = first->SerializePartialAsString();
  Require(second->ParsePartialFromString(written), "what was written is accepted");
  Require(EqualByReflection(*first, *second), "what was written reads as it was");
  Require(second->SerializePartialAsString() == written, "from the second on, writing is stable");
  const std::string text = first->ShortDebugString();
  Require(text == second->ShortDebugString(), "equal records have equal texts");
}

// What a refused input leaves behind can be written, cleared and read into.
void CheckWhatIsLeft(const RecordInput& input) {
  const std::unique_ptr<Message> left = input.type.make(), copy = input.type.make();
  left->ParsePartialFromString(input.bytes);
  const std::string written = left->SerializePartialAsString();
  Require(copy->ParsePartialFromString(written), "what is left after a refusal is a record");
  Require(EqualByReflection(*left, *copy), "what is left after a refusal is written in full");
  left->Clear();
  Require(EqualByReflection(*left, input.type.default_instance()), "Clear() empties what is left");
  Require(left->ParsePartialFromString(written) && EqualByReflection(*left, *copy),
          "what is left can be read into");
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace ::zarvo::calibration::testing;
  SilenceTheRunTime();
  if (size == 0) return 0;
  const RecordInput input = TakeRecordInput(data, size);
  const Input judged(input.type.default_instance(), input.bytes);
  const Calls& calls = CallsOf(input.type.name);
  for (const Entrance& entrance : calls.on_class) {
    Require(Agrees(judged, entrance, Call::kOnClass), "calls on the class are strict");
    CheckMemory(input, entrance);
  }
  for (const Entrance& entrance : calls.on_message) {
    Require(Agrees(judged, entrance, Call::kOnMessage), "calls on Message& are strict");
    CheckMemory(input, entrance);
  }
  if (judged.verdict.accepted) {
    CheckWritingBack(input);
  } else {
    CheckWhatIsLeft(input);
  }
  return 0;
}
