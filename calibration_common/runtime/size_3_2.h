// What the run-time asks for a record's size, 3.2 to 3.9: ByteSizeLong(), where it asked ByteSize()
// before. Included by the variants of serialize for these releases (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_SIZE_3_2_H_
#define ZARVO_CALIBRATION_RUNTIME_SIZE_3_2_H_

#include <google/protobuf/message.h>

#include <cstddef>

#include "calibration_common/attributes.h"

namespace zarvo {
namespace calibration_internal {

class ZARVO_CALIBRATION_EXPORT RecordSize : public ::google::protobuf::Message {
 public:
  virtual int ByteSize() const = 0;

  // That of a record of 2 GiB or more is 2^32 - 1: more than the run-time writes, as is the size of
  // a message around it.
  size_t ByteSizeLong() const final { return static_cast<unsigned>(ByteSize()); }
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_SIZE_3_2_H_
