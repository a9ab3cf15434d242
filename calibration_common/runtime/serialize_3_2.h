// What the run-time asks for before and while it writes a record, 3.2 to 3.6 (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_SERIALIZE_3_2_H_
#define ZARVO_CALIBRATION_RUNTIME_SERIALIZE_3_2_H_

#include "calibration_common/attributes.h"
#include "calibration_common/runtime/size_3_2.h"

namespace zarvo {
namespace calibration_internal {

// Whether the run-time lets SerializeWithCachedSizesToArray() write what has a size of -1.
const bool kAskedToWriteTooLarge = true;

class ZARVO_CALIBRATION_EXPORT RecordSerialize : public RecordSize {
 public:
  ::google::protobuf::uint8* InternalSerializeWithCachedSizesToArray(
      bool /* deterministic */, ::google::protobuf::uint8* target) const final {
    return SerializeWithCachedSizesToArray(target);
  }
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_SERIALIZE_3_2_H_
