// The functions for C: values are copied over, in blocks where there are many, and nothing else
// happens here.
#include <algorithm>
#include <new>
#include <vector>

#include "calib/geometry/calibration_geometry.h"
#include "calib/geometry/calibration_geometry_c.h"

using zarvo::calibration_geometry::Camera;
using zarvo::calibration_geometry::Lens;
using zarvo::calibration_geometry::Point;
using zarvo::calibration_geometry::Status;
using zarvo::calibration_geometry::Transform;
namespace geometry = zarvo::calibration_geometry;

namespace {

constexpr size_t kBlock = 256;
constexpr int kLastLens = static_cast<int>(Lens::kDivision);

int ToC(Status status) { return static_cast<int>(status); }
int ToC(bool value) { return value ? 1 : 0; }

template <size_t size>
void Copy(const double (&from)[size], double* to) {
  std::copy(from, from + size, to);
}

// Without focal lengths, which no camera is, if there is no such lens.
Camera FromC(const calibration_geometry_camera& from) {
  Camera camera;
  const bool known = from.lens >= 0 && from.lens <= kLastLens;
  if (known) camera.lens = static_cast<Lens>(from.lens);
  camera.fx = known ? from.fx : 0;
  camera.fy = known ? from.fy : 0;
  camera.skew = from.skew;
  camera.cx = from.cx;
  camera.cy = from.cy;
  Copy(from.distortion, camera.distortion);
  Copy(from.shape, camera.shape);
  camera.width = from.width;
  camera.height = from.height;
  return camera;
}

calibration_geometry_camera ToC(const Camera& from) {
  calibration_geometry_camera camera;
  camera.lens = static_cast<int>(from.lens);
  camera.fx = from.fx;
  camera.fy = from.fy;
  camera.skew = from.skew;
  camera.cx = from.cx;
  camera.cy = from.cy;
  Copy(from.distortion, camera.distortion);
  Copy(from.shape, camera.shape);
  camera.width = from.width;
  camera.height = from.height;
  return camera;
}

Transform TransformOf(const double* numbers) {
  Transform transform;
  std::copy(numbers, numbers + 16, transform.m);
  return transform;
}

Point PointOf(const double* numbers) { return {numbers[0], numbers[1], numbers[2]}; }

void Write(const Point& point, double* numbers) {
  numbers[0] = point.x;
  numbers[1] = point.y;
  numbers[2] = point.z;
}

calibration_geometry_resized ToC(const geometry::Resized& from) {
  calibration_geometry_resized resized;
  resized.status = ToC(from.status);
  resized.camera = ToC(from.camera);
  Copy(from.pixel_map, resized.pixel_map);
  Copy(from.new_from_old.m, resized.new_from_old);
  return resized;
}

}  // namespace

const char* calibration_geometry_explain(int status) {
  return geometry::Explain(static_cast<Status>(status));
}

void calibration_geometry_project(const calibration_geometry_camera* camera, const double* points,
                                  size_t count, double* pixels, int* statuses) {
  const Camera own = FromC(*camera);
  Point block[kBlock];
  geometry::Projected projected[kBlock];
  for (size_t done = 0; done < count; done += kBlock) {
    const size_t size = std::min(kBlock, count - done);
    for (size_t i = 0; i < size; ++i) block[i] = PointOf(points + 3 * (done + i));
    geometry::Project(own, block, size, projected);
    for (size_t i = 0; i < size; ++i) {
      pixels[2 * (done + i)] = projected[i].pixel.u;
      pixels[2 * (done + i) + 1] = projected[i].pixel.v;
      statuses[done + i] = ToC(projected[i].status);
    }
  }
}

void calibration_geometry_unproject(const calibration_geometry_camera* camera, const double* pixels,
                                    size_t count, double* rays, int* statuses) {
  const Camera own = FromC(*camera);
  geometry::Pixel block[kBlock];
  geometry::Direction directions[kBlock];
  for (size_t done = 0; done < count; done += kBlock) {
    const size_t size = std::min(kBlock, count - done);
    for (size_t i = 0; i < size; ++i) {
      block[i] = {pixels[2 * (done + i)], pixels[2 * (done + i) + 1]};
    }
    geometry::Unproject(own, block, size, directions);
    for (size_t i = 0; i < size; ++i) {
      Write(directions[i].ray, rays + 3 * (done + i));
      statuses[done + i] = ToC(directions[i].status);
    }
  }
}

double calibration_geometry_largest_angle(const calibration_geometry_camera* camera) {
  return geometry::LargestAngle(FromC(*camera));
}

void calibration_geometry_invert(const double transform[16], double inverse[16]) {
  Copy(geometry::Invert(TransformOf(transform)).m, inverse);
}

void calibration_geometry_compose(const double second[16], const double first[16],
                                  double product[16]) {
  Copy(geometry::Compose(TransformOf(second), TransformOf(first)).m, product);
}

void calibration_geometry_apply(const double transform[16], const double* points, size_t count,
                                double* moved) {
  const Transform own = TransformOf(transform);
  for (size_t i = 0; i < count; ++i) {
    Write(geometry::Apply(own, PointOf(points + 3 * i)), moved + 3 * i);
  }
}

double calibration_geometry_rotation_defect(const double transform[16]) {
  return geometry::RotationDefect(TransformOf(transform));
}

int calibration_geometry_orthonormalize(double transform[16]) {
  Transform own = TransformOf(transform);
  const bool done = geometry::Orthonormalize(&own);
  Copy(own.m, transform);
  return ToC(done);
}

void calibration_geometry_quaternion_of(const double transform[16], double wxyz[4]) {
  const geometry::Quaternion q = geometry::QuaternionOf(TransformOf(transform));
  Copy({q.w, q.x, q.y, q.z}, wxyz);
}

void calibration_geometry_roll_pitch_yaw_of(const double transform[16], double roll_pitch_yaw[3]) {
  const geometry::RollPitchYaw angles = geometry::RollPitchYawOf(TransformOf(transform));
  Copy({angles.roll, angles.pitch, angles.yaw}, roll_pitch_yaw);
}

void calibration_geometry_rotation_vector_of(const double transform[16], double vector[3]) {
  Write(geometry::RotationVectorOf(TransformOf(transform)), vector);
}

void calibration_geometry_from_quaternion(const double wxyz[4], const double translation[3],
                                          double transform[16]) {
  Copy(geometry::FromQuaternion({wxyz[0], wxyz[1], wxyz[2], wxyz[3]}, PointOf(translation)).m,
       transform);
}

void calibration_geometry_from_roll_pitch_yaw(const double roll_pitch_yaw[3],
                                              const double translation[3], double transform[16]) {
  Copy(geometry::FromRollPitchYaw({roll_pitch_yaw[0], roll_pitch_yaw[1], roll_pitch_yaw[2]},
                                  PointOf(translation))
           .m,
       transform);
}

void calibration_geometry_from_rotation_vector(const double vector[3], const double translation[3],
                                               double transform[16]) {
  Copy(geometry::FromRotationVector(PointOf(vector), PointOf(translation)).m, transform);
}

calibration_geometry_rectified calibration_geometry_rectify(
    const calibration_geometry_camera* first, const calibration_geometry_camera* second,
    const double second_from_first[16], double alpha, int zero_disparity) {
  geometry::RectifyOptions options;
  options.alpha = alpha;
  options.zero_disparity = zero_disparity != 0;
  const geometry::Rectified from =
      geometry::Rectify(FromC(*first), FromC(*second), TransformOf(second_from_first), options);
  calibration_geometry_rectified rectified;
  rectified.status = ToC(from.status);
  rectified.vertical = ToC(from.vertical);
  rectified.swapped = ToC(from.swapped);
  rectified.baseline = from.baseline;
  Copy(from.r1, rectified.r1);
  Copy(from.r2, rectified.r2);
  Copy(from.p1, rectified.p1);
  Copy(from.p2, rectified.p2);
  Copy(from.q, rectified.q);
  return rectified;
}

calibration_geometry_difference calibration_geometry_compare(
    const calibration_geometry_camera* before, const calibration_geometry_camera* after, int fit,
    double distance, int columns, size_t room, double* displacements, int* statuses) {
  geometry::DifferenceOptions options;
  options.fit = fit != 0;
  options.distance = distance;
  options.columns = columns;
  const geometry::Difference from = geometry::Compare(FromC(*before), FromC(*after), options);
  calibration_geometry_difference difference;
  difference.status = ToC(from.status);
  Copy(from.after_from_before.m, difference.after_from_before);
  difference.largest = from.largest;
  difference.mean = from.mean;
  Copy({from.where.u, from.where.v}, difference.where);
  difference.compared = from.compared;
  difference.count = from.pixels.size();
  for (size_t i = 0; i < std::min(room, difference.count); ++i) {
    const geometry::Displacement& pixel = from.pixels[i];
    Copy({pixel.from.u, pixel.from.v, pixel.by.u, pixel.by.v}, displacements + 4 * i);
    statuses[i] = ToC(pixel.status);
  }
  return difference;
}

calibration_geometry_fitted_lens calibration_geometry_fit_lens(
    const calibration_geometry_camera* source, int target, int coefficients, double max_error,
    double largest_angle) {
  geometry::FitOptions options;
  options.max_error = max_error;
  options.largest_angle = largest_angle;
  geometry::FittedLens from;
  if (target >= 0 && target <= kLastLens) {
    from = geometry::FitLens(FromC(*source), static_cast<Lens>(target), coefficients, options);
  }
  calibration_geometry_fitted_lens fitted;
  fitted.status = ToC(from.status);
  fitted.camera = ToC(from.camera);
  fitted.rms = from.rms;
  fitted.largest = from.largest;
  Copy({from.where.u, from.where.v}, fitted.where);
  fitted.angle = from.angle;
  fitted.reach = from.reach;
  fitted.unseen = from.unseen;
  return fitted;
}

calibration_geometry_resized calibration_geometry_scale(const calibration_geometry_camera* camera,
                                                        int width, int height) {
  return ToC(geometry::Scale(FromC(*camera), width, height));
}

calibration_geometry_resized calibration_geometry_crop(const calibration_geometry_camera* camera,
                                                       int u, int v, int width, int height) {
  return ToC(geometry::Crop(FromC(*camera), u, v, width, height));
}

calibration_geometry_resized calibration_geometry_bin(const calibration_geometry_camera* camera,
                                                      int columns, int rows, int decimate) {
  return ToC(geometry::Bin(FromC(*camera), columns, rows, decimate != 0));
}

calibration_geometry_resized calibration_geometry_rotate(const calibration_geometry_camera* camera,
                                                         int quarters) {
  return ToC(geometry::Rotate(FromC(*camera), quarters));
}

calibration_geometry_pose calibration_geometry_fit_pose(const calibration_geometry_camera* camera,
                                                        double z, const double* points,
                                                        size_t count) {
  geometry::Pose from;
  try {
    std::vector<geometry::TargetPoint> list(count);
    for (size_t i = 0; i < count; ++i) {
      const double* p = points + 4 * i;
      list[i] = {p[0], p[1], {p[2], p[3]}};
    }
    from = geometry::FitPose(FromC(*camera), z, list);
  } catch (const std::bad_alloc&) {
    from.status = Status::kNoMemory;
  }
  calibration_geometry_pose pose;
  pose.status = ToC(from.status);
  Copy(from.camera_from_target.m, pose.camera_from_target);
  pose.rms = from.rms;
  return pose;
}
