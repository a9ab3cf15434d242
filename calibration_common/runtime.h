// The run-time binding: the one place that knows which protobuf run-time the records are built on.
//
// The record classes are written once, for the object model of the run-time's 3.0 series. What the
// releases from then to 3.21 differ in is a handful of facts. Each has a header for every way in
// which it has been, named after the first release that has it so; a run-time is one choice of
// each, made in the table below and nowhere else. Under the same names, the headers bring
//
//   string_field    StringField, InitSharedEmptyString: a string or bytes member, which is the
//                   run-time's ArenaStringPtr, and its shared empty string
//   numbers         AppendNumbers: makes room in a repeated number
//   metadata        ZARVO_CALIBRATION_RECORD_METADATA: declares the metadata word where the base
//                   class does not bring one; UnknownFields, MutableUnknownFields,
//                   SwapUnknownFields, DeleteUnknownFields: the unknown-field store behind that
//                   word, the last where it does not go with the word
//   class_data      ZARVO_CALIBRATION_RECORD_CLASS_DATA: what the run-time asks before it copies or
//                   merges through a Message&
//   serialize       what the run-time asks for before and while it writes a record;
//                   kAskedToWriteTooLarge: whether its own calls reach
//                   SerializeWithCachedSizesToArray() of a record of 2 GiB or more
//   record          Record: the base class of every record, through which the run-time reads and
//                   writes
//   registration, inlined_strings
//                   for the library's own source alone (see internal/registration.h)
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

#if GOOGLE_PROTOBUF_VERSION < 3000000 || GOOGLE_PROTOBUF_VERSION >= 3022000
#error "calibration_protolib serves the protobuf run-times 3.0 to 3.21, see docs/run-times.md."
#endif

namespace zarvo {
namespace calibration_internal {
class MessageReader;  // reads records, whose friend it is
template <typename T>
class KnownClass;  // tells records' classes, and destroys them; their friend, too
}  // namespace calibration_internal
}  // namespace zarvo

// --- The table: each fact's variants, the newest first -------------------------------------------

#if GOOGLE_PROTOBUF_VERSION >= 3020000
#include "calibration_common/runtime/string_field_3_20.h"
#elif GOOGLE_PROTOBUF_VERSION >= 3014000
#include "calibration_common/runtime/string_field_3_14.h"
#else
#include "calibration_common/runtime/string_field_3_0.h"
#endif

#if GOOGLE_PROTOBUF_VERSION >= 3003000
#include "calibration_common/runtime/numbers_3_3.h"
#else
#include "calibration_common/runtime/numbers_3_0.h"
#endif

#if GOOGLE_PROTOBUF_VERSION >= 3012000
#include "calibration_common/runtime/metadata_3_12.h"
#else
#include "calibration_common/runtime/metadata_3_0.h"
#endif

#if GOOGLE_PROTOBUF_VERSION >= 3017000
#include "calibration_common/runtime/class_data_3_17.h"
#else
#include "calibration_common/runtime/class_data_3_0.h"
#endif

#if GOOGLE_PROTOBUF_VERSION >= 3011000
#include "calibration_common/runtime/serialize_3_11.h"
#elif GOOGLE_PROTOBUF_VERSION >= 3010000
#include "calibration_common/runtime/serialize_3_10.h"
#elif GOOGLE_PROTOBUF_VERSION >= 3007000
#include "calibration_common/runtime/serialize_3_7.h"
#elif GOOGLE_PROTOBUF_VERSION >= 3002000
#include "calibration_common/runtime/serialize_3_2.h"
#else
#include "calibration_common/runtime/serialize_3_0.h"
#endif

#if GOOGLE_PROTOBUF_VERSION >= 3010000
#include "calibration_common/runtime/record_3_10.h"
#include "calibration_common/runtime/record_parse_3_10.h"
#include "calibration_common/runtime/record_write_3_10.h"
#else
#include "calibration_common/runtime/record_3_0.h"
#endif

// Until 3.7 the bodies of the wire format's inline functions stand apart.
#if GOOGLE_PROTOBUF_VERSION < 3008000
#include <google/protobuf/wire_format_lite_inl.h>
#endif

// Included by internal/registration.h.
#if GOOGLE_PROTOBUF_VERSION >= 3008000
#define ZARVO_CALIBRATION_REGISTRATION "calibration_common/internal/registration_3_8.h"
#elif GOOGLE_PROTOBUF_VERSION >= 3007000
#define ZARVO_CALIBRATION_REGISTRATION "calibration_common/internal/registration_3_7.h"
#elif GOOGLE_PROTOBUF_VERSION >= 3002000
#define ZARVO_CALIBRATION_REGISTRATION "calibration_common/internal/registration_3_2.h"
#else
#define ZARVO_CALIBRATION_REGISTRATION "calibration_common/internal/registration_3_0.h"
#endif

// Included by internal/registration_tables.h.
#if GOOGLE_PROTOBUF_VERSION >= 3018000
#define ZARVO_CALIBRATION_INLINED_STRINGS "calibration_common/internal/inlined_strings_3_18.h"
#else
#define ZARVO_CALIBRATION_INLINED_STRINGS "calibration_common/internal/inlined_strings_3_2.h"
#endif
#if GOOGLE_PROTOBUF_VERSION >= 3004000
#define ZARVO_CALIBRATION_REFLECTION_OWNER "calibration_common/internal/reflection_owner_3_4.h"
#else
#define ZARVO_CALIBRATION_REFLECTION_OWNER "calibration_common/internal/reflection_owner_3_2.h"
#endif

#endif  // ZARVO_CALIBRATION_RUNTIME_H_
