// The run-time binding for 3.21 (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_3_21_H_
#define ZARVO_CALIBRATION_RUNTIME_3_21_H_

#include <google/protobuf/arenastring.h>
#include <google/protobuf/generated_message_util.h>
#include <google/protobuf/metadata_lite.h>
#include <google/protobuf/repeated_field.h>
#include <google/protobuf/unknown_field_set.h>

#include <string>

#include "calibration_common/record_3_21.h"
#include "calibration_common/record_parse_3_21.h"
#include "calibration_common/record_write_3_21.h"

// Message brings the metadata word, at the offset where the 3.0 series has it.
#define ZARVO_CALIBRATION_RECORD_METADATA

namespace zarvo {
namespace calibration_internal {

typedef ::google::protobuf::internal::InternalMetadata Metadata;

inline const UnknownFieldSet& UnknownFields(const Metadata& metadata) {
  return metadata.unknown_fields<UnknownFieldSet>(UnknownFieldSet::default_instance);
}
inline UnknownFieldSet* MutableUnknownFields(Metadata* metadata) {
  return metadata->mutable_unknown_fields<UnknownFieldSet>();
}
__attribute__((noinline)) inline void SwapUnknownFields(Metadata* a, Metadata* b) {
  a->Swap<UnknownFieldSet>(b);
}

// Appends `count` elements, whose values the caller sets; returns the first.
template <typename T>
inline T* AppendNumbers(::google::protobuf::RepeatedField<T>* values, int count) {
  values->Reserve(values->size() + count);
  return values->AddNAlreadyReserved(count);
}

// Makes sure that the run-time's shared empty string exists. REQUIRED before StringField::Init().
inline void InitSharedEmptyString() { ::google::protobuf::internal::InitProtobufDefaults(); }

// A string or bytes member. Points at the shared empty string until first written, then owns a
// string on the heap. Init() must come first; Destroy() last.
class StringField {
 public:
  void Init() { ptr_.InitDefault(); }
  void Destroy() {
    if (!ptr_.IsDefault()) ptr_.Destroy();
  }
  const ::std::string& Get() const { return ptr_.Get(); }
  ::std::string* Mutable() { return ptr_.Mutable(nullptr); }
  void Set(const ::std::string& value) { ptr_.Set(value, nullptr); }
  void Assign(const StringField& from) { Set(from.Get()); }
  ::std::string* Release() { return ptr_.Release(); }
  // Not ArenaStringPtr's own SetAllocated(), which in a run-time built for debugging moves the text
  // to another string.
  void SetAllocated(::std::string* value) {
    ptr_.Destroy();
    if (value != nullptr) {
      ptr_.InitAllocated(value, nullptr);
    } else {
      ptr_.InitDefault();
    }
  }
  void Clear() {
    if (!ptr_.IsDefault()) ptr_.ClearNonDefaultToEmpty();
  }
  void Swap(StringField* other) {
    ::google::protobuf::internal::ArenaStringPtr::InternalSwap(&ptr_, nullptr, &other->ptr_,
                                                               nullptr);
  }

 private:
  ::google::protobuf::internal::ArenaStringPtr ptr_;
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_3_21_H_
