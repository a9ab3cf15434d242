// The differences between two records of one type, field by field.
#ifndef CALIB_FIELDS_COMPARE_H_
#define CALIB_FIELDS_COMPARE_H_

#include <google/protobuf/message.h>

#include <string>
#include <vector>

#include "calib/fields/camera_match.h"

namespace calib {

// Floating-point values may differ by `absolute`, or by `relative` times the larger of the two.
struct Tolerance {
  double absolute = 0;
  double relative = 0;
};

struct Difference {
  std::string path;           // by the indices of before, where cameras are matched
  std::string before, after;  // as text; empty where the field is not there
  // What the differences of a rigid transform, which come before, amount to: "turned by 0.5
  // degrees, moved by 0.01 in the file's own unit". It has no before and after.
  std::string summary;
};

// All differences, in the order of the fields. A field that is not set differs from one that is set
// to its default; a NaN equals a NaN.
std::vector<Difference> Compare(const google::protobuf::Message& before,
                                const google::protobuf::Message& after, const Tolerance& tolerance);
// The same, with cameras that are matched compared with each other, and the others removed or
// added.
std::vector<Difference> Compare(const google::protobuf::Message& before,
                                const google::protobuf::Message& after, const Tolerance& tolerance,
                                const CameraMatch& match);

}  // namespace calib

#endif  // CALIB_FIELDS_COMPARE_H_
