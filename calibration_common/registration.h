// The part of the run-time binding (see runtime.h) that the library's own source alone needs:
//
//   MessageLayout
//       where reflection finds the parts of one message class
//   VerifyVersion, Once, Reflection, FileReflection
//       what loading, first reflective use and shutdown need
#ifndef CALIBRATION_COMMON_REGISTRATION_H_
#define CALIBRATION_COMMON_REGISTRATION_H_

#include "calibration_common/runtime.h"

namespace zarvo {
namespace calibration {
namespace runtime {

// Positions are in bytes from the start of an object.
struct MessageLayout {
  const int* field_offsets;  // one for each field, in declaration order
  int field_count;
  int has_bits_offset;
  int metadata_offset;
  int object_size;
};

}  // namespace runtime
}  // namespace calibration
}  // namespace zarvo

#if GOOGLE_PROTOBUF_VERSION / 1000 == 3000
#include "calibration_common/registration_3_0.h"
#else
#include "calibration_common/registration_3_21.h"
#endif

#endif  // CALIBRATION_COMMON_REGISTRATION_H_
