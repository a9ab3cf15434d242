// The run-time binding: the one place that knows which protobuf run-time the records are built on.
//
// The record classes are written once, for the object model of the run-time's 3.0 series. What
// differs between the series that are served stands in one header for each, under the same names:
//
//   Record
//       the base class of every record; on the 3.0 series the run-time's Message itself
//   CALIBRATION_RECORD_METADATA
//       declares the metadata word where the base class does not bring one
//   UnknownFields, MutableUnknownFields, SwapUnknownFields
//       the unknown-field store behind a metadata word
//   StringField, InitSharedEmptyString
//       a string or bytes member: the run-time's ArenaStringPtr and its shared empty string
//   AddElements
//       makes room in a repeated number
//
// and, in registration_3_0.h and registration_3_21.h, what only the library's own source needs:
// registration and reflection.
//
// Nothing here relies on a private member or on the object layout of a run-time class.
#ifndef CALIBRATION_COMMON_RUNTIME_H_
#define CALIBRATION_COMMON_RUNTIME_H_

#include <google/protobuf/stubs/common.h>

// Marks what the library exports, and what of an exported class it does not.
#define CALIBRATION_EXPORT __attribute__((visibility("default")))
#define CALIBRATION_HIDDEN __attribute__((visibility("hidden")))

#if !defined(__BYTE_ORDER__) || __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "calibration_protolib reads and writes numbers as little-endian machines hold them."
#endif

#if GOOGLE_PROTOBUF_VERSION / 1000 == 3000
#include "calibration_common/runtime_3_0.h"
#elif GOOGLE_PROTOBUF_VERSION / 1000 == 3021
#include "calibration_common/runtime_3_21.h"
#else
#error "calibration_protolib serves the protobuf run-times 3.0 and 3.21, see docs/run-times.md."
#endif

namespace zarvo {
namespace calibration {
namespace wire {
class MessageReader;  // reads records, whose friend it is
}
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_COMMON_RUNTIME_H_
