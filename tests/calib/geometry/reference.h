// The lines of reference.txt; make_reference.py says what they are.
#ifndef CALIBRATION_TESTS_CALIB_GEOMETRY_REFERENCE_H_
#define CALIBRATION_TESTS_CALIB_GEOMETRY_REFERENCE_H_

#include <functional>
#include <string>
#include <vector>

#include "calib/geometry/calibration_geometry.h"

namespace zarvo {
namespace calibration_geometry {

struct Reference {
  std::string text, kind;
  std::vector<double> numbers;  // of all lines but those of cameras
  Camera camera;                // of those
};

void ForEachReference(const std::function<void(const Reference&)>& visit);

}  // namespace calibration_geometry
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_CALIB_GEOMETRY_REFERENCE_H_
