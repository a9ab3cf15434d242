// The base class of every record from 3.0 to 3.9, whose messages have the virtual functions that
// the classes implement (see runtime.h).
//
// Record is there for one reason: until 3.6, the run-time's calls that write into an array do not
// look at a size of -1, that of a record of 2 GiB or more. Calls on a concrete
// class refuse it here. Through a Message& the run-time goes on: SerializeWithCachedSizesToArray()
// then writes nothing, upon which the run-time reports, as a fatal error, that the size and what
// was written differ.
#ifndef ZARVO_CALIBRATION_RUNTIME_RECORD_3_0_H_
#define ZARVO_CALIBRATION_RUNTIME_RECORD_3_0_H_

#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>

#include <cstddef>

#include "calibration_common/attributes.h"

namespace zarvo {
namespace calibration_internal {

using ::google::protobuf::uint8;

class ZARVO_CALIBRATION_EXPORT Record : public RecordSerialize {
 public:
  // What the run-time's own do (see google/protobuf/message_lite.h), but that they refuse a size of
  // -1. What becomes of missing required fields depends on how the run-time was built.
  bool SerializeToArray(void* data, int size) const {
    if (IsInitialized()) return SerializePartialToArray(data, size);
    return ByteSize() >= 0 && RecordSerialize::SerializeToArray(data, size);
  }
  bool SerializePartialToArray(void* data, int size) const {
    const int needed = ByteSize();
    if (needed < 0) {
      GOOGLE_LOG(ERROR) << GetTypeName() << " exceeded maximum protobuf size of 2GB";
      return false;
    }
    if (size < needed) return false;
    uint8* start = static_cast<uint8*>(data);
    const ::std::ptrdiff_t written = SerializeWithCachedSizesToArray(start) - start;
    GOOGLE_CHECK_EQ(written, needed) << GetTypeName() << " was modified while it was serialized.";
    return true;
  }
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_RECORD_3_0_H_
