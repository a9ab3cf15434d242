// What the run-time wants to be told of strings that are inlined in a message: nothing before 3.18
// (see runtime.h).
#ifndef ZARVO_CALIBRATION_INTERNAL_INLINED_STRINGS_3_2_H_
#define ZARVO_CALIBRATION_INTERNAL_INLINED_STRINGS_3_2_H_

namespace zarvo {
namespace calibration_internal {

enum { kInlinedStringOffsets = 0 };

inline void SetNoInlinedStrings(::google::protobuf::internal::MigrationSchema*) {}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_INLINED_STRINGS_3_2_H_
