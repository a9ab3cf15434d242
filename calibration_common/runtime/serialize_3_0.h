// What the run-time asks for before and while it writes a record, 3.0 and 3.1: what the classes
// implement (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_SERIALIZE_3_0_H_
#define ZARVO_CALIBRATION_RUNTIME_SERIALIZE_3_0_H_

#include <google/protobuf/message.h>

#include "calibration_common/attributes.h"

namespace zarvo {
namespace calibration_internal {

// Whether the run-time lets SerializeWithCachedSizesToArray() write what has a size of -1.
const bool kAskedToWriteTooLarge = true;

class ZARVO_CALIBRATION_EXPORT RecordSerialize : public ::google::protobuf::Message {
 public:
  // From 3.0.0 on another name for SerializeWithCachedSizesToArray(); the betas before do not know
  // it.
  virtual ::google::protobuf::uint8* InternalSerializeWithCachedSizesToArray(
      bool /* deterministic */, ::google::protobuf::uint8* target) const {
    return SerializeWithCachedSizesToArray(target);
  }
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_SERIALIZE_3_0_H_
