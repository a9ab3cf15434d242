// Text format, both ways: any text that is read prints as a text that reads as the same, and any
// record prints as a text that is read, unknown fields aside. The run-time's dynamic class reads
// and prints the same.
#include <google/protobuf/message.h>
#include <google/protobuf/text_format.h>

#include <memory>
#include <string>

#include "fuzz/fuzzer.h"
#include "tests/support/reflect.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;
using ::google::protobuf::TextFormat;

bool Read(const std::string& text, Message* record) {
  TextFormat::Parser parser;
  parser.AllowPartialMessage(true);
  return parser.ParseFromString(text, record);
}

std::string Print(const Message& record) {
  std::string text;
  Require(TextFormat::PrintToString(record, &text), "every record can be printed");
  return text;
}

// The texts are compared, not the records: a NaN loses its sign and its other bits in a text, and
// on run-times up to 3.7 the largest float becomes infinity when it is read.
void CheckRoundTrip(const RecordInput& input, const Message& record) {
  const std::string text = Print(record);
  const std::unique_ptr<Message> second = input.type.make(), third = input.type.make();
  Require(Read(text, second.get()), "what was printed can be read:\n" + text);
  const std::string second_text = Print(*second);
  Require(Read(second_text, third.get()), "what was printed twice can be read:\n" + second_text);
  Require(EqualByReflection(*second, *third), "a text that came from a text reads as that did");
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
  const std::unique_ptr<Message> from_text = input.type.make();
  if (Read(input.bytes, from_text.get())) {
    CheckRoundTrip(input, *from_text);
    const std::unique_ptr<Message> twin = NewDynamic(from_text->GetDescriptor());
    Require(Read(input.bytes, twin.get()), "the dynamic class reads the text, too");
    Require(from_text->SerializePartialAsString() == twin->SerializePartialAsString(),
            "a text reads as it does into the dynamic class");
  }

  const std::unique_ptr<Message> from_bytes = input.type.make();
  if (from_bytes->ParsePartialFromString(input.bytes)) {
    Print(*from_bytes);
    from_bytes->DiscardUnknownFields();
    // The run-time's own parser refuses a little more than ours does.
    const std::unique_ptr<Message> twin = NewDynamic(from_bytes->GetDescriptor());
    if (twin->ParsePartialFromString(input.bytes)) {
      twin->DiscardUnknownFields();
      Require(Print(*from_bytes) == Print(*twin), "a record prints as the dynamic class's does");
    }
    CheckRoundTrip(input, *from_bytes);
  }
  return 0;
}
