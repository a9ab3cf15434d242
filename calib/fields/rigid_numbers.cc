#include "calib/fields/rigid_numbers.h"

#include <algorithm>
#include <cmath>

namespace calib {

namespace {

constexpr double kDegrees = 180 / 3.14159265358979323846;

using Rotation = std::array<double, 9>;

double At(const Rotation& r, int row, int column) {
  return r[static_cast<size_t>(3 * row + column)];
}

double Determinant(const Rotation& r) {
  return r[0] * (r[4] * r[8] - r[5] * r[7]) - r[1] * (r[3] * r[8] - r[5] * r[6]) +
         r[2] * (r[3] * r[7] - r[4] * r[6]);
}

double OffRotation(const Rotation& r) {
  double off = Determinant(r) < 0 ? 2 : 0;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      double element = i == j ? -1 : 0;
      for (int k = 0; k < 3; ++k) element += At(r, i, k) * At(r, j, k);
      off = std::max(off, std::abs(element));
    }
  }
  return off;
}

// Reads the numbers as a matrix whose element (row, column) is at row * down + column * right.
RigidNumbers Read(const google::protobuf::RepeatedField<double>& a, int down, int right) {
  RigidNumbers transform = {{}, {}, 0, a.size() > 9};
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      transform.rotation[static_cast<size_t>(3 * row + column)] =
          a.Get(row * down + column * right);
    }
    if (transform.has_translation)
      transform.translation[static_cast<size_t>(row)] = a.Get(row * down + 3 * right);
  }
  transform.off = OffRotation(transform.rotation);
  for (int column = 0; a.size() == 16 && column < 4; ++column) {
    const double expected = column == 3 ? 1 : 0;
    transform.off = std::max(transform.off, std::abs(a.Get(3 * down + column * right) - expected));
  }
  return transform;
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

// The sine is taken from the part of the turning rotation that is skew, the cosine from its trace:
// either alone loses small angles or those near 180 degrees.
double AngleBetween(const RigidNumbers& a, const RigidNumbers& b) {
  Rotation turn;  // the transpose of a, times b
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      double element = 0;
      for (int k = 0; k < 3; ++k) element += At(a.rotation, k, i) * At(b.rotation, k, j);
      turn[static_cast<size_t>(3 * i + j)] = element;
    }
  }
  const double sine = std::hypot(turn[7] - turn[5], turn[2] - turn[6], turn[3] - turn[1]) / 2;
  return std::atan2(sine, (turn[0] + turn[4] + turn[8] - 1) / 2) * kDegrees;
}

double DistanceBetween(const RigidNumbers& a, const RigidNumbers& b) {
  return std::hypot(a.translation[0] - b.translation[0], a.translation[1] - b.translation[1],
                    a.translation[2] - b.translation[2]);
}

}  // namespace calib
