// What the writers and the size computation share: the encoded size of values, and a sub-message in
// a flat buffer.
//
// Sizes are counted in unsigned 32-bit arithmetic and without an overflow test; records of 2 GiB
// and more are not supported.
#ifndef CALIBRATION_COMMON_WIRE_WRITING_H_
#define CALIBRATION_COMMON_WIRE_WRITING_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include <string>

#include "calibration_common/runtime.h"

namespace zarvo {
namespace calibration {
namespace wire {

using ::google::protobuf::int32;
using ::google::protobuf::int64;
using ::google::protobuf::uint32;
using ::google::protobuf::uint64;
using ::google::protobuf::uint8;
using ::google::protobuf::internal::WireFormatLite;
using ::google::protobuf::io::CodedOutputStream;

inline uint32 Int32Size(int32 value) {
  return value < 0
             ? 10
             : static_cast<uint32>(CodedOutputStream::VarintSize32(static_cast<uint32>(value)));
}
inline uint32 Int64Size(int64 value) {
  return static_cast<uint32>(CodedOutputStream::VarintSize64(static_cast<uint64>(value)));
}

// A length prefix and as many bytes.
inline uint32 LengthDelimitedSize(uint32 length) {
  return static_cast<uint32>(CodedOutputStream::VarintSize32(length)) + length;
}
inline uint32 StringSize(const ::std::string& value) {
  return LengthDelimitedSize(static_cast<uint32>(value.size()));
}
// Computes the sub-message's size anew. A null pointer stands for an empty sub-message.
template <typename T>
uint32 MessageSize(const T* message) {
  return LengthDelimitedSize(message == NULL ? 0 : static_cast<uint32>(message->T::ByteSize()));
}

// Writes a sub-message, whose length is its cached size; returns the position behind it.
template <typename T>
uint8* WriteMessageToArray(int number, const T& message, uint8* target) {
  target =
      WireFormatLite::WriteTagToArray(number, WireFormatLite::WIRETYPE_LENGTH_DELIMITED, target);
  target =
      CodedOutputStream::WriteVarint32ToArray(static_cast<uint32>(message.GetCachedSize()), target);
  return message.T::SerializeWithCachedSizesToArray(target);
}

}  // namespace wire
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_COMMON_WIRE_WRITING_H_
