#include "calib/fields/rigid_numbers.h"

#include <algorithm>
#include <cmath>

namespace calib {

namespace geometry = zarvo::calibration_geometry;

namespace {

// Reads the numbers as a matrix whose element (row, column) is at row * down + column * right.
RigidNumbers Read(const google::protobuf::RepeatedField<double>& a, int down, int right) {
  RigidNumbers numbers = {{}, 0, a.size() > 9};
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < (numbers.has_translation ? 4 : 3); ++column) {
      numbers.transform.m[4 * row + column] = a.Get(row * down + column * right);
    }
  }
  const double defect = geometry::RotationDefect(numbers.transform);
  numbers.off = std::isfinite(defect) ? defect : 2;
  for (int column = 0; a.size() == 16 && column < 4; ++column) {
    const double expected = column == 3 ? 1 : 0;
    numbers.off = std::max(numbers.off, std::abs(a.Get(3 * down + column * right) - expected));
  }
  return numbers;
}

}  // namespace

std::optional<RigidNumbers> AsRigidNumbers(const google::protobuf::RepeatedField<double>& a) {
  const int rows = a.size() == 16 ? 4 : 3;
  const int columns = a.size() / rows;
  const bool known = a.size() == 9 || a.size() == 12 || a.size() == 16;
  if (!known ||
      !std::all_of(a.begin(), a.end(), [](double value) { return std::isfinite(value); })) {
    return std::nullopt;
  }
  const RigidNumbers by_rows = Read(a, columns, 1), by_columns = Read(a, 1, rows);
  return by_columns.off < by_rows.off ? by_columns : by_rows;
}

}  // namespace calib
