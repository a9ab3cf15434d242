// calib unproject FILE [PIXELS]
#include <memory>

#include "calib/commands/commands.h"
#include "calib/commands/point_flags.h"
#include "calib/console/failure.h"

namespace calib {
namespace {

struct Flags {
  PointFlags points;
  bool plane = false;
};

int Unproject(const Flags& flags) {
  const Record record = ReadRecord(flags.points.path, flags.points.input);
  const geometry::Camera camera = GeometryOf(
      OnlyCamera(*record.message, record.name, flags.points.camera), flags.points.lens.model());
  return flags.points.Run({"u", "v"}, [&](const auto& row, std::vector<double>* numbers) {
    const geometry::Direction direction = geometry::Unproject(camera, {row[0], row[1]});
    const geometry::Point& ray = direction.ray;
    if (!flags.plane) {
      *numbers = {ray.x, ray.y, ray.z};
      return direction.status;
    }
    *numbers = {ray.x / ray.z, ray.y / ray.z};
    const bool behind = direction.status == geometry::Status::kOk && !(ray.z > 0);
    return behind ? geometry::Status::kBehind : direction.status;
  });
}

}  // namespace

void AddUnproject(Command* program, int* status) {
  Command* command = program->AddCommand("unproject", "Tells where pixels look");
  const auto flags = std::make_shared<Flags>();
  flags->points.AddTo(command, "The pixels, u v a line");
  command->AddFlag("--plane", flags->plane, "Write x y of the point at z = 1 instead");
  command->Footer(
      "Writes x y z for each pixel, a direction of length 1 in the camera's frame, which lands on "
      "the pixel to 1e-12 of a focal length. A pixel that no direction lands on is written as nan, "
      "and the reason is told.\n\n"
      "Exit status: 0 all pixels, 1 some without a direction, 2 trouble.\n\n"
      "Examples:\n"
      "  calib unproject cam.CameraCalibration.binpb pixels.txt\n"
      "  echo 320 240 | calib unproject --plane rig.RobotCalibration.binpb --camera 0");
  command->Callback([flags, status] { *status = Unproject(*flags); });
}

}  // namespace calib
