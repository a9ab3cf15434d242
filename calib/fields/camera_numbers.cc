#include "calib/fields/camera_numbers.h"

namespace calib {

namespace geometry = zarvo::calibration_geometry;

geometry::Camera AsCamera(const zarvo::calibration::CameraIntrinsics& in, bool fisheye) {
  geometry::Camera camera;
  camera.lens = fisheye ? geometry::Lens::kFisheye : geometry::Lens::kBrown;
  camera.fx = in.fx();
  camera.fy = in.fy();
  camera.skew = in.skew();
  camera.cx = in.cx();
  camera.cy = in.cy();
  camera.width = in.width();
  camera.height = in.height();
  for (int i = 0; i < in.k_size(); ++i) {
    const bool behind = !fisheye && i >= kFirstTangential;
    camera.distortion[behind ? i + 2 : i] = in.k(i);
  }
  for (int i = 0; i < in.p_size(); ++i) camera.distortion[kFirstTangential + i] = in.p(i);
  return camera;
}

}  // namespace calib
