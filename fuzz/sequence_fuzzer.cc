// Any sequence of merging, copying, swapping, clearing, reading and filling over three records of a
// class. The run-time's own dynamic class goes through the same steps, and after each of them the
// records it was about agree, in the end all of them as they are written, too.
//
// The input is a program: after the byte for the class, one byte a step, and behind some steps
// their arguments.
#include <google/protobuf/message.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <utility>

#include "fuzz/fuzzer.h"
#include "tests/support/random_record.h"
#include "tests/support/reflect.h"
#include "tests/support/strict_reader.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;

class Program {
 public:
  explicit Program(const std::string& bytes) : bytes_(bytes) {}

  bool AtEnd() const { return position_ == bytes_.size(); }
  unsigned Byte() { return AtEnd() ? 0 : static_cast<unsigned char>(bytes_[position_++]); }
  std::string Bytes(size_t size) {
    std::string piece = bytes_.substr(position_, size);
    position_ += piece.size();
    return piece;
  }

 private:
  const std::string& bytes_;
  size_t position_ = 0;
};

constexpr size_t kRecords = 3;
constexpr int kMostSteps = 40;
constexpr size_t kLargest = 20000;  // beyond it records are cleared: merging doubles them

template <class T>
struct Machine {
  T records[kRecords];
  std::unique_ptr<Message> twins[kRecords];

  Machine() {
    for (auto& twin : twins) twin = NewDynamic(T::descriptor());
  }

  // The same in the record and, without the wire, in its twin.
  void MergeBoth(size_t i, const Message& from) {
    static_cast<Message&>(records[i]).MergeFrom(from);
    twins[i]->MergeFrom(*DynamicTwin(from));
  }

  void Step(Program* program) {
    const size_t a = program->Byte() % kRecords, b = program->Byte() % kRecords;
    T& record = records[a];
    T& other = records[b];
    switch (program->Byte() % 12) {
      case 0:
        if (a == b) break;  // merging a record into itself is an error that ends the process
        record.MergeFrom(other);
        twins[a]->MergeFrom(*twins[b]);
        break;
      case 1:
        if (a == b) break;
        static_cast<Message&>(record).MergeFrom(other);
        twins[a]->MergeFrom(*twins[b]);
        break;
      case 2:
        if (a == b) break;
        record.MergeFrom(*twins[b]);
        twins[a]->MergeFrom(other);
        break;
      case 3:
        record = other;
        twins[a]->CopyFrom(*twins[b]);
        break;
      case 4:
        static_cast<Message&>(record).CopyFrom(other);
        twins[a]->CopyFrom(*twins[b]);
        break;
      case 5:
        record.Swap(&other);
        std::swap(twins[a], twins[b]);
        break;
      case 6:
        record.GetReflection()->Swap(&record, &other);
        std::swap(twins[a], twins[b]);
        break;
      case 7:
        record.Clear();
        twins[a]->Clear();
        break;
      case 8: {
        const T copy(other);
        record.CopyFrom(copy);
        twins[a]->CopyFrom(*twins[b]);
        break;
      }
      case 9: {
        const std::string bytes = program->Bytes(program->Byte());
        T read;
        const bool accepted = read.ParsePartialFromString(bytes);
        Require(accepted == Judge(T::descriptor()->name(), bytes).accepted,
                "a piece of the program is accepted if it is a record");
        if (accepted) MergeBoth(a, read);
        break;
      }
      case 10: {
        std::mt19937 random(program->Byte());
        RandomOptions options;
        options.percent_set = kSparse;
        T filled;
        FillRandomly(&random, options, &filled);
        MergeBoth(a, filled);
        break;
      }
      case 11: {
        T read;
        Require(read.ParsePartialFromString(other.SerializePartialAsString()),
                "what was written is accepted");
        record.Swap(&read);
        twins[a]->CopyFrom(*twins[b]);
        break;
      }
    }
    if (static_cast<size_t>(record.ByteSize()) > kLargest) {
      record.Clear();
      twins[a]->Clear();
    }
    for (const size_t i : {a, b}) {
      Require(EqualByReflection(*twins[i], records[i]), "a record agrees with its twin");
    }
  }

  void CheckWriting() const {
    for (size_t i = 0; i < kRecords; ++i) {
      Require(records[i].SerializePartialAsString() == twins[i]->SerializePartialAsString(),
              "a record is written as its twin is");
    }
  }
};

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace ::zarvo::calibration::testing;
  SilenceTheRunTime();
  if (size == 0) return 0;
  const RecordInput input = TakeRecordInput(data, size);
  ForEachRecord([&](auto type) {
    using T = typename decltype(type)::Type;
    if (T::descriptor()->name() != input.type.name) return;
    Machine<T> machine;
    Program program(input.bytes);
    for (int step = 0; step < kMostSteps && !program.AtEnd(); ++step) machine.Step(&program);
    machine.CheckWriting();
  });
  return 0;
}
