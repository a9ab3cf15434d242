// Steps of the classes' object model that are the same in each and not worth code in each.
#ifndef ZARVO_CALIBRATION_INTERNAL_OBJECT_MODEL_H_
#define ZARVO_CALIBRATION_INTERNAL_OBJECT_MODEL_H_

#include <google/protobuf/arena.h>
#include <google/protobuf/message.h>

#include <memory>

namespace zarvo {
namespace calibration_internal {

// Hands `message` to the arena, which deletes it in the end; if that fails, deletes it at once.
__attribute__((noinline)) inline void Own(::google::protobuf::Arena* arena,
                                          ::google::protobuf::Message* message) {
  ::std::unique_ptr<::google::protobuf::Message> owner(message);
  arena->Own(message);
  static_cast<void>(owner.release());
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_OBJECT_MODEL_H_
