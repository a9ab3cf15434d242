// Who owns the reflection objects that the run-time makes from the tables, on 3.2 and 3.3: who has
// them made (see runtime.h).
#ifndef ZARVO_CALIBRATION_INTERNAL_REFLECTION_OWNER_3_2_H_
#define ZARVO_CALIBRATION_INTERNAL_REFLECTION_OWNER_3_2_H_

namespace zarvo {
namespace calibration_internal {

inline void DeleteReflection(const ::google::protobuf::Reflection* reflection) {
  delete reflection;
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_REFLECTION_OWNER_3_2_H_
