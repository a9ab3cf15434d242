// SizeOf() and SpaceOf(): the encoded size and the memory of a record, under the names that the
// run-time in use has for them. Newer ones have ByteSizeLong() and SpaceUsedLong(), and deprecate
// what is all that the 3.0 series has.
#ifndef CALIBRATION_TESTS_SUPPORT_SIZES_H_
#define CALIBRATION_TESTS_SUPPORT_SIZES_H_

#include <cstddef>

namespace zarvo {
namespace calibration {
namespace testing {
namespace internal {

template <class M>
auto SizeOf(int, const M& record) -> decltype(static_cast<int>(record.ByteSizeLong())) {
  return static_cast<int>(record.ByteSizeLong());
}
template <class M>
int SizeOf(long, const M& record) {
  return record.ByteSize();
}

template <class Object, class... Of>
auto SpaceOf(int, const Object& object, const Of&... of)
    -> decltype(static_cast<size_t>(object.SpaceUsedLong(of...))) {
  return object.SpaceUsedLong(of...);
}
template <class Object, class... Of>
size_t SpaceOf(long, const Object& object, const Of&... of) {
  return static_cast<size_t>(object.SpaceUsed(of...));
}

}  // namespace internal

// The call is made on M: a record class or Message.
template <class M>
int SizeOf(const M& record) {
  return internal::SizeOf(0, record);
}

// SpaceOf(record), or SpaceOf(reflection, record) to ask its reflection.
template <class Object, class... Of>
size_t SpaceOf(const Object& object, const Of&... of) {
  return internal::SpaceOf(0, object, of...);
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_SIZES_H_
