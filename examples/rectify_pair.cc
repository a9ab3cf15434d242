// Rectifies a stereo pair and looks up what a pixel of it shows, by the library
// calibration_geometry alone. The numbers are those of a rig as its record holds them: of k1 k2 in
// k and p1 p2 in p, plumb_bob makes the distortion k1 k2 p1 p2.
//
//   rectify_pair

#include <cstdio>

#include "calib/geometry/calibration_geometry.h"

namespace geometry = zarvo::calibration_geometry;

namespace {

geometry::Camera MakeCamera(double fx, double fy, double cx, double cy, double k1, double k2,
                            double p1, double p2) {
  geometry::Camera camera;
  camera.lens = geometry::Lens::kBrown;
  camera.fx = fx;
  camera.fy = fy;
  camera.cx = cx;
  camera.cy = cy;
  const double distortion[] = {k1, k2, p1, p2};
  for (int i = 0; i < 4; ++i) camera.distortion[i] = distortion[i];
  camera.width = 752;
  camera.height = 480;
  return camera;
}

}  // namespace

int main() {
  const geometry::Camera left = MakeCamera(458.654, 457.296, 367.215, 248.375, -0.28340811,
                                           0.07395907, 0.00019359, 1.76187114e-05);
  const geometry::Camera right = MakeCamera(457.587, 456.134, 379.999, 255.238, -0.28368365,
                                            0.07451284, -0.00010473, -3.555907e-05);
  // The right camera is 0.11 m to the right of the left one, and turned a little.
  const geometry::Transform left_from_right =
      geometry::FromRollPitchYaw({0.0141, -0.0003, 0.0023}, {0.11, -0.0001, 0.0009});

  const geometry::Rectified pair =
      geometry::Rectify(left, right, geometry::Invert(left_from_right), geometry::RectifyOptions());
  if (pair.status != geometry::Status::kOk) {
    std::fprintf(stderr, "rectify_pair: the pair %s\n", geometry::Explain(pair.status));
    return 1;
  }
  std::printf("baseline %.6f%s\n", pair.baseline, pair.swapped ? ", swapped" : "");
  std::printf("focal length %.6f, P2[0][3] %.6f\n", pair.p1[0], pair.p2[3]);

  const geometry::Direction direction = geometry::Unproject(left, {0, 0});
  std::printf("pixel 0 0 looks along %.6f %.6f %.6f\n", direction.ray.x, direction.ray.y,
              direction.ray.z);
  const geometry::Projected nowhere = geometry::Project(left, {0, 0, -1});
  std::printf("0 0 -1 %s\n", geometry::Explain(nowhere.status));
  return 0;
}
