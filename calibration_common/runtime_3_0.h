// The run-time binding for the 3.0 series (see runtime.h). The records' object model is this
// run-time's own, so that there is next to nothing to bind.
#ifndef ZARVO_CALIBRATION_RUNTIME_3_0_H_
#define ZARVO_CALIBRATION_RUNTIME_3_0_H_

#include <google/protobuf/arenastring.h>
#include <google/protobuf/generated_message_util.h>
#include <google/protobuf/metadata.h>
#include <google/protobuf/repeated_field.h>
#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/wire_format_lite_inl.h>

#include <string>

#include "calibration_common/record_3_0.h"

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
__attribute__((noinline)) inline void SwapUnknownFields(Metadata* a, Metadata* b) { a->Swap(b); }

// Appends `count` elements, whose values the caller sets; returns the first.
template <typename T>
inline T* AppendNumbers(::google::protobuf::RepeatedField<T>* values, int count) {
  const int old_size = values->size();
  values->Resize(old_size + count, T());
  return values->mutable_data() + old_size;
}

// Makes sure that the run-time's shared empty string exists. REQUIRED before StringField::Init().
inline void InitSharedEmptyString() { ::google::protobuf::internal::GetEmptyString(); }

// A string or bytes member. Points at the shared empty string until first written, then owns a
// string on the heap. Init() must come first; Destroy() last.
class StringField {
 public:
  void Init() { ptr_.UnsafeSetDefault(Default()); }
  void Destroy() { ptr_.DestroyNoArena(Default()); }
  const ::std::string& Get() const { return ptr_.GetNoArena(Default()); }
  ::std::string* Mutable() { return ptr_.MutableNoArena(Default()); }
  void Set(const ::std::string& value) { ptr_.SetNoArena(Default(), value); }
  void Assign(const StringField& from) { ptr_.AssignWithDefault(Default(), from.ptr_); }
  ::std::string* Release() { return ptr_.ReleaseNoArena(Default()); }
  void SetAllocated(::std::string* value) { ptr_.SetAllocatedNoArena(Default(), value); }
  void Clear() { ptr_.ClearToEmptyNoArena(Default()); }
  void Swap(StringField* other) { ptr_.Swap(&other->ptr_); }

 private:
  static const ::std::string* Default() {
    return &::google::protobuf::internal::GetEmptyStringAlreadyInited();
  }

  ::google::protobuf::internal::ArenaStringPtr ptr_;
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_3_0_H_
