// A string or bytes member, from 3.20 on (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_STRING_FIELD_3_20_H_
#define ZARVO_CALIBRATION_RUNTIME_STRING_FIELD_3_20_H_

#include <google/protobuf/arenastring.h>
#include <google/protobuf/generated_message_util.h>

#include <string>

namespace zarvo {
namespace calibration_internal {

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

#endif  // ZARVO_CALIBRATION_RUNTIME_STRING_FIELD_3_20_H_
