#include "calib/tools/lens_fitting.h"

#include <cmath>

#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/number_rows.h"
#include "calib/geometry/pose_difference.h"
#include "calib/tools/export_lens.h"
#include "calib/tools/lens_flag.h"

namespace calib {

namespace {

std::string Degrees(double angle) {
  return ToDigits(angle / zarvo::calibration_geometry::kDegree, 3) + " degrees";
}

}  // namespace

Option* FitFlags::AddTo(Command* command, const std::string& option,
                        const std::string& description) {
  Option* choice = AddLensChoice(command, option, &model, CameraInfoModels(), description);
  command
      ->AddOption("--max-error", max_error,
                  "Refuse a lens that is further off anywhere, in pixels; else 0.5")
      ->Check(NumberFromZero())
      ->ValueName("PIXELS");
  command
      ->AddOption("--up-to", up_to,
                  "Fit, and judge, what is up to that angle to the axis alone, in degrees")
      ->Check(NumberFromZero())
      ->ValueName("ANGLE");
  return choice;
}

void FitFlags::Store(const geometry::Camera& camera, const std::string& place,
                     zarvo::calibration::CameraIntrinsics* intrinsics) const {
  const LensModel& target = *FindLensModel(model);
  const bool fisheye = target.order == LensModel::Order::kFisheye;
  geometry::FitOptions options;
  options.max_error = max_error;
  options.largest_angle = up_to * zarvo::calibration_geometry::kDegree;
  const geometry::FittedLens fitted =
      geometry::FitLens(camera, fisheye ? geometry::Lens::kFisheye : geometry::Lens::kBrown,
                        target.k() + target.p(), options);
  if (fitted.status != geometry::Status::kOk) {
    throw Failure(WithColon(place) + " the image shows too little for a lens to be fitted",
                  "Check its size, the lens, and --up-to.");
  }
  const std::string where = std::to_string(std::lround(fitted.where.u)) + " " +
                            std::to_string(std::lround(fitted.where.v));
  const std::string holds =
      fitted.angle < fitted.reach
          ? "it holds up to " + Degrees(fitted.angle) + " of " + Degrees(fitted.reach)
          : "it holds up to " + Degrees(fitted.reach) + ", all that was fitted";
  const std::string error = "RMS " + ToDigits(fitted.rms, 3) + " pixels, at most " +
                            ToDigits(fitted.largest, 3) +
                            (fitted.unseen == 0 ? " at " + where : "");
  const std::string what = WithColon(place) + " ";
  if (fitted.unseen > 0 || !(fitted.largest <= max_error)) {
    throw Failure(
        what + target.name + " cannot be the same lens: " + error +
            (fitted.unseen > 0 ? ", and it does not see " + where + " at all" : "") + "; " + holds,
        "--max-error accepts more, --up-to ANGLE leaves out what is further from the axis.");
  }
  Note(what + "is written as " + target.name + ": " + error + "; " + holds);
  StoreGeometry(fitted.camera, target, intrinsics);
}

}  // namespace calib
