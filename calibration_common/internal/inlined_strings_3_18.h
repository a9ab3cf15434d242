// What the run-time wants to be told of strings that are inlined in a message, from 3.18 on, where
// it knows such (see runtime.h): that there are none.
#ifndef ZARVO_CALIBRATION_INTERNAL_INLINED_STRINGS_3_18_H_
#define ZARVO_CALIBRATION_INTERNAL_INLINED_STRINGS_3_18_H_

namespace zarvo {
namespace calibration_internal {

enum { kInlinedStringOffsets = 1 };

inline void SetNoInlinedStrings(::google::protobuf::internal::MigrationSchema* schema) {
  schema->inlined_string_indices_index = -1;
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_INLINED_STRINGS_3_18_H_
