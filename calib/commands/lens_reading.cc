#include "calib/commands/lens_reading.h"

#include "calib/console/failure.h"
#include "calib/tools/export_lens.h"
#include "calib/tools/lens_models.h"

namespace calib {

using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration_geometry::Lens;

namespace {

// In the order of the arithmetic: k1 k2 p1 p2 k3 k4 k5 k6, or k1 to k4 of a fisheye.
void SetCoefficients(const CameraIntrinsics& in, zarvo::calibration_geometry::Camera* camera) {
  const int between = camera->lens == Lens::kBrown ? 2 : 0;
  for (int i = 0; i < in.k_size() && i < 6; ++i)
    camera->distortion[i < 2 ? i : i + between] = in.k(i);
  for (int i = 0; i < in.p_size() && i < between; ++i) camera->distortion[2 + i] = in.p(i);
}

}  // namespace

LensReader ReaderOf(const LensFlag& flag) {
  const LensModel* chosen = flag.model();
  return [chosen](const CameraIntrinsics& in) {
    LensReading reading;
    try {
      const LensModel& model = LensOf(in, "intrinsics", chosen);
      reading.model = model.name;
      if (chosen == nullptr) reading.model += " (by the numbers of coefficients)";
      reading.camera.lens = model.order == LensModel::Order::kFisheye ? Lens::kFisheye
                            : model.order == LensModel::Order::kBrown ? Lens::kBrown
                                                                      : Lens::kPinhole;
    } catch (const Failure& failure) {
      reading.reason = failure.what() + (failure.remedy().empty() ? "" : ". " + failure.remedy());
      return reading;
    }
    reading.camera.fx = in.fx();
    reading.camera.fy = in.fy();
    reading.camera.skew = in.skew();
    reading.camera.cx = in.cx();
    reading.camera.cy = in.cy();
    reading.camera.width = in.width();
    reading.camera.height = in.height();
    SetCoefficients(in, &reading.camera);
    return reading;
  };
}

}  // namespace calib
