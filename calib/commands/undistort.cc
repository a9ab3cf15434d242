// calib undistort FILE [PIXELS]
#include <memory>

#include "calib/commands/commands.h"
#include "calib/commands/point_flags.h"
#include "calib/console/failure.h"

namespace calib {
namespace {

int Undistort(const PointFlags& flags) {
  const Record record = ReadRecord(flags.path, flags.input);
  const geometry::Camera camera =
      GeometryOf(OnlyCamera(*record.message, record.name, flags.camera), flags.lens.model());
  geometry::Camera pinhole = camera;
  pinhole.lens = geometry::Lens::kPinhole;
  return flags.Run({"u", "v"}, [&](const auto& row, std::vector<double>* numbers) {
    numbers->assign(2, 0);
    const geometry::Direction direction = geometry::Unproject(camera, {row[0], row[1]});
    if (direction.status != geometry::Status::kOk) return direction.status;
    const geometry::Projected projected = geometry::Project(pinhole, direction.ray);
    *numbers = {projected.pixel.u, projected.pixel.v};
    return projected.status;
  });
}

}  // namespace

void AddUndistort(Command* program, int* status) {
  Command* command = program->AddCommand("undistort", "Tells where pixels were without distortion");
  const auto flags = std::make_shared<PointFlags>();
  flags->AddTo(command, "The pixels, u v a line");
  command->Footer(
      "Writes u v for each pixel: where a camera of the same fx, fy, skew, cx and cy without "
      "distortion sees what the pixel shows. A pixel that no such camera sees, at 90 degrees or "
      "more to the axis, or that no direction lands on, is written as nan nan, and the reason is "
      "told.\n\n"
      "Exit status: 0 all pixels, 1 some that cannot be had, 2 trouble.\n\n"
      "Examples:\n"
      "  calib undistort cam.CameraCalibration.binpb pixels.txt\n"
      "  echo 0 0 | calib undistort rig.RobotCalibration.binpb --camera 0");
  command->Callback([flags, status] { *status = Undistort(*flags); });
}

}  // namespace calib
