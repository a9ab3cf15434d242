// Rectified pairs: both cameras are turned by half of what is between them, then about the
// baseline's normal, so that they look the same way at right angles to the baseline. The method,
// and how focal length and principal points are chosen, are OpenCV's (its documentation of
// stereoRectify and of fisheye::stereoRectify), to the last digit: where it rounds to float and
// undistorts in five steps, so does this, since pairs that were rectified by either must go
// together. It has no effect on how exactly rows meet.
#include <Eigen/Dense>
#include <algorithm>
#include <cfloat>
#include <cmath>

#include "calib/geometry/brown.h"
#include "calib/geometry/calibration_geometry.h"
#include "calib/geometry/guarded.h"

namespace zarvo {
namespace calibration_geometry {

namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;

Matrix3d RotationOf(const Transform& transform) {
  const double* m = transform.m;
  Matrix3d rotation;
  rotation << m[0], m[1], m[2], m[4], m[5], m[6], m[8], m[9], m[10];
  return rotation;
}

Matrix3d Turn(const Vector3d& vector) {
  return RotationOf(FromRotationVector({vector[0], vector[1], vector[2]}, {0, 0, 0}));
}

// The point of the plane z = 1 that a pixel shows, by five steps of the fixed-point iteration.
Flat RoughlyUndistorted(const Camera& camera, const Brown& brown, const Flat& pixel) {
  const double* d = camera.distortion;
  Flat start;
  start.y = (pixel.y - camera.cy) / camera.fy;
  start.x = (pixel.x - camera.cx - camera.skew * start.y) / camera.fx;
  if (camera.lens == Lens::kPinhole) return start;
  const Flat bent = brown.Untilt(start);
  Flat at = bent;
  for (int i = 0; i < 5; ++i) {
    const double s = at.x * at.x + at.y * at.y;
    const double shrink =
        (1 + ((d[7] * s + d[6]) * s + d[5]) * s) / (1 + ((d[4] * s + d[1]) * s + d[0]) * s);
    if (shrink < 0) return start;
    const double dx =
        2 * d[2] * at.x * at.y + d[3] * (s + 2 * at.x * at.x) + d[8] * s + d[9] * s * s;
    const double dy =
        d[2] * (s + 2 * at.y * at.y) + 2 * d[3] * at.x * at.y + d[10] * s + d[11] * s * s;
    at = {(bent.x - dx) * shrink, (bent.y - dy) * shrink};
  }
  return at;
}

// Volatile since g++ 12 takes two numbers that are rounded side by side for what they were.
float Rounded(double x) {
  const volatile float rounded = static_cast<float>(x);
  return rounded;
}

Flat Rounded(double x, double y) { return {Rounded(x), Rounded(y)}; }

struct Box {
  float left, top, right, bottom;
};

// A camera that is to be turned.
struct Side {
  Camera camera;
  Matrix3d turn;
  Eigen::Vector2d centre;
};

// Where the middle of the image's corners is seen by a turned camera of that focal length, with its
// principal point at 0.
Eigen::Vector2d MiddleOfCorners(const Side& side, double focal) {
  const Brown brown(side.camera.distortion);
  Eigen::Vector2d sum(0, 0);
  for (int i = 0; i < 4; ++i) {
    const Flat corner = {i % 2 == 0 ? 0.0 : side.camera.width - 1.0,
                         i < 2 ? 0.0 : side.camera.height - 1.0};
    const Flat flat = RoughlyUndistorted(side.camera, brown, corner);
    const Flat rounded = Rounded(flat.x, flat.y);
    const Vector3d ray = side.turn * Vector3d(rounded.x, rounded.y, 1);
    const double depth = ray[2] != 0 ? 1 / ray[2] : 1;
    const Flat seen = Rounded(ray[0] * depth * focal, ray[1] * depth * focal);
    sum += Eigen::Vector2d(seen.x, seen.y);
  }
  return sum * 0.25;
}

// The boxes that the image's edge is all outside of, and all inside of, as the turned camera sees
// it.
void Boxes(const Side& side, double focal, Box* inner, Box* outer) {
  constexpr int kSteps = 8;
  const Brown brown(side.camera.distortion);
  *inner = {-FLT_MAX, -FLT_MAX, FLT_MAX, FLT_MAX};
  *outer = {FLT_MAX, FLT_MAX, -FLT_MAX, -FLT_MAX};
  Matrix3d matrix;
  matrix << focal, 0, side.centre[0], 0, focal, side.centre[1], 0, 0, 1;
  const Matrix3d onto = matrix * side.turn;
  for (int i = 0; i < (kSteps + 1) * (kSteps + 1); ++i) {
    const int column = i % (kSteps + 1), row = i / (kSteps + 1);
    const Flat pixel =
        Rounded(static_cast<float>(column) * static_cast<float>(side.camera.width) / kSteps,
                static_cast<float>(row) * static_cast<float>(side.camera.height) / kSteps);
    const Flat flat = RoughlyUndistorted(side.camera, brown, pixel);
    const Vector3d seen = onto * Vector3d(flat.x, flat.y, 1);
    const float x = Rounded(seen[0] / seen[2]), y = Rounded(seen[1] / seen[2]);
    outer->left = std::min(outer->left, x);
    outer->right = std::max(outer->right, x);
    outer->top = std::min(outer->top, y);
    outer->bottom = std::max(outer->bottom, y);
    if (column == 0) inner->left = std::max(inner->left, x);
    if (column == kSteps) inner->right = std::min(inner->right, x);
    if (row == 0) inner->top = std::max(inner->top, y);
    if (row == kSteps) inner->bottom = std::min(inner->bottom, y);
  }
}

// By how much to scale so that the box just fills the image, along its four sides. The right and
// the lower side are reckoned by sizes, as floats.
void Scales(const Side& side, const Box& box, double* scales) {
  const double cx = side.centre[0], cy = side.centre[1];
  const float right = box.left + (box.right - box.left), bottom = box.top + (box.bottom - box.top);
  scales[0] = cx / (cx - box.left);
  scales[1] = cy / (cy - box.top);
  scales[2] = (side.camera.width - cx) / (right - cx);
  scales[3] = (side.camera.height - cy) / (bottom - cy);
}

// With principal points of both as one along `axis`, or both along all axes.
void Share(Side* sides, bool zero_disparity, int axis) {
  for (int i = 0; i < 2; ++i) {
    if (!zero_disparity && i != axis) continue;
    sides[0].centre[i] = sides[1].centre[i] = (sides[0].centre[i] + sides[1].centre[i]) * 0.5;
  }
}

// Chooses the focal length and the principal points of brown cameras.
double ChooseForBrown(Side* sides, int along, const RectifyOptions& options) {
  const auto focal_across = [&](const Camera& camera) {
    return along == 0 ? camera.fy : camera.fx;
  };
  double focal = (focal_across(sides[0].camera) + focal_across(sides[1].camera)) * 0.5;
  for (int i = 0; i < 2; ++i) {
    const Camera& camera = sides[i].camera;
    sides[i].centre =
        Eigen::Vector2d(camera.width - 1, camera.height - 1) / 2 - MiddleOfCorners(sides[i], focal);
  }
  Share(sides, options.zero_disparity, 1 - along);
  if (options.alpha < 0) return focal;
  double inner[8], outer[8];
  for (size_t i = 0; i < 2; ++i) {
    Box inside, outside;
    Boxes(sides[i], focal, &inside, &outside);
    Scales(sides[i], inside, inner + 4 * i);
    Scales(sides[i], outside, outer + 4 * i);
  }
  const double alpha = std::min(options.alpha, 1.0);
  return focal * (*std::max_element(inner, inner + 8) * (1 - alpha) +
                  *std::min_element(outer, outer + 8) * alpha);
}

// The same of lenses that see further: by the middles of the edges, for each camera
// on its own. False if one of them is beyond the lens, or not in front of the turned camera.
bool ChooseAlone(Side* side, double balance, double* focal) {
  const Camera& camera = side->camera;
  // Halves without a fraction, as pixels are counted there.
  const double w = camera.width, middle_u = std::floor(w / 2);
  const double h = camera.height, middle_v = std::floor(h / 2);
  const Pixel pixels[] = {{middle_u, 0}, {w, middle_v}, {middle_u, h}, {0, middle_v}};
  const double aspect = camera.fx / camera.fy;
  double x[4], y[4], mean_x = 0, mean_y = 0;
  for (int i = 0; i < 4; ++i) {
    const Direction direction = Unproject(camera, pixels[i]);
    if (Checked(direction.status) != Status::kOk) return false;
    const Point& ray = direction.ray;
    const Vector3d seen = side->turn * Vector3d(ray.x, ray.y, ray.z);
    if (!(seen[2] > 0)) return false;
    x[i] = seen[0] / seen[2];
    y[i] = seen[1] / seen[2] * aspect;
    // The mean takes the aspect of the other axis, as the model does.
    mean_x += x[i] / 4 * aspect;
    mean_y += y[i] / 4 / aspect;
  }
  const double half_w = w * 0.5, half_h = h * 0.5 * aspect;
  const double fits[] = {half_w / (mean_x - *std::min_element(x, x + 4)),
                         half_w / (*std::max_element(x, x + 4) - mean_x),
                         half_h / (mean_y - *std::min_element(y, y + 4)),
                         half_h / (*std::max_element(y, y + 4) - mean_y)};
  const double f = balance * *std::min_element(fits, fits + 4) +
                   (1 - balance) * *std::max_element(fits, fits + 4);
  *focal = f / aspect;
  side->centre = {half_w - mean_x * f, (half_h - mean_y * f) / aspect};
  return true;
}

bool ChooseForWide(Side* sides, int along, const RectifyOptions& options, double* focal) {
  const double balance = std::min(std::max(options.alpha, 0.0), 1.0);
  double focals[2];
  for (int i = 0; i < 2; ++i) {
    if (!ChooseAlone(&sides[i], balance, &focals[i])) return false;
  }
  *focal = std::min(focals[0], focals[1]);
  Share(sides, options.zero_disparity, 1 - along);
  return true;
}

void Write(const Matrix3d& matrix, double* numbers) {
  for (int i = 0; i < 9; ++i) numbers[i] = matrix(i / 3, i % 3);
}

void Write(const Side& side, double focal, double* p) {
  const double numbers[] = {focal, 0, side.centre[0], 0, 0, focal, side.centre[1], 0, 0, 0, 1, 0};
  std::copy(numbers, numbers + 12, p);
}

bool IsWide(const Camera& camera) {
  return camera.lens != Lens::kBrown && camera.lens != Lens::kPinhole;
}

Rectified TryRectify(const Camera& first, const Camera& second, const Transform& second_from_first,
                     const RectifyOptions& options) {
  Rectified result;
  if (Checked(Project(first, {0, 0, 1}).status) == Status::kNotACamera ||
      Checked(Project(second, {0, 0, 1}).status) == Status::kNotACamera || first.width <= 0 ||
      first.height <= 0 || second.width != first.width || second.height != first.height) {
    result.status = Status::kNotACamera;
    return result;
  }
  if (!(RotationDefect(second_from_first) < 1e-3)) {
    result.status = Status::kNotARotation;
    return result;
  }
  const Point vector = RotationVectorOf(second_from_first);
  const double* m = second_from_first.m;
  const Vector3d offset(m[3], m[7], m[11]);
  const Matrix3d half = Turn(Vector3d(vector.x, vector.y, vector.z) * -0.5);
  const Vector3d between = half * offset;
  const bool wide = IsWide(first) || IsWide(second);
  result.vertical = std::abs(between[0]) <= std::abs(between[1]);
  const int along = result.vertical ? 1 : 0;
  const double baseline = offset.norm();
  // A baseline along the axis leaves nothing to rectify to.
  if (!(baseline > 0) || std::abs(between[along]) < 1e-6 * baseline) return result;
  Vector3d wanted(0, 0, 0);
  wanted[along] = between[along] > 0 ? 1 : -1;
  Vector3d axis = between.cross(wanted);
  if (axis.norm() > 0) {
    axis *= std::acos(std::min(1.0, std::abs(between[along]) / between.norm())) / axis.norm();
  }
  const Matrix3d align = Turn(axis);
  Side sides[] = {{first, align * half.transpose(), {}}, {second, align * half, {}}};
  const double shift = (sides[1].turn * offset)[along];
  double focal = 0;
  if (!wide) {
    focal = ChooseForBrown(sides, along, options);
  } else if (!ChooseForWide(sides, along, options, &focal)) {
    result.status = Status::kBeyondLens;
    return result;
  }
  if (!std::isfinite(focal) || !(focal > 0)) return result;
  Write(sides[0].turn, result.r1);
  Write(sides[1].turn, result.r2);
  Write(sides[0], focal, result.p1);
  Write(sides[1], focal, result.p2);
  result.p2[4 * along + 3] = shift * focal;
  const double disparity = (sides[0].centre - sides[1].centre)[along];
  const double q[] = {
      1, 0, 0,          -sides[0].centre[0], 0, 1, 0, -sides[0].centre[1], 0, 0, 0, focal,
      0, 0, -1 / shift, disparity / shift};
  std::copy(q, q + 16, result.q);
  result.baseline = baseline;
  result.swapped = shift > 0;
  result.status = Status::kOk;
  return result;
}

}  // namespace

Rectified Rectify(const Camera& first, const Camera& second, const Transform& second_from_first,
                  const RectifyOptions& options) noexcept {
  return Guarded([&] { return TryRectify(first, second, second_from_first, options); });
}

}  // namespace calibration_geometry
}  // namespace zarvo
