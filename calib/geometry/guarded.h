// Keeps exceptions within the library.
#ifndef CALIB_GEOMETRY_GUARDED_H_
#define CALIB_GEOMETRY_GUARDED_H_

#include <new>

#include "calib/geometry/calibration_geometry.h"

namespace zarvo {
namespace calibration_geometry {

// For callers within the library, where a status of one of many points is easily taken for another.
inline Status Checked(Status status) {
  if (status == Status::kNoMemory) throw std::bad_alloc();
  return status;
}

// What the function returns or, without memory, a result that says so.
template <typename Function>
auto Guarded(const Function& function) noexcept -> decltype(function()) {
  try {
    return function();
  } catch (const std::bad_alloc&) {
    decltype(function()) result;
    result.status = Status::kNoMemory;
    return result;
  }
}

}  // namespace calibration_geometry
}  // namespace zarvo

#endif  // CALIB_GEOMETRY_GUARDED_H_
