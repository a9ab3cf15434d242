// The run-time binding: the one place that knows which protobuf run-time the records are built on.
//
// The record classes are written once, for the object model of the run-time's 3.0 series. What
// differs between the series that are served stands in headers for each, under the same names:
//
//   Record
//       the base class of every record
//   kAskedToWriteTooLarge
//       whether the run-time's own calls reach SerializeWithCachedSizesToArray() of a record of
//       2 GiB or more
//   ZARVO_CALIBRATION_RECORD_METADATA
//       declares the metadata word where the base class does not bring one
//   UnknownFields, MutableUnknownFields, SwapUnknownFields
//       the unknown-field store behind a metadata word
//   StringField, InitSharedEmptyString
//       a string or bytes member: the run-time's ArenaStringPtr and its shared empty string
//   AppendNumbers
//       makes room in a repeated number
//
// and, in internal/registration_3_0.h and internal/registration_3_21.h, what only the library's own
// source needs: registration and reflection.
//
// Nothing here relies on a private member or on the object layout of a run-time class. All that is
// not for users stands in zarvo::calibration_internal, beside the namespace that they may use
// whole.
#ifndef ZARVO_CALIBRATION_RUNTIME_H_
#define ZARVO_CALIBRATION_RUNTIME_H_

#include <google/protobuf/stubs/common.h>

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
namespace calibration_internal {
class MessageReader;  // reads records, whose friend it is
}
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_H_
