// A string or bytes member, from 3.14 on (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_STRING_FIELD_3_14_H_
#define ZARVO_CALIBRATION_RUNTIME_STRING_FIELD_3_14_H_

#include <google/protobuf/arenastring.h>
#include <google/protobuf/generated_message_util.h>

#include <string>
#include <utility>

namespace zarvo {
namespace calibration_internal {

// Makes sure that the run-time's shared empty string exists. REQUIRED before StringField::Init().
inline void InitSharedEmptyString() { ::google::protobuf::internal::InitProtobufDefaults(); }

// A string or bytes member. Points at the shared empty string until first written, then owns a
// string on the heap. Init() must come first; Destroy() last.
class StringField {
 public:
  void Init() { ptr_.UnsafeSetDefault(Default()); }
  void Destroy() { ptr_.DestroyNoArena(Default()); }
  const ::std::string& Get() const { return ptr_.Get(); }
  ::std::string* Mutable() { return ptr_.Mutable(Pointer::EmptyDefault(), nullptr); }
  void Set(const ::std::string& value) { ptr_.Set(Pointer::EmptyDefault(), value, nullptr); }
  void Assign(const StringField& from) { Set(from.Get()); }
  ::std::string* Release() { return ptr_.Release(Default(), nullptr); }
  // Not ArenaStringPtr's own SetAllocated(), which in a run-time built for debugging moves the text
  // to another string.
  void SetAllocated(::std::string* value) {
    Destroy();
    ptr_.UnsafeSetDefault(value != nullptr ? value : Default());
  }
  void Clear() {
    if (!ptr_.IsDefault(Default())) ptr_.ClearNonDefaultToEmpty();
  }
  void Swap(StringField* other) { ::std::swap(ptr_, other->ptr_); }

 private:
  typedef ::google::protobuf::internal::ArenaStringPtr Pointer;

  static const ::std::string* Default() {
    return &::google::protobuf::internal::GetEmptyStringAlreadyInited();
  }

  Pointer ptr_;
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_STRING_FIELD_3_14_H_
