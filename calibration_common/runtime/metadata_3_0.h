// The metadata word, from 3.0 on: every class has one of its own (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_METADATA_3_0_H_
#define ZARVO_CALIBRATION_RUNTIME_METADATA_3_0_H_

#include <google/protobuf/message.h>
#include <google/protobuf/metadata.h>
#include <google/protobuf/unknown_field_set.h>

#define ZARVO_CALIBRATION_RECORD_METADATA \
  ::google::protobuf::internal::InternalMetadataWithArena _internal_metadata_;

namespace zarvo {
namespace calibration_internal {

typedef ::google::protobuf::internal::InternalMetadataWithArena Metadata;

inline const ::google::protobuf::UnknownFieldSet& UnknownFields(const Metadata& metadata) {
  return metadata.unknown_fields();
}
inline ::google::protobuf::UnknownFieldSet* MutableUnknownFields(Metadata* metadata) {
  return metadata->mutable_unknown_fields();
}
inline void DeleteUnknownFields(Metadata*) {}  // they go with the word
__attribute__((noinline)) inline void SwapUnknownFields(Metadata* a, Metadata* b) { a->Swap(b); }

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_METADATA_3_0_H_
