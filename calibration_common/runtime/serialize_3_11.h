// What the run-time calls to write a record, from 3.11 on: what Record implements (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_SERIALIZE_3_11_H_
#define ZARVO_CALIBRATION_RUNTIME_SERIALIZE_3_11_H_

#include <google/protobuf/message.h>

namespace zarvo {
namespace calibration_internal {

// Whether the run-time lets SerializeWithCachedSizesToArray() write what has a size of -1.
const bool kAskedToWriteTooLarge = false;

typedef ::google::protobuf::Message RecordSerialize;

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_SERIALIZE_3_11_H_
