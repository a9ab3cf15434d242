// The part of the run-time binding (see runtime.h) that the library's own source alone needs:
//
//   MessageLayout
//       where reflection finds the parts of one message class
//   VerifyVersion, Once
//       what loading and first reflective use need
//   Reflection, FileReflection
//       the run-time's reflection objects, and what makes them; in a header for each way in which
//       the run-times do it
#ifndef ZARVO_CALIBRATION_INTERNAL_REGISTRATION_H_
#define ZARVO_CALIBRATION_INTERNAL_REGISTRATION_H_

#include <google/protobuf/stubs/common.h>

#include <atomic>
#include <mutex>

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

// Ends the process unless the run-time that is loaded can serve the classes.
inline void VerifyVersion(const char* source_path) {
  ::google::protobuf::internal::VerifyVersion(GOOGLE_PROTOBUF_VERSION,
                                              GOOGLE_PROTOBUF_MIN_LIBRARY_VERSION, source_path);
}

// Runs a function once for all threads; later calls cost one read of a flag. Its constructor is
// constant: a static Once is ready before any code runs.
class Once {
 public:
  constexpr Once() : done_(false) {}

  void Call(void (*function)()) {
    if (!done_.load(::std::memory_order_acquire)) CallSlow(function);
  }

 private:
  void CallSlow(void (*function)()) {
    ::std::lock_guard< ::std::mutex> lock(mutex_);
    if (done_.load(::std::memory_order_relaxed)) return;
    function();
    done_.store(true, ::std::memory_order_release);
  }

  ::std::mutex mutex_;
  ::std::atomic<bool> done_;
};

}  // namespace calibration_internal
}  // namespace zarvo

#include ZARVO_CALIBRATION_REGISTRATION

#endif  // ZARVO_CALIBRATION_INTERNAL_REGISTRATION_H_
