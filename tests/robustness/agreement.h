// What the robustness tests share: whether a parse call treats some bytes as the strict reader says
// it must, and a record to break.
#ifndef CALIBRATION_TESTS_ROBUSTNESS_AGREEMENT_H_
#define CALIBRATION_TESTS_ROBUSTNESS_AGREEMENT_H_

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/entrances.h"
#include "tests/support/random_record.h"
#include "tests/support/schema_table.h"
#include "tests/support/strict_reader.h"

namespace zarvo {
namespace calibration {
namespace testing {

// The name of a test that runs once for each of MessageNames().
inline std::string NameOf(const ::testing::TestParamInfo<const char*>& info) { return info.param; }

// Leaves each repeated field, in all the tree, one element.
inline void KeepFirstElements(::google::protobuf::Message* record) {
  const ::google::protobuf::Reflection* reflection = record->GetReflection();
  std::vector<const ::google::protobuf::FieldDescriptor*> fields;
  reflection->ListFields(*record, &fields);
  for (const ::google::protobuf::FieldDescriptor* f : fields) {
    while (f->is_repeated() && reflection->FieldSize(*record, f) > 1) {
      reflection->RemoveLast(record, f);
    }
    if (f->cpp_type() != ::google::protobuf::FieldDescriptor::CPPTYPE_MESSAGE) continue;
    KeepFirstElements(f->is_repeated() ? reflection->MutableRepeatedMessage(record, f, 0)
                                       : reflection->MutableMessage(record, f));
  }
}

// Every field set, repeated ones with one element: small enough to be broken in every way.
inline std::unique_ptr<::google::protobuf::Message> SmallFullRecord(const std::string& name) {
  std::unique_ptr<::google::protobuf::Message> record = FullRecord(name);
  KeepFirstElements(record.get());
  return record;
}

// The bytes, and what the strict reader says of them.
struct Input {
  // REQUIRES: both arguments outlive the input.
  Input(const ::google::protobuf::Message& class_instance, const std::string& input_bytes)
      : instance(class_instance),
        message(instance.GetDescriptor()->name()),
        bytes(input_bytes),
        verdict(Judge(message, bytes)) {
    if (verdict.accepted) rewritten = Rewrite(message, bytes);
  }

  const ::google::protobuf::Message& instance;  // of the class that is to read them
  const std::string& message;
  const std::string& bytes;
  Verdict verdict;
  std::string rewritten;
};

inline std::string Hex(const std::string& bytes) {
  std::string hex;
  for (const char byte : bytes) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned char>(byte));
    hex += digits;
  }
  return hex;
}

// Whether a tag or a length of more than five bytes may be among them. From a stream, through
// Message&, the run-time itself may refuse such a one; everything else accepts it.
inline bool MayHoldLongTag(const std::string& bytes) {
  int run = 0;
  for (const char byte : bytes) {
    run = (static_cast<unsigned char>(byte) & 0x80) != 0 ? run + 1 : 0;
    if (run == 5) return true;
  }
  return false;
}

enum class Call { kOnClass, kOnMessage };

// The call takes the bytes exactly if they are a record, complete if it asks for that, and reads
// from them what the strict reader does.
inline ::testing::AssertionResult Agrees(const Input& input, const Entrance& entrance, Call call) {
  const std::unique_ptr<::google::protobuf::Message> record(input.instance.New());
  const bool accepted = entrance.parse(record.get(), input.bytes);
  const auto disagreement = [&]() -> ::testing::AssertionResult {
    return ::testing::AssertionFailure()
           << entrance.name << (call == Call::kOnClass ? " on " : " on Message&, a ")
           << input.message << ", of " << Hex(input.bytes) << "\nstrict reader: " << input.verdict
           << "\n";
  };
  if (!input.verdict.accepted) {
    return accepted ? disagreement() << "the call accepts" : ::testing::AssertionSuccess();
  }
  if (!accepted && !entrance.partial && !record->IsInitialized()) {
    return ::testing::AssertionSuccess();
  }
  if (!accepted) {
    if (call == Call::kOnMessage && entrance.source == Source::kStream &&
        MayHoldLongTag(input.bytes)) {
      return ::testing::AssertionSuccess();
    }
    return disagreement() << "the call refuses";
  }
  if (!entrance.partial && !record->IsInitialized()) {
    return disagreement() << "the call accepts a record that lacks required fields";
  }
  const std::string written = record->SerializePartialAsString();
  if (written == input.rewritten) return ::testing::AssertionSuccess();
  return disagreement() << "expected content: " << Hex(input.rewritten)
                        << "\nwritten back:     " << Hex(written);
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_ROBUSTNESS_AGREEMENT_H_
