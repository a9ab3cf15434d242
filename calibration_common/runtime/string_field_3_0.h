// A string or bytes member, from 3.0 on (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_STRING_FIELD_3_0_H_
#define ZARVO_CALIBRATION_RUNTIME_STRING_FIELD_3_0_H_

#include <google/protobuf/arenastring.h>
#include <google/protobuf/generated_message_util.h>

#include <string>

namespace zarvo {
namespace calibration_internal {

// Makes sure that the run-time's shared empty string exists. REQUIRED before StringField::Init().
inline void InitSharedEmptyString() { ::google::protobuf::internal::GetEmptyString(); }

// A string or bytes member. Points at the shared empty string until first written, then owns a
// string on the heap. Init() must come first; Destroy() last.
class StringField {
 public:
  void Init() { ptr_.UnsafeSetDefault(Default()); }
  void Destroy() { ptr_.DestroyNoArena(Default()); }
  // Not GetNoArena(), which wants the default until 3.2 and not from 3.3 on.
  const ::std::string& Get() const {
    return **const_cast<Pointer*>(&ptr_)->UnsafeRawStringPointer();
  }
  ::std::string* Mutable() { return ptr_.MutableNoArena(Default()); }
  void Set(const ::std::string& value) { ptr_.SetNoArena(Default(), value); }
  void Assign(const StringField& from) { ptr_.AssignWithDefault(Default(), from.ptr_); }
  ::std::string* Release() { return ptr_.ReleaseNoArena(Default()); }
  void SetAllocated(::std::string* value) { ptr_.SetAllocatedNoArena(Default(), value); }
  void Clear() { ptr_.ClearToEmptyNoArena(Default()); }
  void Swap(StringField* other) { ptr_.Swap(&other->ptr_); }

 private:
  typedef ::google::protobuf::internal::ArenaStringPtr Pointer;

  static const ::std::string* Default() {
    return &::google::protobuf::internal::GetEmptyStringAlreadyInited();
  }

  Pointer ptr_;
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_STRING_FIELD_3_0_H_
