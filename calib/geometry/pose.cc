// From where a flat target is seen: the homography between it and the directions of its points is a
// start (Zhang, A flexible new technique for camera calibration), least squares in pixels the rest.
#include <Eigen/Dense>
#include <cmath>

#include "calib/geometry/calibration_geometry.h"
#include "calib/geometry/guarded.h"
#include "calib/geometry/least_squares.h"

namespace zarvo {
namespace calibration_geometry {

namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;

// Far off, so that a pose from which a point is not seen is no solution.
constexpr double kNotSeen = 1e4;

// Each direction is along H (x, y, 1): three equations, of which two are independent. False if the
// points are too few, or on a line.
bool Homography(const std::vector<TargetPoint>& points, const std::vector<Direction>& directions,
                Matrix3d* homography) {
  // About the middle, and of the size 1, for the sake of the numbers.
  double x0 = 0, y0 = 0, size = 0;
  for (const TargetPoint& point : points) {
    x0 += point.x / static_cast<double>(points.size());
    y0 += point.y / static_cast<double>(points.size());
  }
  for (const TargetPoint& point : points) {
    size = std::max(size, std::hypot(point.x - x0, point.y - y0));
  }
  if (!(size > 0)) return false;
  Eigen::MatrixXd equations =
      Eigen::MatrixXd::Zero(3 * static_cast<Eigen::Index>(points.size()), 9);
  for (size_t i = 0; i < points.size(); ++i) {
    const Point& ray = directions[i].ray;
    const Eigen::RowVector3d p((points[i].x - x0) / size, (points[i].y - y0) / size, 1);
    const auto row = 3 * static_cast<Eigen::Index>(i);
    equations.block<1, 3>(row, 3) = -ray.z * p;
    equations.block<1, 3>(row, 6) = ray.y * p;
    equations.block<1, 3>(row + 1, 0) = ray.z * p;
    equations.block<1, 3>(row + 1, 6) = -ray.x * p;
    equations.block<1, 3>(row + 2, 0) = -ray.y * p;
    equations.block<1, 3>(row + 2, 3) = ray.x * p;
  }
  const Eigen::SelfAdjointEigenSolver<Eigen::Matrix<double, 9, 9>> solver(equations.transpose() *
                                                                          equations);
  if (!(solver.eigenvalues()[1] > 1e-12 * solver.eigenvalues()[8])) return false;
  const Eigen::Matrix<double, 9, 1> h = solver.eigenvectors().col(0);
  Matrix3d scaled, normalize;
  scaled << h[0], h[1], h[2], h[3], h[4], h[5], h[6], h[7], h[8];
  normalize << 1 / size, 0, -x0 / size, 0, 1 / size, -y0 / size, 0, 0, 1;
  *homography = scaled * normalize;
  // Points are in front of where they are seen from.
  const Point& ray = directions[0].ray;
  const Vector3d seen = *homography * Vector3d(points[0].x, points[0].y, 1);
  if (seen.dot(Vector3d(ray.x, ray.y, ray.z)) < 0) *homography = -*homography;
  return true;
}

// The pose that has that homography, as far as one does.
bool PoseOf(const Matrix3d& homography, double z, Transform* pose) {
  const double length = std::sqrt(homography.col(0).norm() * homography.col(1).norm());
  const Matrix3d h = homography / length;
  const Vector3d third = h.col(0).cross(h.col(1));
  for (Eigen::Index row = 0; row < 3; ++row) {
    pose->m[4 * row] = h(row, 0);
    pose->m[4 * row + 1] = h(row, 1);
    pose->m[4 * row + 2] = third[row];
    pose->m[4 * row + 3] = h(row, 2);
  }
  if (!Orthonormalize(pose)) return false;
  for (int row = 0; row < 3; ++row) pose->m[4 * row + 3] -= pose->m[4 * row + 2] * z;
  return true;
}

Pose TryFitPose(const Camera& camera, double z, const std::vector<TargetPoint>& points) {
  Pose pose;
  std::vector<Pixel> pixels;
  pixels.reserve(points.size());
  for (const TargetPoint& point : points) pixels.push_back(point.pixel);
  std::vector<Direction> directions(points.size());
  Unproject(camera, pixels.data(), pixels.size(), directions.data());
  for (const Direction& direction : directions) {
    if (Checked(direction.status) == Status::kOk) continue;
    pose.status = direction.status;
    return pose;
  }
  Matrix3d homography;
  if (points.size() < 4 || !Homography(points, directions, &homography) ||
      !PoseOf(homography, z, &pose.camera_from_target)) {
    return pose;
  }
  const Transform start = pose.camera_from_target;
  const auto at = [&](const std::vector<double>& p) {
    Transform moved = Compose(FromRotationVector({p[0], p[1], p[2]}, {0, 0, 0}), start);
    moved.m[3] = start.m[3] + p[3];
    moved.m[7] = start.m[7] + p[4];
    moved.m[11] = start.m[11] + p[5];
    return moved;
  };
  std::vector<Point> seen(points.size());
  std::vector<Projected> landed(points.size());
  const auto residuals = [&](const std::vector<double>& parameters, std::vector<double>* values) {
    const Transform trial = at(parameters);
    for (size_t i = 0; i < points.size(); ++i)
      seen[i] = Apply(trial, {points[i].x, points[i].y, z});
    Project(camera, seen.data(), seen.size(), landed.data());
    for (size_t i = 0; i < points.size(); ++i) {
      const bool there = Checked(landed[i].status) == Status::kOk;
      (*values)[2 * i] = there ? landed[i].pixel.u - points[i].pixel.u : kNotSeen;
      (*values)[2 * i + 1] = there ? landed[i].pixel.v - points[i].pixel.v : kNotSeen;
    }
  };
  std::vector<double> parameters(6, 0);
  if (!LeastSquares(2 * points.size(), residuals, &parameters)) return pose;
  pose.camera_from_target = at(parameters);
  std::vector<double> left(2 * points.size());
  residuals(parameters, &left);
  double sum = 0;
  for (const double value : left) sum += value * value;
  pose.rms = std::sqrt(sum / static_cast<double>(points.size()));
  pose.status = Status::kOk;
  return pose;
}

}  // namespace

Pose FitPose(const Camera& camera, double z, const std::vector<TargetPoint>& points) noexcept {
  return Guarded([&] { return TryFitPose(camera, z, points); });
}

}  // namespace calibration_geometry
}  // namespace zarvo
