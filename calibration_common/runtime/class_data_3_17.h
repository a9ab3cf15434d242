// How the run-time copies and merges through a Message&, from 3.17 on: by a ClassData, which two
// messages of one class share (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_CLASS_DATA_3_17_H_
#define ZARVO_CALIBRATION_RUNTIME_CLASS_DATA_3_17_H_

#include <google/protobuf/message.h>

#include "calibration_common/attributes.h"

// Members of Record. The run-time takes two messages with one ClassData for comparable; all records
// share this one, and CopyFrom() and MergeFrom() look at the classes themselves.
#define ZARVO_CALIBRATION_RECORD_CLASS_DATA                              \
  ZARVO_CALIBRATION_HIDDEN const ClassData* GetClassData() const final { \
    typedef ::zarvo::calibration_internal::CopyAndMerge<Record> Calls;   \
    static const ClassData data = {&Calls::Copy, &Calls::Merge};         \
    return &data;                                                        \
  }

namespace zarvo {
namespace calibration_internal {

template <class Record>
struct CopyAndMerge {
  typedef ::google::protobuf::Message Message;

  static void Copy(Message& to, const Message& from) { static_cast<Record&>(to).CopyFrom(from); }
  static void Merge(Message& to, const Message& from) { to.MergeFrom(from); }

  // Before 3.21 the message to change is handed over as a pointer.
  static void Copy(Message* to, const Message& from) { Copy(*to, from); }
  static void Merge(Message* to, const Message& from) { Merge(*to, from); }
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_CLASS_DATA_3_17_H_
