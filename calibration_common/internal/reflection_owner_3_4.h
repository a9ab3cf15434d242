// Who owns the reflection objects that the run-time makes from the tables, from 3.4 on: the
// run-time (see runtime.h).
#ifndef ZARVO_CALIBRATION_INTERNAL_REFLECTION_OWNER_3_4_H_
#define ZARVO_CALIBRATION_INTERNAL_REFLECTION_OWNER_3_4_H_

namespace zarvo {
namespace calibration_internal {

inline void DeleteReflection(const ::google::protobuf::Reflection*) {}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_REFLECTION_OWNER_3_4_H_
