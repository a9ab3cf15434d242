#include "calib/commands/drawing_flags.h"

#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/tools/camera_geometry.h"

namespace calib {

void DrawingFlags::AddTo(Command* command) {
  AddChoice(command, "--extrinsics", &extrinsics, ExtrinsicsNames(),
            "What a camera's extrinsics map; assumed is camera-from-body: from the body's frame to "
            "the camera's");
  lens.AddTo(command, "What the distortion coefficients mean; auto goes by their numbers");
}

void DrawingFlags::Apply(ChartOptions* options) const {
  options->extrinsics = ExtrinsicsByName(extrinsics);
  options->lens = LensReaderOf(lens);
}

LensReader LensReaderOf(const LensFlag& lens) {
  const LensModel* chosen = lens.model();
  return [chosen](const zarvo::calibration::CameraIntrinsics& intrinsics) {
    LensReading reading;
    try {
      const LensModel* model = nullptr;
      reading.camera =
          GeometryOf({nullptr, &intrinsics, nullptr, "intrinsics", ""}, chosen, &model);
      reading.model = model->name + (chosen == nullptr ? " (by the numbers of coefficients)" : "");
    } catch (const Failure& failure) {
      reading.reason = failure.what() + (failure.remedy().empty() ? "" : ". " + failure.remedy());
    }
    return reading;
  };
}

}  // namespace calib
