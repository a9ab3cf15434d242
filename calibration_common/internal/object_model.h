// Steps of the classes' object model that are the same in each and not worth code in each.
#ifndef ZARVO_CALIBRATION_INTERNAL_OBJECT_MODEL_H_
#define ZARVO_CALIBRATION_INTERNAL_OBJECT_MODEL_H_

#include <google/protobuf/arena.h>
#include <google/protobuf/message.h>

#include <memory>
#include <typeinfo>

namespace zarvo {
namespace calibration_internal {

// Whether an object's dynamic class is T. If it is, T's functions can be called past the virtual
// table; a derived class may have its own.
template <typename T>
inline bool IsExactly(const T& object) {
  return &typeid(object) == &typeid(T);
}

// Whether all required fields are present.
template <typename T>
inline bool IsInitialized(const T& message) {
  return IsExactly(message) ? message.T::IsInitialized() : message.IsInitialized();
}

// Makes an object of the prototype's class, which the arena deletes in the end.
__attribute__((cold, noinline)) inline ::google::protobuf::Message* NewOwnedMessage(
    const ::google::protobuf::Message& prototype, ::google::protobuf::Arena* arena) {
  ::std::unique_ptr<::google::protobuf::Message> message(prototype.New(nullptr));
  arena->Own(message.get());
  return message.release();
}
template <typename T>
inline T* NewOwned(const T& prototype, ::google::protobuf::Arena* arena) {
  return static_cast<T*>(NewOwnedMessage(prototype, arena));
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_OBJECT_MODEL_H_
