// How far two calibrations of a camera are apart. Their frames need not be one: what turns one into
// the other would pass for a difference everywhere. It is found as mrcal finds it (its
// documentation of projection_diff): the sum of the angles' fourth powers is least, beyond 5
// degrees that of squares.
#include <Eigen/Dense>
#include <algorithm>
#include <cmath>

#include "calib/geometry/calibration_geometry.h"
#include "calib/geometry/grid.h"
#include "calib/geometry/guarded.h"
#include "calib/geometry/pose_difference.h"

namespace zarvo {
namespace calibration_geometry {

namespace {

using Eigen::Vector3d;

constexpr int kMostColumns = 10000;
constexpr double kFar = 5 * kDegree;

Vector3d ToVector(const Point& point) { return {point.x, point.y, point.z}; }

// A direction of `after`, and the point of `before` that it shows.
struct Pair {
  Point before, after;
};

Eigen::Matrix3d CrossMatrix(const Vector3d& v) {
  Eigen::Matrix3d matrix;
  matrix << 0, -v[2], v[1], v[2], 0, -v[0], -v[1], v[0], 0;
  return matrix;
}

// One step of weighted least squares on what is left between the directions; returns its size.
// Newton's step for fourth powers is a third of it.
double Step(const std::vector<Pair>& pairs, bool at_infinity, bool fourth_powers, Transform* fit) {
  const int size = at_infinity ? 3 : 6;
  Eigen::MatrixXd normal = Eigen::MatrixXd::Zero(size, size);
  Eigen::VectorXd right = Eigen::VectorXd::Zero(size);
  const Point origin = Apply(*fit, {0, 0, 0});
  double largest = 0;
  for (const Pair& pair : pairs) {
    const Vector3d point = ToVector(Apply(*fit, pair.before));
    const double length = point.norm();
    const Vector3d ray = point / length;
    const Vector3d miss = ray - ToVector(pair.after);
    const double weight = fourth_powers ? std::min(miss.squaredNorm(), kFar * kFar) : 1;
    largest = std::max(largest, miss.squaredNorm());
    const Eigen::Matrix3d across = (Eigen::Matrix3d::Identity() - ray * ray.transpose()) / length;
    Eigen::MatrixXd change(3, size);
    change.leftCols(3) = -across * CrossMatrix(point - ToVector(origin));
    if (!at_infinity) change.rightCols(3) = across;
    normal += weight * change.transpose() * change;
    right -= weight * change.transpose() * miss;
  }
  if (largest < 1e-30) return 0;
  const Eigen::VectorXd step =
      normal.completeOrthogonalDecomposition().solve(right) * (fourth_powers ? 1.0 / 3 : 1);
  const Vector3d shift = at_infinity ? Vector3d(0, 0, 0) : Vector3d(step.tail(3));
  // The step turns about where the origin of `before` came to.
  Transform turned = Compose(FromRotationVector({step[0], step[1], step[2]}, {0, 0, 0}), *fit);
  turned.m[3] = origin.x + shift[0];
  turned.m[7] = origin.y + shift[1];
  turned.m[11] = origin.z + shift[2];
  *fit = turned;
  return step.norm();
}

Transform FitTransform(const std::vector<Pair>& pairs, bool at_infinity) {
  Transform fit;
  for (const bool fourth_powers : {false, true}) {
    for (int i = 0; i < 200 && Step(pairs, at_infinity, fourth_powers, &fit) > 1e-13; ++i) {
    }
  }
  Orthonormalize(&fit);
  return fit;
}

Difference TryCompare(const Camera& before, const Camera& after, const DifferenceOptions& options) {
  Difference result;
  if (before.width < 2 || before.height < 2 || before.width != after.width ||
      before.height != after.height || options.columns < 2 || options.columns > kMostColumns) {
    result.status = Status::kNotACamera;
    return result;
  }
  const std::vector<Pixel> grid = Grid(before, options.columns);
  std::vector<Direction> in_before(grid.size()), in_after(grid.size());
  Unproject(before, grid.data(), grid.size(), in_before.data());
  Unproject(after, grid.data(), grid.size(), in_after.data());
  const bool at_infinity = !(options.distance > 0);
  const double scale = at_infinity ? 1 : options.distance;
  std::vector<Pair> pairs;
  std::vector<Point> points;
  for (size_t i = 0; i < grid.size(); ++i) {
    for (const Direction& direction : {in_before[i], in_after[i]}) Checked(direction.status);
    const Point& ray = in_before[i].ray;
    points.push_back({ray.x * scale, ray.y * scale, ray.z * scale});
    if (in_before[i].status == Status::kOk && in_after[i].status == Status::kOk) {
      pairs.push_back({points[i], in_after[i].ray});
    }
  }
  if (pairs.size() < 3) return result;
  if (options.fit) result.after_from_before = FitTransform(pairs, at_infinity);
  for (Point& point : points) point = Apply(result.after_from_before, point);
  std::vector<Projected> seen(grid.size());
  Project(after, points.data(), points.size(), seen.data());
  for (size_t i = 0; i < grid.size(); ++i) {
    const Status status =
        in_before[i].status != Status::kOk ? in_before[i].status : Checked(seen[i].status);
    const Pixel by = {seen[i].pixel.u - grid[i].u, seen[i].pixel.v - grid[i].v};
    result.pixels.push_back({status, grid[i], by});
    if (status != Status::kOk) continue;
    const double length = std::hypot(by.u, by.v);
    ++result.compared;
    result.mean += length;
    if (length <= result.largest) continue;
    result.largest = length;
    result.where = grid[i];
  }
  if (result.compared == 0) return result;
  result.mean /= static_cast<double>(result.compared);
  result.status = Status::kOk;
  return result;
}

}  // namespace

Difference Compare(const Camera& before, const Camera& after,
                   const DifferenceOptions& options) noexcept {
  return Guarded([&] { return TryCompare(before, after, options); });
}

}  // namespace calibration_geometry
}  // namespace zarvo
