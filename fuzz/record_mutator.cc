// Mutates the inputs of the parse target as records: a field set, cleared, repeated or reordered
// somewhere in the tree, an unknown field added, two records merged; and every other time as plain
// bytes, so that broken input comes up as well.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "fuzz/fuzzer.h"
#include "tests/support/random_record.h"

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t max_size);

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::Message;
using ::google::protobuf::Reflection;

int Below(std::mt19937* random, int end) {
  return static_cast<int>((*random)() % static_cast<uint32_t>(end));
}

void CollectTree(Message* record, std::vector<Message*>* all) {
  all->push_back(record);
  std::vector<const FieldDescriptor*> fields;
  const Reflection* reflection = record->GetReflection();
  reflection->ListFields(*record, &fields);
  for (const FieldDescriptor* f : fields) {
    if (f->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) continue;
    if (!f->is_repeated()) {
      CollectTree(reflection->MutableMessage(record, f), all);
      continue;
    }
    for (int i = 0; i < reflection->FieldSize(*record, f); ++i) {
      CollectTree(reflection->MutableRepeatedMessage(record, f, i), all);
    }
  }
}

void MutateRecord(std::mt19937* random, Message* record) {
  std::vector<Message*> tree;
  CollectTree(record, &tree);
  Message* message = tree[static_cast<size_t>(Below(random, static_cast<int>(tree.size())))];
  const Reflection* reflection = message->GetReflection();
  const FieldDescriptor* field =
      message->GetDescriptor()->field(Below(random, message->GetDescriptor()->field_count()));
  const int size = field->is_repeated() ? reflection->FieldSize(*message, field) : 0;
  switch (Below(random, 5)) {
    case 0:
      AddRandomUnknown(random, message);
      break;
    case 1:
      reflection->ClearField(message, field);
      break;
    case 2:
      if (size > 0) reflection->RemoveLast(message, field);
      break;
    case 3:
      if (size > 1) reflection->SwapElements(message, field, 0, Below(random, size));
      break;
    default: {
      RandomOptions options;
      options.percent_set = 10;
      options.always_required = false;
      FillRandomly(random, options, message);
      break;
    }
  }
}

// Puts the record behind the class byte; false if there is no room.
bool Put(const Message& record, uint8_t* data, size_t* size, size_t max_size) {
  const std::string bytes = record.SerializePartialAsString();
  if (bytes.size() + 1 > max_size) return false;
  std::copy(bytes.begin(), bytes.end(), data + 1);
  *size = bytes.size() + 1;
  return true;
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t max_size,
                                          unsigned int seed) {
  using namespace ::zarvo::calibration::testing;
  SilenceTheRunTime();
  std::mt19937 random(seed);
  if (size == 0 || Below(&random, 2) == 0) return LLVMFuzzerMutate(data, size, max_size);
  const RecordInput input = TakeRecordInput(data, size);
  const std::unique_ptr<Message> record = input.type.make();
  // What a broken input leaves is as good to go on from.
  record->ParsePartialFromString(input.bytes);
  MutateRecord(&random, record.get());
  return Put(*record, data, &size, max_size) ? size : LLVMFuzzerMutate(data, size, max_size);
}

extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* data1, size_t size1,
                                            const uint8_t* data2, size_t size2, uint8_t* out,
                                            size_t max_out_size, unsigned int seed) {
  // One encoding behind another is that of the two merged; a part of the second makes it broken.
  std::mt19937 random(seed);
  if (size1 == 0 || size2 == 0) return 0;
  const size_t head = std::min(size1, max_out_size);
  const size_t tail =
      std::min<size_t>(max_out_size - head, random() % 2 == 0 ? size2 - 1 : random() % size2);
  std::memcpy(out, data1, head);
  std::memcpy(out + head, data2 + 1, tail);
  return head + tail;
}
