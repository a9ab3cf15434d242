// The same camera with an image that is scaled, cut, binned or turned. Distortion is of the plane z
// = 1 and stays, but for turning, where its axes change places.
#include <algorithm>
#include <cmath>

#include "calib/geometry/calibration_geometry.h"

namespace zarvo {
namespace calibration_geometry {

namespace {

// With u' = su u + tu, v' = sv v + tv.
Resized Stretched(const Camera& camera, double su, double tu, double sv, double tv, int width,
                  int height) {
  Resized resized;
  if (width <= 0 || height <= 0) return resized;
  Camera& result = resized.camera;
  result = camera;
  result.fx *= su;
  result.skew *= su;
  result.cx = su * camera.cx + tu;
  result.fy *= sv;
  result.cy = sv * camera.cy + tv;
  result.width = width;
  result.height = height;
  const double map[] = {su, 0, tu, 0, sv, tv};
  std::copy(map, map + 6, resized.pixel_map);
  resized.status = Status::kOk;
  return resized;
}

// A quarter clockwise: what was right is below, so that the new x is -y and the new y is x.
bool Quarter(Camera* camera, double* map) {
  const bool bent = camera->lens == Lens::kBrown || camera->lens == Lens::kOmni ||
                    camera->lens == Lens::kThinPrismFisheye;
  double* d = camera->distortion;
  if (camera->skew != 0 || (bent && (d[12] != 0 || d[13] != 0))) return false;
  const double last = camera->height - 1;
  const double turned[] = {-map[3], -map[4], last - map[5], map[0], map[1], map[2]};
  std::copy(turned, turned + 6, map);
  const double cx = camera->cx;
  camera->cx = last - camera->cy;
  camera->cy = cx;
  std::swap(camera->fx, camera->fy);
  std::swap(camera->width, camera->height);
  if (!bent) return true;
  const double p1 = d[2], s1 = d[8], s2 = d[9];
  d[2] = d[3];
  d[3] = -p1;
  d[8] = -d[10];
  d[9] = -d[11];
  d[10] = s1;
  d[11] = s2;
  return true;
}

}  // namespace

Resized Scale(const Camera& camera, int width, int height) noexcept {
  if (camera.width <= 0 || camera.height <= 0) return {};
  const double su = 1.0 * width / camera.width, sv = 1.0 * height / camera.height;
  return Stretched(camera, su, 0.5 * su - 0.5, sv, 0.5 * sv - 0.5, width, height);
}

Resized Crop(const Camera& camera, int u, int v, int width, int height) noexcept {
  return Stretched(camera, 1, -1.0 * u, 1, -1.0 * v, width, height);
}

Resized Bin(const Camera& camera, int columns, int rows, bool decimate) noexcept {
  if (columns <= 0 || rows <= 0) return {};
  const double su = 1.0 / columns, sv = 1.0 / rows;
  return Stretched(camera, su, decimate ? 0 : 0.5 * su - 0.5, sv, decimate ? 0 : 0.5 * sv - 0.5,
                   camera.width / columns, camera.height / rows);
}

Resized Rotate(const Camera& camera, int quarters) noexcept {
  Resized resized;
  if (camera.width <= 0 || camera.height <= 0) return resized;
  resized.camera = camera;
  Camera& result = resized.camera;
  quarters = (quarters % 4 + 4) % 4;
  // Half a turn leaves the angle between the axes as it is.
  const double skew = camera.skew;
  if (quarters == 2) result.skew = 0;
  for (int i = 0; i < quarters; ++i) {
    if (!Quarter(&result, resized.pixel_map)) return resized;
    Transform quarter;
    const double turn[] = {0, -1, 0, 0, 1, 0, 0, 0};
    std::copy(turn, turn + 8, quarter.m);
    resized.new_from_old = Compose(quarter, resized.new_from_old);
  }
  result.skew = skew;
  resized.status = Status::kOk;
  return resized;
}

}  // namespace calibration_geometry
}  // namespace zarvo
