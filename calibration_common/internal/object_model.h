// Steps of the classes' object model that are the same in each and not worth code in each.
#ifndef ZARVO_CALIBRATION_INTERNAL_OBJECT_MODEL_H_
#define ZARVO_CALIBRATION_INTERNAL_OBJECT_MODEL_H_

#include <google/protobuf/arena.h>
#include <google/protobuf/message.h>
#include <google/protobuf/unknown_field_set.h>

#include <memory>

#include "calibration_common/runtime.h"

namespace zarvo {
namespace calibration_internal {

// Hands `message` to the arena, which deletes it in the end; if that fails, deletes it at once.
__attribute__((noinline)) inline void Own(::google::protobuf::Arena* arena,
                                          ::google::protobuf::Message* message) {
  ::std::unique_ptr<::google::protobuf::Message> owner(message);
  arena->Own(message);
  static_cast<void>(owner.release());
}

// Both REQUIRE that there are unknown fields (in `from`, for the merge).
__attribute__((noinline)) inline void ClearUnknownFields(Metadata* metadata) {
  MutableUnknownFields(metadata)->Clear();
}
__attribute__((noinline)) inline void MergeUnknownFields(const Metadata& from, Metadata* to) {
  MutableUnknownFields(to)->MergeFrom(UnknownFields(from));
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_OBJECT_MODEL_H_
