// What the protobuf run-times answer differently where the tests look at the run-time's own calls;
// docs/run-times.md tells users. The record classes themselves behave alike on all.
#ifndef ZARVO_CALIBRATION_TESTS_SUPPORT_RUNTIME_FACTS_H_
#define ZARVO_CALIBRATION_TESTS_SUPPORT_RUNTIME_FACTS_H_

#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>

#include <cstddef>

namespace zarvo {
namespace calibration {
namespace testing {

// A stream gives up after so many bytes unless it is told otherwise.
constexpr bool kStreamsEndAt64MiB = GOOGLE_PROTOBUF_VERSION < 3002000;

// A Message& is written into an array without a look at its size.
constexpr bool kArraysTakeAnySize = GOOGLE_PROTOBUF_VERSION < 3007000;

// A Message& is parsed through a ParseContext, which hands over a stream in pieces.
constexpr bool kParsesInPieces = GOOGLE_PROTOBUF_VERSION >= 3010000;

// Calls on a class look for required fields however the run-time was built.
constexpr bool kClassesCheckRequiredFields = GOOGLE_PROTOBUF_VERSION >= 3010000;

// The run-time's own sizing of a message, by reflection.
inline size_t SizeByReflection(const ::google::protobuf::Message& message) {
#if GOOGLE_PROTOBUF_VERSION >= 3002000
  return message.::google::protobuf::Message::ByteSizeLong();
#else
  return static_cast<size_t>(message.::google::protobuf::Message::ByteSize());
#endif
}

// What a record says of its size on run-times that ask it for 64 bits; otherwise its ByteSize(), as
// a number without a sign.
template <class Record>
size_t AskedSize(const Record& record) {
#if GOOGLE_PROTOBUF_VERSION >= 3002000
  return record.ByteSizeLong();
#else
  return static_cast<unsigned>(record.ByteSize());
#endif
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_TESTS_SUPPORT_RUNTIME_FACTS_H_
