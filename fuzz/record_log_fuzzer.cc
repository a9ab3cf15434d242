// Any bytes, read as a log of records of any class, in blocks of several sizes: what is a record,
// where it ends and how the log ends is what the plain reader below says; what is whole is written
// back as it was; and no length takes memory that the log has no bytes for.
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>

#include <memory>
#include <string>
#include <vector>

#include "calibration_common/record_log.h"
#include "fuzz/fuzzer.h"
#include "tests/support/allocations.h"
#include "tests/support/reflect.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;
using Result = RecordLogReader::Result;

// Where the records lie, and how the log ends.
struct Plan {
  struct Place {
    size_t begin, data, end;
  };
  std::vector<Place> records;
  size_t end_begin = 0;
  Result end = Result::kEnd;
};

// With all bytes at hand, and lengths as numbers of 64 bits.
Plan PlanOf(const std::string& log) {
  Plan plan;
  for (size_t at = 0;;) {
    plan.end_begin = at;
    if (at == log.size()) return plan;
    uint64_t length = 0;
    size_t count = 0;
    bool more = true;
    while (more && count < 5 && at + count < log.size()) {
      const uint64_t byte = static_cast<unsigned char>(log[at + count]);
      length |= (byte & 0x7f) << (7 * count++);
      more = byte >= 0x80;
    }
    plan.end = more && count < 5 ? Result::kTorn : Result::kDamaged;
    if (more || length > 0x7fffffff) return plan;
    plan.end = Result::kTorn;
    if (length > log.size() - at - count) return plan;
    plan.end = Result::kEnd;
    plan.records.push_back({at, at + count, at + count + length});
    at += count + length;
  }
}

void CheckReading(const RecordType& type, const std::string& log, const Plan& plan, int block) {
  ::google::protobuf::io::ArrayInputStream input(log.data(), static_cast<int>(log.size()), block);
  std::string copy;
  ::google::protobuf::io::StringOutputStream output(&copy);
  RecordLogReader reader(&input);
  RecordLogWriter writer(&output);
  const std::unique_ptr<Message> record = type.make(), judge = type.make();
  for (const Plan::Place& place : plan.records) {
    const std::string bytes = log.substr(place.data, place.end - place.data);
    const Result result = reader.Read(record.get());
    Require(std::string(reader.data(), static_cast<size_t>(reader.size())) == bytes &&
                reader.begin() == static_cast<int64_t>(place.begin) &&
                reader.end() == static_cast<int64_t>(place.end),
            "a record is found where it is");
    const bool parsed = judge->ParsePartialFromString(bytes);
    Require(result == (!parsed                  ? Result::kMalformed
                       : judge->IsInitialized() ? Result::kRecord
                                                : Result::kIncomplete),
            "a record is judged like one of its own");
    if (!parsed) continue;
    Require(EqualByReflection(*record, *judge), "a record is read like one of its own");
    const bool written = writer.Write(*record) == RecordLogWriter::Result::kWritten;
    Require(written == record->IsInitialized(), "whole records, and no others, are written");
  }
  Require(reader.Read(record.get()) == plan.end && reader.Next() == plan.end &&
              reader.begin() == static_cast<int64_t>(plan.end_begin),
          "a log ends as it does");
  Require(PlanOf(copy).end == Result::kEnd, "what is written is a whole log");
}

void CheckMemory(const std::string& log) {
  ::google::protobuf::io::ArrayInputStream input(log.data(), static_cast<int>(log.size()), 7);
  const size_t before = AllocatedBytes();
  RecordLogReader reader(&input);
  while (reader.Next() == Result::kRecord) continue;
  Require(AllocatedBytes() - before <= 4 * log.size() + 100, "lengths take no memory");
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
  const Plan plan = PlanOf(input.bytes);
  for (const int block : {1, 3, 64, 1 << 20}) CheckReading(input.type, input.bytes, plan, block);
  CheckMemory(input.bytes);
  return 0;
}
