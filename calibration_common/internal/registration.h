// The part of the run-time binding (see runtime.h) that the library's own source alone needs:
//
//   MessageLayout
//       where reflection finds the parts of one message class
//   VerifyVersion, Once, Reflection, FileReflection
//       what loading, first reflective use and shutdown need
#ifndef ZARVO_CALIBRATION_INTERNAL_REGISTRATION_H_
#define ZARVO_CALIBRATION_INTERNAL_REGISTRATION_H_

#include "calibration_common/runtime.h"

namespace zarvo {
namespace calibration_internal {

// Positions are in bytes from the start of an object.
struct MessageLayout {
  const int* field_offsets;  // one for each field, in declaration order
  int field_count;
  int has_bits_offset;
  int metadata_offset;
  int object_size;
};

}  // namespace calibration_internal
}  // namespace zarvo

#if GOOGLE_PROTOBUF_VERSION / 1000 == 3000
#include "calibration_common/internal/registration_3_0.h"
#else
#include "calibration_common/internal/registration_3_21.h"
#endif

#endif  // ZARVO_CALIBRATION_INTERNAL_REGISTRATION_H_
