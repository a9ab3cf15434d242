// The metadata word, from 3.12 on: Message brings it, at the offset where the classes had their own
// before (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_METADATA_3_12_H_
#define ZARVO_CALIBRATION_RUNTIME_METADATA_3_12_H_

#include <google/protobuf/message.h>
#include <google/protobuf/metadata_lite.h>
#include <google/protobuf/unknown_field_set.h>

#include "calibration_common/attributes.h"

#define ZARVO_CALIBRATION_RECORD_METADATA

namespace zarvo {
namespace calibration_internal {

using ::google::protobuf::UnknownFieldSet;

typedef ::google::protobuf::internal::InternalMetadata Metadata;

// The run-time's own empty set. It is asked for once: the call would take most of the time in which
// a program sees that a record has no unknown fields.
ZARVO_CALIBRATION_HIDDEN inline const UnknownFieldSet& NoUnknownFields() {
  static const UnknownFieldSet& none = UnknownFieldSet::default_instance();
  return none;
}
inline const UnknownFieldSet& UnknownFields(const Metadata& metadata) {
  return metadata.unknown_fields<UnknownFieldSet>(NoUnknownFields);
}
inline UnknownFieldSet* MutableUnknownFields(Metadata* metadata) {
  return metadata->mutable_unknown_fields<UnknownFieldSet>();
}
inline void DeleteUnknownFields(Metadata* metadata) { metadata->Delete<UnknownFieldSet>(); }
__attribute__((noinline)) inline void SwapUnknownFields(Metadata* a, Metadata* b) {
  a->Swap<UnknownFieldSet>(b);
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_METADATA_3_12_H_
