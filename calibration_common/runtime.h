// The run-time binding: the one place that knows which protobuf run-time the records are built on.
//
// The record classes are written once, for the object model of the run-time's 3.0 series. What
// differs between the series that are served stands in one header for each, under the same names:
//
//   Record            the base class of every record; on the 3.0 series the run-time's Message
//   itself CALIBRATION_RECORD_METADATA
//                     declares the metadata word where the base class does not bring one
//   StringField       a string or bytes member: the run-time's ArenaStringPtr and its shared empty
//   string UnknownFields, MutableUnknownFields, SwapUnknownFields
//                     the unknown-field store behind a metadata word
//   InitSharedEmptyString, VerifyVersion, Once, Reflection, FileReflection
//                     what loading, first reflective use and shutdown need
//   WriteMessage      writes a sub-message to a coded stream
//
// Nothing here relies on a private member or on the object layout of a run-time class.
#ifndef CALIBRATION_COMMON_RUNTIME_H_
#define CALIBRATION_COMMON_RUNTIME_H_

#include <google/protobuf/repeated_field.h>
#include <google/protobuf/stubs/common.h>

// Marks what the library exports, and what of an exported class it does not.
#define CALIBRATION_EXPORT __attribute__((visibility("default")))
#define CALIBRATION_HIDDEN __attribute__((visibility("hidden")))

namespace zarvo {
namespace calibration {
namespace runtime {

// Where reflection finds the parts of one message class. Positions are in bytes from the start of
// an object.
struct MessageLayout {
  const int* field_offsets;  // one for each field, in declaration order
  int field_count;
  int has_bits_offset;
  int metadata_offset;
  int object_size;
};

}  // namespace runtime
}  // namespace calibration
}  // namespace zarvo

namespace zarvo {
namespace calibration {
namespace runtime {

// Appends an element, a cleared one if there is any. Unlike the container's own Add(), makes room
// and then makes the element before it touches the container, so that a failed allocation loses
// nothing.
template <typename T>
T* AddElement(::google::protobuf::RepeatedPtrField<T>* elements) {
  if (elements->ClearedCount() > 0) return elements->Add();
  elements->Reserve(elements->size() + 1);
  T* element = new T;
  elements->AddAllocated(element);
  return element;
}

// Appends a copy of each element of `from`.
template <typename T>
void MergeElements(const ::google::protobuf::RepeatedPtrField<T>& from,
                   ::google::protobuf::RepeatedPtrField<T>* to) {
  to->Reserve(to->size() + from.size());
  for (int i = 0; i < from.size(); ++i) AddElement(to)->MergeFrom(from.Get(i));
}

}  // namespace runtime
}  // namespace calibration
}  // namespace zarvo

#if GOOGLE_PROTOBUF_VERSION / 1000 == 3000
#include "calibration_common/runtime_3_0.h"
#elif GOOGLE_PROTOBUF_VERSION / 1000 == 3021
#include "calibration_common/runtime_3_21.h"
#else
#error \
    "calibration_protolib serves the protobuf run-times 3.0 and 3.21; these headers are of another one."
#endif

#endif  // CALIBRATION_COMMON_RUNTIME_H_
