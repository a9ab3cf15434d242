// The metadata word, from 3.12 on: Message brings it, at the offset where the classes had their own
// before (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_METADATA_3_12_H_
#define ZARVO_CALIBRATION_RUNTIME_METADATA_3_12_H_

#include <google/protobuf/message.h>
#include <google/protobuf/metadata_lite.h>
#include <google/protobuf/unknown_field_set.h>

#define ZARVO_CALIBRATION_RECORD_METADATA

namespace zarvo {
namespace calibration_internal {

using ::google::protobuf::UnknownFieldSet;

typedef ::google::protobuf::internal::InternalMetadata Metadata;

inline const UnknownFieldSet& UnknownFields(const Metadata& metadata) {
  return metadata.unknown_fields<UnknownFieldSet>(UnknownFieldSet::default_instance);
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
