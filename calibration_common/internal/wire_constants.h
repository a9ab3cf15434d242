// Constants of the wire format, and the run-time's names that all readers and writers of it use.
#ifndef ZARVO_CALIBRATION_INTERNAL_WIRE_CONSTANTS_H_
#define ZARVO_CALIBRATION_INTERNAL_WIRE_CONSTANTS_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/repeated_field.h>
#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/wire_format_lite.h>

namespace zarvo {
namespace calibration_internal {

using ::google::protobuf::int32;
using ::google::protobuf::int64;
using ::google::protobuf::RepeatedField;
using ::google::protobuf::RepeatedPtrField;
using ::google::protobuf::uint32;
using ::google::protobuf::uint64;
using ::google::protobuf::uint8;
using ::google::protobuf::UnknownFieldSet;
using ::google::protobuf::internal::WireFormatLite;
using ::google::protobuf::io::CodedInputStream;
using ::google::protobuf::io::CodedOutputStream;

// The most bytes that a tag and a varint can have.
const int kMaxTagSize = 5;
const int kMaxVarintSize = 10;

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_WIRE_CONSTANTS_H_
