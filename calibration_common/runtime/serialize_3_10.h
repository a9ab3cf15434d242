// What the run-time calls to write a record, 3.10 (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_SERIALIZE_3_10_H_
#define ZARVO_CALIBRATION_RUNTIME_SERIALIZE_3_10_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/message.h>

#include "calibration_common/attributes.h"

namespace zarvo {
namespace calibration_internal {

// Whether the run-time lets SerializeWithCachedSizesToArray() write what has a size of -1.
const bool kAskedToWriteTooLarge = false;

class ZARVO_CALIBRATION_EXPORT RecordSerialize : public ::google::protobuf::Message {
 public:
  // The name that it has from 3.11 on.
  virtual ::google::protobuf::uint8* _InternalSerialize(
      ::google::protobuf::uint8* target,
      ::google::protobuf::io::EpsCopyOutputStream* stream) const = 0;

  ::google::protobuf::uint8* InternalSerializeWithCachedSizesToArray(
      ::google::protobuf::uint8* target,
      ::google::protobuf::io::EpsCopyOutputStream* stream) const final {
    return _InternalSerialize(target, stream);
  }
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_SERIALIZE_3_10_H_
